// Files: single system calls, blocks, lines, replacing, listing, removing, temporary files.

#include "operation.h"

#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <fnmatch.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <fstream>

#include <portinglayer/files.h>
#include <portinglayer/libraries.h>

#include "bare_lines.h"

#ifdef BENCH_APR
#include <apr_file_io.h>
#include <apr_general.h>
#endif
#ifdef BENCH_BOOST
#include <boost/filesystem.hpp>
#endif
#ifdef BENCH_GLIB
#include <glib.h>
#include <glib/gstdio.h>
#endif
#ifdef BENCH_LIBUV
#include <uv.h>
#endif
#ifdef BENCH_NSPR
#include <nspr.h>
#endif
#ifdef BENCH_POCO
#include <Poco/DirectoryIterator.h>
#include <Poco/File.h>
#include <Poco/SharedLibrary.h>
#endif
#ifdef BENCH_QT
#include <QDir>
#include <QFile>
#include <QLibrary>
#include <QSaveFile>
#include <QTemporaryFile>
#include <QTextStream>
#endif

namespace {

namespace fs = std::filesystem;

/// A folder of its own, removed at the end.
class Folder {
public:
    Folder() {
        path = (fs::temp_directory_path() / "portinglayer-bench-XXXXXX").string();
        if (mkdtemp(path.data()) == nullptr) abort();
    }
    Folder(Folder const&) = delete;
    Folder& operator=(Folder const&) = delete;
    ~Folder() {
        std::error_code ignored;
        fs::remove_all(path, ignored);
    }
    std::string path;
};

/// A name in the folder, in the forms that the ways take.
struct Name {
    Name(std::string const& name) {
        static Folder const folder;
        narrow = folder.path + "/" + name;
        wide.assign(narrow.begin(), narrow.end());
        ours = wide.c_str();
    }
    char const* c() const { return narrow.c_str(); }
    std::string narrow;
    std::wstring wide;
    PString ours;
};

void _make(Name const& name, std::string const& content = "") {
    std::ofstream(name.narrow) << content;
}

constexpr unsigned long BLOCK = 4096;
char block[BLOCK];

#ifdef BENCH_APR
/// A pool for what one call allocates.
struct AprPool {
    AprPool() { apr_pool_create(&pool, nullptr); }
    ~AprPool() { apr_pool_destroy(pool); }
    AprPool(AprPool const&) = delete;
    AprPool& operator=(AprPool const&) = delete;
    apr_pool_t* pool = nullptr;
};
#endif

void _addOpening() {
    static Name const name("opened");
    _make(name);
    Operation shared("open and close", 1.10, 0, "open, close");
    shared.way(BARE, [] { return close(open(name.c(), O_RDONLY | O_CLOEXEC)); });
    shared.way("std::ifstream", [] { return std::ifstream(name.narrow).is_open() ? 0 : 1; });
#ifdef BENCH_QT
    static QString const qt = QString::fromStdString(name.narrow);
    shared.way("Qt", [] { return QFile(qt).open(QIODevice::ReadOnly) ? 0 : 1; });
#endif
#ifdef BENCH_APR
    shared.way("APR", [] {
        AprPool const pool;
        apr_file_t* file = nullptr;
        return apr_file_open(&file, name.c(), APR_FOPEN_READ, APR_OS_DEFAULT, pool.pool) +
               apr_file_close(file);
    });
#endif
#ifdef BENCH_NSPR
    shared.way("NSPR", [] { return static_cast<int>(PR_Close(PR_Open(name.c(), PR_RDONLY, 0))); });
#endif
    shared.way(OURS, [] {
        PFile file;
        return file.popen(name.ours, PFile::OPEN_READ, 1) + file.pclose();
    });

    Operation locked("open with lock and close", 1.10, 0, "open, flock, close");
    locked.way(BARE, [] {
        int const fd = open(name.c(), O_RDONLY | O_CLOEXEC);
        return flock(fd, LOCK_EX | LOCK_NB) + close(fd);
    });
    locked.way(OURS, [] {
        PFile file;
        return file.popen(name.ours, PFile::OPEN_READ, 0) + file.pclose();
    });
}

/// Moving `BLOCK` bytes at the start of a file: one seek and one transfer.
void _addBlocks() {
    static Name const name("blocks");
    _make(name, std::string(BLOCK, 'x'));
    static int const fd = open(name.c(), O_RDWR | O_CLOEXEC);
    static PFile ours;
    (void)ours.popen(name.ours, PFile::OPEN_READ | PFile::OPEN_WRITE, 1);
#ifdef BENCH_QT
    static QFile qt(QString::fromStdString(name.narrow));
    (void)qt.open(QIODevice::ReadWrite | QIODevice::Unbuffered);
#endif
    Operation reading("seek and read 4096 bytes", 1.10, BLOCK, "lseek, read");
    Operation writing("seek and write 4096 bytes", 1.10, BLOCK, "lseek, write");
    reading.way(BARE, [] {
        lseek(fd, 0, SEEK_SET);
        return static_cast<unsigned long>(read(fd, block, BLOCK));
    });
    writing.way(BARE, [] {
        lseek(fd, 0, SEEK_SET);
        return static_cast<unsigned long>(write(fd, block, BLOCK));
    });
#ifdef BENCH_QT
    reading.way("Qt", [] {
        qt.seek(0);
        return static_cast<unsigned long>(qt.read(block, BLOCK));
    });
    writing.way("Qt", [] {
        qt.seek(0);
        return static_cast<unsigned long>(qt.write(block, BLOCK));
    });
#endif
#ifdef BENCH_NSPR
    static PRFileDesc* const nspr = PR_Open(name.c(), PR_RDWR, 0);
    reading.way("NSPR", [] {
        PR_Seek(nspr, 0, PR_SEEK_SET);
        return static_cast<unsigned long>(PR_Read(nspr, block, BLOCK));
    });
    writing.way("NSPR", [] {
        PR_Seek(nspr, 0, PR_SEEK_SET);
        return static_cast<unsigned long>(PR_Write(nspr, block, BLOCK));
    });
#endif
    reading.way(OURS, [] {
        unsigned long done = 0;
        (void)ours.pseek(0, SEEK_SET);
        (void)ours.pread(block, BLOCK, done);
        return done;
    });
    writing.way(OURS, [] {
        unsigned long done = 0;
        (void)ours.pseek(0, SEEK_SET);
        (void)ours.pwrite(block, BLOCK, done);
        return done;
    });
}

void _addNames() {
    static Name const name("named");
    static Name const other("renamed");
    static Name const folder("made");
    _make(name);
    Operation existing("exists", 1.10, true, "access");
    existing.way(BARE, [] { return access(name.c(), F_OK) == 0; });
    existing.way("std::filesystem", [] { return fs::exists(name.narrow); });
#ifdef BENCH_QT
    static QString const qt = QString::fromStdString(name.narrow);
    existing.way("Qt", [] { return QFile::exists(qt); });
#endif
#ifdef BENCH_POCO
    existing.way("POCO", [] { return Poco::File(name.narrow).exists(); });
#endif
#ifdef BENCH_BOOST
    existing.way("Boost", [] { return boost::filesystem::exists(name.narrow); });
#endif
    existing.way(OURS, [] { return PFile::exists(name.ours); });

    Operation renaming("rename there and back", 1.10, 0, "rename");
    renaming.way(BARE, [] { return rename(name.c(), other.c()) + rename(other.c(), name.c()); });
    renaming.way(OURS, [] {
        return PFile::rename(name.ours, other.ours) + PFile::rename(other.ours, name.ours);
    });

    Operation folders("make and remove a folder", 1.10, 0, "mkdir, rmdir");
    folders.way(BARE, [] { return mkdir(folder.c(), 0775) + rmdir(folder.c()); });
    folders.way(OURS, [] {
        errno = 0;
        return PDir::pcreate(folder.ours) + PDir::pdelete(folder.ours);
    });

    static std::vector<Name> files;
    for (int i = 0; i < 100; ++i) files.emplace_back("deleted" + std::to_string(i));
    auto const make = [] {
        for (Name const& file : files) close(creat(file.c(), 0644));
    };
    Operation deleting("delete 100 files", 1.10, 0, "unlink");
    deleting.prepared(BARE, make, [] {
        int result = 0;
        for (Name const& file : files) result += unlink(file.c());
        return result;
    });
    deleting.prepared(OURS, make, [] {
        int result = 0;
        for (Name const& file : files) result += PFile::pdelete(file.ours);
        return result;
    });
}

int _replaceBare(Name const& name) {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    char temporary[256];
    (void)snprintf(temporary, sizeof temporary, "%s.talv_temp-%d-%lld", name.c(), getpid(),
                   now.tv_sec * 1000LL + now.tv_nsec / 1000000);
    int const fd = open(temporary, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    if (flock(fd, LOCK_EX | LOCK_NB) != 0 || write(fd, block, BLOCK) != BLOCK) return 1;
    return close(fd) + rename(temporary, name.c());
}

void _addReplacing() {
    static Name const name("replaced");
    Operation op("safe write 4096 bytes", 1.15, 0, "open, flock, write, close, rename");
    op.way(BARE, [] { return _replaceBare(name); });
#ifdef BENCH_QT
    static QString const qt = QString::fromStdString(name.narrow);
    op.way("Qt", [] {
        QSaveFile file(qt);
        return file.open(QIODevice::WriteOnly) && file.write(block, BLOCK) == BLOCK && file.commit()
                   ? 0
                   : 1;
    });
#endif
#ifdef BENCH_GLIB
    op.way("GLib", [] {
        auto const flags = G_FILE_SET_CONTENTS_CONSISTENT;
        return g_file_set_contents_full(name.c(), block, BLOCK, flags, 0644, nullptr) ? 0 : 1;
    });
#endif
    op.way(OURS, [] {
        PFile file;
        unsigned long done = 0;
        return file.popen(name.ours, PFile::OPEN_SAFE_WRITE, 0) + file.pwrite(block, BLOCK, done) +
               file.pclose();
    });
}

void _addLines() {
    static Name const name("lines");
    std::string content;
    for (int i = 0; i < 10000; ++i) content += "a line of forty characters, no more, no less\n";
    _make(name, content);
    Operation op("read 10000 lines", 1.15, content.size() - 10000, "read, lseek");
    op.way(BARE, [] {
        int const fd = open(name.c(), O_RDONLY | O_CLOEXEC);
        std::size_t characters = 0;
        std::wstring line;
        while (bareLine(fd, line)) characters += line.size();
        close(fd);
        return characters;
    });
    op.way("std::getline", [] {
        std::ifstream file(name.narrow);
        std::size_t characters = 0;
        for (std::string line; std::getline(file, line);) characters += line.size();
        return characters;
    });
#ifdef BENCH_QT
    op.way("Qt", [] {
        QFile file(QString::fromStdString(name.narrow));
        (void)file.open(QIODevice::ReadOnly);
        QTextStream stream(&file);
        std::size_t characters = 0;
        for (QString line; stream.readLineInto(&line);)
            characters += static_cast<std::size_t>(line.size());
        return characters;
    });
#endif
#ifdef BENCH_APR
    op.way("APR", [] {
        AprPool const pool;
        apr_file_t* file = nullptr;
        apr_file_open(&file, name.c(), APR_FOPEN_READ | APR_FOPEN_BUFFERED, APR_OS_DEFAULT,
                      pool.pool);
        std::size_t characters = 0;
        char line[256];
        while (apr_file_gets(line, sizeof line, file) == APR_SUCCESS)
            characters += strlen(line) - 1;
        apr_file_close(file);
        return characters;
    });
#endif
    op.way(OURS, [] {
        PFile file;
        (void)file.popen(name.ours, PFile::OPEN_READ, 1);
        std::size_t characters = 0;
        PString line;
        while (file.preadLine(line) == PERR_OK) characters += line.len();
        return characters;
    });
}

std::size_t _listBare(Name const& folder, char const* pattern) {
    DIR* const stream = opendir(folder.c());
    std::size_t names = 0;
    while (dirent const* const entry = readdir(stream))
        if (pattern == nullptr || fnmatch(pattern, entry->d_name, FNM_PATHNAME | FNM_NOESCAPE) == 0)
            ++names;
    closedir(stream);
    return names;
}

std::size_t _listOurs(Name const& folder, PLiteral const& pattern) {
    PDir dir(folder.ours, pattern);
    std::size_t names = 0;
    for ((void)dir.preaddir(); dir == PERR_OK; ++dir) ++names;
    return names;
}

/// Every library counts "." and ".." where it gives them; the others add two.
template <typename Iterator, typename Path>
std::size_t _count(Path const& path) {
    std::size_t names = 2;
    for (Iterator entry(path), end; entry != end; ++entry) ++names;
    return names;
}

void _addListing(unsigned count) {
    auto const folder = std::make_shared<Name>("listed" + std::to_string(count));
    fs::create_directory(folder->narrow);
    for (unsigned i = 0; i < count; ++i)
        _make(Name("listed" + std::to_string(count) + "/file-" + std::to_string(i) +
                   (i % 4 == 0 ? ".conf" : ".txt")));

    Operation op("list names " + std::to_string(count), 2.0, count + 2UL, "opendir, readdir");
    op.way(BARE, [=] { return _listBare(*folder, nullptr); });
    op.way("std::filesystem", [=] { return _count<fs::directory_iterator>(folder->narrow); });
#ifdef BENCH_QT
    QString const qt = QString::fromStdString(folder->narrow);
    op.way("Qt", [=] {
        auto const filter = QDir::AllEntries | QDir::Hidden | QDir::System;
        return static_cast<std::size_t>(QDir(qt).entryList(filter, QDir::Unsorted).size());
    });
#endif
#ifdef BENCH_BOOST
    op.way("Boost", [=] { return _count<boost::filesystem::directory_iterator>(folder->narrow); });
#endif
#ifdef BENCH_POCO
    op.way("POCO", [=] { return _count<Poco::DirectoryIterator>(folder->narrow); });
#endif
#ifdef BENCH_GLIB
    op.way("GLib", [=] {
        GDir* const dir = g_dir_open(folder->c(), 0, nullptr);
        std::size_t names = 2;
        while (g_dir_read_name(dir) != nullptr) ++names;
        g_dir_close(dir);
        return names;
    });
#endif
#ifdef BENCH_LIBUV
    op.way("libuv", [=] {
        uv_fs_t request;
        std::size_t const names =
            2 + static_cast<std::size_t>(uv_fs_scandir(nullptr, &request, folder->c(), 0, nullptr));
        uv_fs_req_cleanup(&request);
        return names;
    });
#endif
    op.way(OURS, [=] { return _listOurs(*folder, L""); });

    Operation some("list names of a pattern " + std::to_string(count), 0.6, (count + 3UL) / 4,
                   "opendir, readdir, fnmatch");
    some.way(BARE, [=] { return _listBare(*folder, "*.conf"); });
#ifdef BENCH_QT
    some.way("Qt", [=] {
        QDir const dir(qt, "*.conf", QDir::Unsorted);
        return static_cast<std::size_t>(dir.entryList().size());
    });
#endif
    some.way(OURS, [=] { return _listOurs(*folder, L"*.conf"); });
}

/// The sequence the library is bound to: existence, kind, listing, one `stat` for each entry.
int _removeBare(std::string const& path) {
    struct stat status {};
    if (access(path.c_str(), F_OK) != 0 || stat(path.c_str(), &status) != 0) return 1;
    DIR* const stream = opendir(path.c_str());
    while (dirent const* const entry = readdir(stream)) {
        if (strcmp(entry->d_name, ".") == 0 || strcmp(entry->d_name, "..") == 0) continue;
        std::string const child = path + "/" + entry->d_name;
        if (stat(child.c_str(), &status) != 0) return 1;
        if ((S_ISDIR(status.st_mode) ? _removeBare(child) : unlink(child.c_str())) != 0) return 1;
    }
    closedir(stream);
    return rmdir(path.c_str());
}

void _addRemoving() {
    static Name const tree("tree");
    auto const make = [] {
        for (int i = 0; i < 10; ++i) {
            std::string const folder = tree.narrow + "/" + std::to_string(i);
            fs::create_directories(folder);
            for (int j = 0; j < 100; ++j)
                close(creat((folder + "/file" + std::to_string(j)).c_str(), 0644));
        }
    };
    Operation op("remove a tree of 1000 files", 1.15, 0, "opendir, readdir, stat, unlink, rmdir");
    op.prepared(BARE, make, [] { return _removeBare(tree.narrow); });
    op.prepared("std::filesystem", make,
                [] { return fs::remove_all(tree.narrow) == 1011 ? 0 : 1; });
#ifdef BENCH_QT
    static QString const qt = QString::fromStdString(tree.narrow);
    op.prepared("Qt", make, [] { return QDir(qt).removeRecursively() ? 0 : 1; });
#endif
#ifdef BENCH_BOOST
    op.prepared("Boost", make,
                [] { return boost::filesystem::remove_all(tree.narrow) == 1011 ? 0 : 1; });
#endif
#ifdef BENCH_POCO
    op.prepared("POCO", make, [] {
        Poco::File(tree.narrow).remove(true);
        return 0;
    });
#endif
    op.prepared(OURS, make, [] { return PFile::removeAll(tree.ours); });
}

int _temporaryBare(Name const& prefix) {
    srand(static_cast<unsigned>(time(nullptr)));
    char path[256];
    (void)snprintf(path, sizeof path, "%s%d", prefix.c(), rand() % 238328);
    if (open(path, O_RDONLY | O_CLOEXEC) != -1) return 1;
    int const fd = open(path, O_WRONLY | O_CREAT | O_CLOEXEC, 0644);
    return close(fd) + unlink(path);
}

void _addTemporary() {
    static Name const prefix("temporary");
    static std::string const pattern = prefix.narrow + "XXXXXX";
    Operation op("make and delete a temporary file", 1.15, 0, "open, open, close, unlink");
    op.way(BARE, [] { return _temporaryBare(prefix); });
    op.way("mkstemp", [] {
        std::string path = pattern;
        return close(mkostemp(path.data(), O_CLOEXEC)) + unlink(path.c_str());
    });
#ifdef BENCH_QT
    static QString const qt = QString::fromStdString(pattern);
    op.way("Qt", [] {
        QTemporaryFile file(qt);
        return file.open() ? 0 : 1;
    });
#endif
#ifdef BENCH_GLIB
    op.way("GLib", [] {
        std::string path = pattern;
        return close(g_mkstemp_full(path.data(), O_RDWR | O_CLOEXEC, 0600)) +
               g_unlink(path.c_str());
    });
#endif
    op.way(OURS, [] {
        PTempFile file;
        PString path;
        return file.popen(prefix.ours, PFile::OPEN_WRITE | PFile::OPEN_CREATE, 1) +
               file.pgetName(path) + file.pclose() + PFile::pdelete(path);
    });
}

/// Part of the C library, and not loaded by anything else here.
constexpr char LIBRARY[] = "libBrokenLocale.so.1";
constexpr wchar_t WIDE_LIBRARY[] = L"libBrokenLocale.so.1";

void _addLibrary() {
    Operation op("load and unload a library", 1.10, 0, "dlopen, dlclose");
    op.way(BARE, [] { return dlclose(dlopen(LIBRARY, RTLD_LAZY)); });
#ifdef BENCH_QT
    op.way("Qt", [] {
        QLibrary library(LIBRARY);
        return library.load() && library.unload() ? 0 : 1;
    });
#endif
#ifdef BENCH_POCO
    op.way("POCO", [] {
        Poco::SharedLibrary library(LIBRARY);
        library.unload();
        return 0;
    });
#endif
    op.way(OURS, [] {
        PLibrary* library = nullptr;
        int const result = PLibrary::load(WIDE_LIBRARY, library, true);
        delete library;
        return result;
    });
}

}  // namespace

void addFiles() {
#ifdef BENCH_APR
    (void)apr_initialize();
#endif
    _addOpening();
    _addBlocks();
    _addNames();
    _addReplacing();
    _addLines();
    for (unsigned const count : {64U, 1024U, 16384U}) _addListing(count);
    _addRemoving();
    _addTemporary();
    _addLibrary();
}
