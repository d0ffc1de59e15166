// Files: opening, blocks, names, replacing, temporary files; libraries.

#include "operation.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <vector>

#include <portinglayer/file_locks.h>
#include <portinglayer/files.h>
#include <portinglayer/libraries.h>
#include <portinglayer/replacements.h>

#include "scratch.h"

namespace {

constexpr unsigned long BLOCK = 4096;
char block[BLOCK];

/// A file that is there, by its full name and, in the working folder, by a short one.
std::shared_ptr<Forms const> _existing(bool byShortName) {
    Name const name("f");
    makeFile(name.narrow);
    return byShortName ? std::make_shared<Forms>(L"f") : std::make_shared<Forms>(name);
}

void _addOpening(char const* title, bool byShortName, Limits const& limits) {
    auto const name = _existing(byShortName);
    Operation op(title, limits, 0, "open, close");
    op.way(BARE, [=] { return close(open(name->c(), O_RDONLY | O_CLOEXEC)); });
    op.way("std::ifstream", [=] { return !std::ifstream(name->narrow).is_open(); });
    WITH_QT(op.way("Qt", [=] { return !QFile(name->qt).open(QIODevice::ReadOnly); }));
    WITH_APR(op.way("APR", [=] {
        AprPool const pool;
        apr_file_t* file = nullptr;
        return apr_file_open(&file, name->c(), APR_FOPEN_READ, APR_OS_DEFAULT, pool.pool) +
               apr_file_close(file);
    }));
    WITH_NSPR(op.way("NSPR", [=] { return PR_Close(PR_Open(name->c(), PR_RDONLY, 0)); }));
    op.way(OURS, [=] {
        PFile file;
        return file.popen(name->ours, PFile::OPEN_READ, PFile::UNLOCKED) + file.pclose();
    });
}

void _addLocking() {
    static auto const name = _existing(false);
    Operation op("open with lock and close", 1.10, 0, "open, flock, close");
    op.way(BARE, [] {
        int const fd = open(name->c(), O_RDONLY | O_CLOEXEC);
        return flock(fd, LOCK_EX | LOCK_NB) + close(fd);
    });
    op.way(OURS, [] {
        PFile file;
        return file.popen(name->ours, PFile::OPEN_READ, PFile::EXCLUSIVE) + file.pclose();
    });
}

void _addFileLock() {
    static auto const name = _existing(false);
    Operation op("lock and unlock a file", 1.15, 0, "open, fstat, flock, stat, flock, close");
    op.way(BARE, [] {
        struct stat ours, standing;
        int const fd = open(name->c(), O_RDWR | O_CLOEXEC);
        if (fstat(fd, &ours) + flock(fd, LOCK_EX | LOCK_NB) + stat(name->c(), &standing) != 0)
            return 1;
        if (ours.st_ino != standing.st_ino) return 1;
        return flock(fd, LOCK_UN) + close(fd);
    });
    WITH_APR(op.way("APR", [] {
        AprPool const pool;
        apr_file_t* file = nullptr;
        return apr_file_open(&file, name->c(), APR_FOPEN_WRITE, APR_OS_DEFAULT, pool.pool) +
               apr_file_lock(file, APR_FLOCK_EXCLUSIVE | APR_FLOCK_NONBLOCK) +
               apr_file_unlock(file) + apr_file_close(file);
    }));
    op.way(OURS, [] {
        PFileLock lock;
        return lock.lock(name->ours, 0) + lock.unlock();
    });
}

void _addExistence(char const* title, bool byShortName, Limits const& limits) {
    auto const name = _existing(byShortName);
    Operation op(title, limits, true, "access");
    op.way(BARE, [=] { return access(name->c(), F_OK) == 0; });
    op.way("std::filesystem", [=] { return std::filesystem::exists(name->narrow); });
    WITH_QT(op.way("Qt", [=] { return QFile::exists(name->qt); }));
    WITH_POCO(op.way("POCO", [=] { return Poco::File(name->narrow).exists(); }));
    WITH_BOOST(op.way("Boost", [=] { return boost::filesystem::exists(name->narrow); }));
    WITH_GLIB(op.way("GLib", [=] { return g_access(name->c(), F_OK) == 0; }));
    op.way(OURS, [=] { return PFile::exists(name->ours); });
}

/// Moving `BLOCK` bytes at the start of a file: one seek and one transfer.
void _addBlocks(bool writing) {
    static Name const name("blocks");
    makeFile(name.narrow, std::string(BLOCK, 'x'));
    static int const fd = open(name.c(), O_RDWR | O_CLOEXEC);
    static PFile ours;
    (void)ours.popen(name.ours, PFile::OPEN_READ | PFile::OPEN_WRITE, 1);
    WITH_QT(static QFile qt(name.qt); (void)qt.open(QIODevice::ReadWrite | QIODevice::Unbuffered));
    WITH_NSPR(static PRFileDesc* const nspr = PR_Open(name.c(), PR_RDWR, 0));

    std::string const verb = writing ? "write" : "read";
    Operation op("seek and " + verb + " 4096 bytes", 1.10, BLOCK, "lseek, " + verb);
    op.way(BARE, [=] {
        lseek(fd, 0, SEEK_SET);
        return writing ? write(fd, block, BLOCK) : read(fd, block, BLOCK);
    });
    WITH_QT(op.way("Qt", [=] {
        qt.seek(0);
        return writing ? qt.write(block, BLOCK) : qt.read(block, BLOCK);
    }));
    WITH_NSPR(op.way("NSPR", [=] {
        PR_Seek(nspr, 0, PR_SEEK_SET);
        return writing ? PR_Write(nspr, block, BLOCK) : PR_Read(nspr, block, BLOCK);
    }));
    op.way(OURS, [=] {
        unsigned long done = 0;
        (void)ours.pseek(0, SEEK_SET);
        (void)(writing ? ours.pwrite(block, BLOCK, done) : ours.pread(block, BLOCK, done));
        return done;
    });
}

void _addRenaming() {
    static Name const name("named");
    static Name const other("renamed");
    makeFile(name.narrow);
    Operation op("rename there and back", 1.10, 0, "rename");
    op.way(BARE, [] { return rename(name.c(), other.c()) + rename(other.c(), name.c()); });
    op.way(OURS, [] {
        return PFile::rename(name.ours, other.ours) + PFile::rename(other.ours, name.ours);
    });
}

void _addDeleting() {
    static std::vector<Name> files;
    for (int i = 0; i < 100; ++i) files.emplace_back("deleted" + std::to_string(i));
    auto const make = [] {
        for (Name const& file : files) close(creat(file.c(), 0644));
    };
    Operation op("delete 100 files", 1.10, 0, "unlink");
    op.prepared(BARE, make, [] {
        int result = 0;
        for (Name const& file : files) result += unlink(file.c());
        return result;
    });
    op.prepared(OURS, make, [] {
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

WITH_QT(int _saveByQt(QString const& name) {
    QSaveFile file(name);
    bool const written = file.open(QIODevice::WriteOnly) && file.write(block, BLOCK) == BLOCK;
    return written && file.commit() ? 0 : 1;
})

WITH_GLIB(int _saveByGlib(Name const& name, GFileSetContentsFlags flags) {
    return !g_file_set_contents_full(name.c(), block, BLOCK, flags, 0644, nullptr);
})

void _addReplacing() {
    static Name const name("replaced");
    Operation op("safe write 4096 bytes", 1.15, 0, "open, flock, write, close, rename");
    op.way(BARE, [] { return _replaceBare(name); });
    WITH_QT(op.way("Qt", [] { return _saveByQt(name.qt); }));
    WITH_GLIB(op.way("GLib", [] { return _saveByGlib(name, G_FILE_SET_CONTENTS_CONSISTENT); }));
    op.way(OURS, [] {
        PFile file;
        unsigned long done = 0;
        return file.popen(name.ours, PFile::OPEN_SAFE_WRITE, 0) + file.pwrite(block, BLOCK, done) +
               file.pclose();
    });
}

int _replaceForGoodBare(Name const& name) {
    std::string const temporary = name.narrow + ".new";
    int const fd = open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0644);
    if (write(fd, block, BLOCK) != BLOCK || fsync(fd) != 0) return 1;
    int const around = open(folder().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    return close(fd) + rename(temporary.c_str(), name.c()) + fsync(around) + close(around);
}

/// What is moved and lasts when the machine stops the moment after. Qt flushes the file alone.
void _addReplacingForGood() {
    static Name const name("replaced for good");
    Operation op("replace 4096 bytes for good", 1.25, 0, "open, write, fsync, rename, fsync");
    op.way(BARE, [] { return _replaceForGoodBare(name); });
    WITH_QT(op.way("Qt", [] { return _saveByQt(name.qt); }));
    WITH_GLIB(op.way("GLib", [] {
        auto const both = G_FILE_SET_CONTENTS_CONSISTENT | G_FILE_SET_CONTENTS_DURABLE;
        return _saveByGlib(name, static_cast<GFileSetContentsFlags>(both));
    }));
    op.way(OURS, [] {
        PReplacement replacement;
        return replacement.begin(name.ours) + replacement.write(block, BLOCK) +
               replacement.commit();
    });
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
    static Name const pattern("temporaryXXXXXX");
    Operation op("make and delete a temporary file", 1.15, 0, "open, open, close, unlink");
    op.way(BARE, [] { return _temporaryBare(prefix); });
    op.way("mkstemp", [] {
        std::string path = pattern.narrow;
        return close(mkostemp(path.data(), O_CLOEXEC)) + unlink(path.c_str());
    });
    WITH_QT(op.way("Qt", [] { return !QTemporaryFile(pattern.qt).open(); }));
    WITH_GLIB(op.way("GLib", [] {
        std::string path = pattern.narrow;
        return close(g_mkstemp_full(path.data(), O_RDWR | O_CLOEXEC, 0600)) +
               g_unlink(path.c_str());
    }));
    op.way(OURS, [] {
        PTempFile file;
        PString path;
        return file.popen(prefix.ours, PFile::OPEN_WRITE | PFile::OPEN_CREATE, 1) +
               file.pgetName(path) + file.pclose() + PFile::pdelete(path);
    });
}

void _addLibrary() {
    // Part of the C library, and not loaded by anything else here.
    static Forms const name(L"libBrokenLocale.so.1");
    Operation op("load and unload a library", 1.10, 0, "dlopen, dlclose");
    op.way(BARE, [] { return dlclose(dlopen(name.c(), RTLD_LAZY)); });
    WITH_QT(op.way("Qt", [] {
        QLibrary library(name.qt);
        return !library.load() || !library.unload();
    }));
    WITH_POCO(op.way("POCO", [] {
        Poco::SharedLibrary library(name.narrow);
        library.unload();
        return 0;
    }));
    op.way(OURS, [] {
        PLibrary* library = nullptr;
        int const result = PLibrary::load(name.ours, library, true);
        delete library;
        return result;
    });
}

}  // namespace

void addFiles() {
    _addOpening("open and close", false, {.toBare = 1.10});
    _addOpening("open and close, short name", true, {.toPeer = 1.05});
    _addLocking();
    _addFileLock();
    _addExistence("exists", false, {.toBare = 1.10});
    _addExistence("exists, short name", true, {.toPeer = 1.10});
    for (bool const writing : {false, true}) _addBlocks(writing);
    _addRenaming();
    _addDeleting();
    _addReplacing();
    _addReplacingForGood();
    _addTemporary();
    _addLibrary();
}
