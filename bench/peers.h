/// @file
/// The peers, each with what the families need of it. WITH_QT(...) is what it encloses where Qt was
/// found, and nothing elsewhere; likewise for the others.
#ifndef PORTINGLAYER_BENCH_PEERS_H
#define PORTINGLAYER_BENCH_PEERS_H

#include <unistd.h>

#include <cstdint>
#include <cwchar>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#ifdef BENCH_ACE
#include <ace/CDR_Stream.h>
#include <ace/SString.h>

#define WITH_ACE(...) __VA_ARGS__

/// Integers and strings in a data stream. ACE carries the host's own order and leaves swapping to a
/// reader of another kind.
struct AceStream {
    using Text = ACE_CString;
    static Text text(wchar_t const* s) { return std::string(s, s + wcslen(s)).c_str(); }

    void put(std::uint16_t value) { writer.write_ushort(value); }
    void put(std::uint32_t value) { writer.write_ulong(value); }
    void put(std::uint64_t value) { writer.write_ulonglong(value); }
    void put(std::int32_t value) { writer.write_long(value); }
    void put(Text const& s) { writer.write_string(s); }

    void get(std::uint16_t& value) { reader->read_ushort(value); }
    void get(std::uint32_t& value) { reader->read_ulong(value); }
    void get(std::uint64_t& value) { reader->read_ulonglong(value); }
    void get(std::int32_t& value) { reader->read_long(value); }
    void get(Text& s) { reader->read_string(s); }
    void rewind() {
        if (!whole) whole = std::make_unique<ACE_InputCDR>(writer);
        reader = std::make_unique<ACE_InputCDR>(*whole);
    }

    ACE_OutputCDR writer;
    std::unique_ptr<ACE_InputCDR> whole;
    std::unique_ptr<ACE_InputCDR> reader;
};

#else
#define WITH_ACE(...)
#endif

#ifdef BENCH_APR
#include <apr_file_io.h>
#include <apr_general.h>
#include <apr_strings.h>
#define WITH_APR(...) __VA_ARGS__

/// What one call allocates.
struct AprPool {
    AprPool() {
        static apr_status_t const started = apr_initialize();
        (void)started;
        apr_pool_create(&pool, nullptr);
    }
    ~AprPool() { apr_pool_destroy(pool); }
    AprPool(AprPool const&) = delete;
    AprPool& operator=(AprPool const&) = delete;
    apr_pool_t* pool = nullptr;
};

#else
#define WITH_APR(...)
#endif

#ifdef BENCH_BOOST
#include <boost/algorithm/string.hpp>
#include <boost/filesystem.hpp>
#include <boost/lexical_cast.hpp>
#include <boost/shared_ptr.hpp>
#include <boost/thread.hpp>
#define WITH_BOOST(...) __VA_ARGS__
#else
#define WITH_BOOST(...)
#endif

#ifdef BENCH_GLIB
#include <glib.h>
#include <glib/gstdio.h>

#define WITH_GLIB(...) __VA_ARGS__

struct GFree {
    void operator()(void* memory) const { g_free(memory); }
};
using GText = std::unique_ptr<char[], GFree>;
using GWide = std::unique_ptr<gunichar[], GFree>;

inline std::wstring wideOf(GWide const& text) {
    return reinterpret_cast<wchar_t const*>(text.get());
}

/// In the shape of the standard mutex.
struct GLibLock {
    GLibLock() { g_rec_mutex_init(&mutex); }
    void lock() { g_rec_mutex_lock(&mutex); }
    void unlock() { g_rec_mutex_unlock(&mutex); }
    GRecMutex mutex;
};

#else
#define WITH_GLIB(...)
#endif

#ifdef BENCH_LIBUV
#include <uv.h>
#define WITH_LIBUV(...) __VA_ARGS__
#else
#define WITH_LIBUV(...)
#endif

#ifdef BENCH_NSPR
#include <nspr.h>

#define WITH_NSPR(...) __VA_ARGS__

