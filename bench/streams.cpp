// Data streams: integers, strings and records, both directions, all with the most significant byte
// first. Each peer is one small adaptor in peers.h; the work is written once.

#include "operation.h"

#include <cstdint>
#include <cstring>
#include <memory>
#include <sstream>
#include <vector>

#include <portinglayer/data_streams.h>

namespace {

/// The integers of one record, as a reader of mixed streams goes through them: kind after kind.
enum class Kind : unsigned char { WORD, DWORD, QWORD, INT };
using Layout = std::vector<Kind>;

Layout const& _layout() {
    static Layout const layout{Kind::WORD,  Kind::DWORD, Kind::QWORD, Kind::INT,   Kind::DWORD,
                               Kind::DWORD, Kind::WORD,  Kind::INT,   Kind::QWORD, Kind::DWORD};
    return layout;
}

template <typename Stream>
void _put(Stream& stream, Kind kind, unsigned value) {
    switch (kind) {
    case Kind::WORD: return stream.put(static_cast<std::uint16_t>(value));
    case Kind::DWORD: return stream.put(static_cast<std::uint32_t>(value));
    case Kind::QWORD: return stream.put(static_cast<std::uint64_t>(value));
    case Kind::INT: return stream.put(static_cast<std::int32_t>(value));
    }
}

template <typename Integer, typename Stream>
std::uint64_t _get(Stream& stream) {
    Integer value{};
    stream.get(value);
    return static_cast<std::uint64_t>(value);
}

template <typename Stream>
std::uint64_t _get(Stream& stream, Kind kind) {
    switch (kind) {
    case Kind::WORD: return _get<std::uint16_t>(stream);
    case Kind::DWORD: return _get<std::uint32_t>(stream);
    case Kind::QWORD: return _get<std::uint64_t>(stream);
    case Kind::INT: return _get<std::int32_t>(stream);
    }
    return 0;
}

template <typename Integer>
Integer _swapped(Integer value) {
    if constexpr (sizeof value == 2) return static_cast<Integer>(__builtin_bswap16(value));
    if constexpr (sizeof value == 4) return static_cast<Integer>(__builtin_bswap32(value));
    if constexpr (sizeof value == 8) return static_cast<Integer>(__builtin_bswap64(value));
}

/// The hand-written way: a byte vector, bounds checked, with the library's own format.
struct Bare {
    using Text = std::wstring;
    static constexpr unsigned char STRING_TAG = 0x09;
    static constexpr unsigned char TEXT_TAG = 0x85;
    static Text text(wchar_t const* s) { return s; }

    void put(unsigned char value) { bytes.push_back(value); }
    template <typename Integer>
    void put(Integer value) {
        value = _swapped(value);
        auto const* const from = reinterpret_cast<unsigned char const*>(&value);
        bytes.insert(bytes.end(), from, from + sizeof value);
    }
    void put(Text const& s) {
        put(STRING_TAG);
        put(TEXT_TAG);
        put(static_cast<std::uint32_t>(s.size()));
        for (wchar_t const c : s) bytes.push_back(static_cast<unsigned char>(c));
    }

    void get(unsigned char& value) {
        if (at < bytes.size()) value = bytes[at++];
    }
    template <typename Integer>
    void get(Integer& value) {
        if (bytes.size() - at < sizeof value) return;
        memcpy(&value, bytes.data() + at, sizeof value);
        value = _swapped(value);
        at += sizeof value;
    }
    void get(Text& s) {
        unsigned char tags[2] = {};
        std::uint32_t count = 0;
        get(tags[0]);
        get(tags[1]);
        get(count);
        if (tags[0] != STRING_TAG || tags[1] != TEXT_TAG || bytes.size() - at < count) return;
        s.assign(bytes.data() + at, bytes.data() + at + count);
        at += count;
    }
    void rewind() { at = 0; }

    std::vector<unsigned char> bytes;
    std::size_t at = 0;
};

/// The same with a call for each integer, as from a library.
struct Called : Bare {
    template <typename Integer>
    [[gnu::noinline]] void put(Integer value) {
        Bare::put(value);
    }
    template <typename Integer>
    [[gnu::noinline]] void get(Integer& value) {
        Bare::get(value);
    }
};

struct Ours {
    using Text = PString;
    static Text text(wchar_t const* s) { return {s, P_WHOLE_STRING}; }