struct NsprFree {
    void operator()(char* text) const { PR_smprintf_free(text); }
};
using NsprText = std::unique_ptr<char[], NsprFree>;

#else
#define WITH_NSPR(...)
#endif

#ifdef BENCH_POCO
#include <Poco/BinaryReader.h>
#include <Poco/BinaryWriter.h>
#include <Poco/DirectoryIterator.h>
#include <Poco/File.h>
#include <Poco/Format.h>
#include <Poco/Mutex.h>
#include <Poco/NumberFormatter.h>
#include <Poco/NumberParser.h>
#include <Poco/Pipe.h>
#include <Poco/PipeStream.h>
#include <Poco/Process.h>
#include <Poco/Semaphore.h>
#include <Poco/SharedLibrary.h>
#include <Poco/SharedPtr.h>
#include <Poco/StreamCopier.h>
#include <Poco/String.h>
#include <Poco/StringTokenizer.h>
#include <Poco/Thread.h>
#include <Poco/UnicodeConverter.h>

#define WITH_POCO(...) __VA_ARGS__

/// Integers and strings in a data stream.
struct PocoStream {
    using Text = std::string;
    static Text text(wchar_t const* s) { return {s, s + wcslen(s)}; }

    template <typename Value>
    void put(Value const& value) {
        writer << value;
    }
    template <typename Value>
    void get(Value& value) {
        reader >> value;
    }
    void rewind() {
        bytes.clear();
        bytes.seekg(0);
    }

    std::stringstream bytes;
    Poco::BinaryWriter writer{bytes, Poco::BinaryWriter::NETWORK_BYTE_ORDER};
    Poco::BinaryReader reader{bytes, Poco::BinaryReader::NETWORK_BYTE_ORDER};
};

#else
#define WITH_POCO(...)
#endif

#ifdef BENCH_PROC2
#include <libproc2/meminfo.h>
#include <libproc2/pids.h>

#define WITH_PROC2(...) __VA_ARGS__

/// One item of this process.
inline pids_result proc2Item(pids_item item) {
    static pids_info* info = nullptr;
    if (info == nullptr) procps_pids_new(&info, &item, 1);
    procps_pids_reset(info, &item, 1);
    auto pid = static_cast<unsigned int>(getpid());
    pids_fetch const* const fetched = procps_pids_select(info, &pid, 1, PIDS_SELECT_PID);
    return fetched->stacks[0]->head[0];
}

/// Calls `use` with the items asked for of every process.
template <typename Use>
void forEachProc2(std::vector<pids_item> items, Use use) {
    pids_info* info = nullptr;
    procps_pids_new(&info, items.data(), static_cast<int>(items.size()));
    while (pids_stack const* const stack = procps_pids_get(info, PIDS_FETCH_TASKS_ONLY))
        use(stack->head);
    procps_pids_unref(&info);
}

#else
#define WITH_PROC2(...)
enum { PIDS_CMD, PIDS_EXE, PIDS_CMDLINE };  // named by a table of facts
#endif

#ifdef BENCH_QT
#include <QtCore>

#define WITH_QT(...) __VA_ARGS__

inline std::string bytesOf(QString const& text) {
    return text.toStdString();
}
inline std::wstring wideOf(QString const& text) {
    return text.toStdWString();
}

/// Integers and strings in a data stream.
struct QtStream {
    using Text = QString;
    static Text text(wchar_t const* s) { return QString::fromWCharArray(s); }

    template <typename Value>
    void put(Value const& value) {
        stream << value;
    }
    void put(std::uint64_t value) { stream << static_cast<quint64>(value); }
    template <typename Value>
    void get(Value& value) {
        stream >> value;
    }
    void get(std::uint64_t& value) {
        quint64 read = 0;
        stream >> read;
        value = read;
    }
    void rewind() { stream.device()->seek(0); }

    QByteArray bytes;
    QDataStream stream{&bytes, QIODevice::ReadWrite};
};

#else
#define WITH_QT(...)
#endif

#endif