    void put(std::uint16_t value) { writer.appendWord(value); }
    void put(std::uint32_t value) { writer.appendDword(value); }
    void put(std::uint64_t value) { writer.appendQword(value); }
    void put(std::int32_t value) { writer.appendInt(value); }
    void put(Text const& s) { (void)writer.writeString(s); }

    void get(std::uint16_t& value) { (void)reader.getWord(value); }
    void get(std::uint32_t& value) { (void)reader.getDword(value); }
    void get(std::uint64_t& value) {
        unsigned long long read = 0;
        (void)reader.getQword(read);
        value = read;
    }
    void get(std::int32_t& value) { (void)reader.getInt(value); }
    void get(Text& s) { (void)reader.readString(s); }
    void rewind() { reader.setOffset(0); }

    std::vector<unsigned char> bytes;
    PDataWriter writer{bytes};
    PDataReader reader{bytes};
};

template <typename Text>
struct Record {
    Text name;
    std::uint32_t id;
    Text primary;
    Text secondary;
};

/// What is written and read: `count` items of a kind, made once for each kind of stream.
template <typename Stream>
struct Integers {
    explicit Integers(unsigned n) : count(n) {}
    void write(Stream& stream) const {
        for (unsigned i = 0; i < count;)
            for (Kind const kind : _layout()) _put(stream, kind, i++);
    }
    std::uint64_t read(Stream& stream) const {
        std::uint64_t sum = 0;
        for (unsigned i = 0; i < count; i += static_cast<unsigned>(_layout().size()))
            for (Kind const kind : _layout()) sum += _get(stream, kind);
        return sum;
    }
    unsigned count;
};

template <typename Stream, typename... Integer>
void _putEach(Stream& stream, unsigned value) {
    (stream.put(static_cast<Integer>(value)), ...);
}
template <typename Stream, typename... Integer>
std::uint64_t _getEach(Stream& stream) {
    return (_get<Integer>(stream) + ...);
}

/// The same, but in one order that is fixed in the code: nothing to do but load and swap.
template <typename Stream>
struct FixedIntegers {
    explicit FixedIntegers(unsigned n) : count(n) {}
    void write(Stream& stream) const {
        for (unsigned i = 0; i < count; i += 4)
            _putEach<Stream, std::uint16_t, std::uint32_t, std::uint64_t, std::int32_t>(stream, i);
    }
    std::uint64_t read(Stream& stream) const {
        std::uint64_t sum = 0;
        for (unsigned i = 0; i < count; i += 4)
            sum +=
                _getEach<Stream, std::uint16_t, std::uint32_t, std::uint64_t, std::int32_t>(stream);
        return sum;
    }
    unsigned count;
};

std::size_t _length(PString const& text) {
    return text.len();
}
template <typename Text>
std::size_t _length(Text const& text) {
    return static_cast<std::size_t>(text.length());
}

template <typename Stream>
struct Strings {
    explicit Strings(unsigned n) : texts(n, Stream::text(L"connection.timeout")) {}
    void write(Stream& stream) const {
        for (auto const& text : texts) stream.put(text);
    }
    std::uint64_t read(Stream& stream) const {
        std::uint64_t sum = 0;
        std::vector<typename Stream::Text> list;
        for (std::size_t i = 0; i < texts.size(); ++i) {
            typename Stream::Text text;
            stream.get(text);
            sum += _length(text);
            list.push_back(std::move(text));
        }
        return sum;
    }
    std::vector<typename Stream::Text> texts;
};

template <typename Stream>
struct Records {
    using Text = typename Stream::Text;
    explicit Records(unsigned n)
        : records(n, {Stream::text(L"target-0001"), 1, Stream::text(L"192.168.117.23"),
                      Stream::text(L"fe80::1ff:fe23:4567:890a")}) {}
    void write(Stream& stream) const {
        stream.put(static_cast<std::uint32_t>(records.size()));
        for (auto const& record : records) {
            stream.put(record.name);
            stream.put(record.id);
            stream.put(record.primary);
            stream.put(record.secondary);
        }
    }
    std::uint64_t read(Stream& stream) const {
        std::uint64_t sum = 0;
        std::vector<Record<Text>> list;
        for (std::uint64_t left = _get<std::uint32_t>(stream); left > 0; --left) {
            Record<Text> record{};
            stream.get(record.name);
            stream.get(record.id);
            stream.get(record.primary);
            stream.get(record.secondary);
            sum += record.id + _length(record.secondary);
            list.push_back(std::move(record));
        }
        return sum;
    }
    std::vector<Record<Text>> records;
};

template <>
struct Records<Ours> {
    explicit Records(unsigned n)
        : records(n, {{Ours::text(L"target-0001"), 1},
                      {Ours::text(L"192.168.117.23"), Ours::text(L"fe80::1ff:fe23:4567:890a")}}) {}
    void write(Ours& stream) const {
        (void)PDataFormaterUtils::writePTargetInfoArray(stream.writer, records);
    }
    std::uint64_t read(Ours& stream) const {
        std::uint64_t sum = 0;
        std::vector<PTargetInfo> list;
        (void)PDataFormaterUtils::readPTargetInfoArray(stream.reader, list);
        for (PTargetInfo const& info : list) sum += info.targetId.id + info.address.secondary.len();
        return sum;
    }
    std::vector<PTargetInfo> records;
};

/// One way of both directions. What was written is checked by reading it.
template <template <typename> class Items, typename Stream>
void _addWay(Operation<std::uint64_t>& writing, Operation<std::uint64_t>& reading, char const* name,
             unsigned count) {
    auto const items = std::make_shared<Items<Stream>>(count);
    auto const write = [=] {
        auto stream = std::make_unique<Stream>();
        items->write(*stream);
        return stream;
    };
    writing.way(name, write, [=](std::unique_ptr<Stream> const& stream) {
        stream->rewind();
        return items->read(*stream);
    });
    auto const written = std::shared_ptr<Stream>(write());
    reading.way(name, [=] {
        written->rewind();
        return items->read(*written);
    });
}

template <template <typename> class Items>
void _add(std::string const& items, unsigned count, std::uint64_t sum, Limits writingLimits = {},
          Limits readingLimits = {}) {
    std::string const end = items + " " + std::to_string(count);
    Operation writing("write " + end, writingLimits, sum, "std::vector by hand");
    Operation reading("read " + end, readingLimits, sum, "std::vector by hand");
    _addWay<Items, Bare>(writing, reading, BARE, count);
    if (items.rfind("integers", 0) == 0)
        _addWay<Items, Called>(writing, reading, "by hand, called", count);
    WITH_QT((_addWay<Items, QtStream>(writing, reading, "Qt", count)));
    WITH_POCO((_addWay<Items, PocoStream>(writing, reading, "POCO", count)));
    WITH_ACE((_addWay<Items, AceStream>(writing, reading, "ACE", count)));
    _addWay<Items, Ours>(writing, reading, OURS, count);
}

/// The sum of `count` integers, each its position; in a fixed order, four of a kind in turn share one.
std::uint64_t _sum(unsigned count, unsigned each = 1) {
    std::uint64_t sum = 0;
    for (std::uint64_t i = 0; i < count; ++i) {
        bool const word = each == 4 ? i % 4 == 0 : _layout()[i % _layout().size()] == Kind::WORD;
        std::uint64_t const value = i / each * each;
        sum += word ? value % 65536 : value;
    }
    return sum;
}

}  // namespace

void addStreams() {
    for (unsigned const count : {1000U, 16000U, 256000U})
        _add<Integers>("integers", count, _sum(count), {.toBare = 1.05});
    _add<FixedIntegers>("integers, fixed order", 1000, _sum(1000, 4));

    Limits const writing{.toBare = 0.85, .toPeer = 1.05};
    Limits const reading{.toBare = 1.0};
    _add<Strings>("strings", 100, 18 * 100, writing, reading);
    _add<Records>("records", 100, 25 * 100, writing, reading);
    for (unsigned const count : {1600U, 25600U}) {
        _add<Strings>("strings", count, std::uint64_t{18} * count);
        _add<Records>("records", count, std::uint64_t{25} * count);
    }
}
