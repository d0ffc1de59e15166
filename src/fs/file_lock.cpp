#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <ctime>
#include <string>

#include <portinglayer/file_locks.h>

#include "fs/descriptor.h"
#include "fs/held_locks.h"
#include "fs/open_failure.h"
#include "fs/uninterrupted.h"
#include "sync/deadline.h"
#include "sync/uncancelled.h"
#include "text/utf8_name.h"

namespace {

constexpr int NONE = -1;
constexpr int CHANGED = 1;  // no code: the name was removed or replaced between two looks at it
constexpr int FLAGS = O_CLOEXEC | O_NONBLOCK | O_NOCTTY;
constexpr mode_t NEW_FILE_MODE = 0666;
constexpr unsigned int PAUSE_MS = 10;  // half of what may pass unnoticed

/// No space is no failure of a write here: nothing is written.
int _lockFailure(int error) {
    int const code = _openFailure(error);
    return code == PERR_WRITE ? PERR_SYSTEM : code;
}

/// Opens what stands there, without waiting for the other end of a pipe.
int _openStanding(char const* path) {
    int const fd = ::open(path, O_RDWR | FLAGS);  // some file systems lock only what may be written
    return fd == NONE && errno != ENOENT ? ::open(path, O_RDONLY | FLAGS) : fd;
}

/// As above, but makes a missing file.
int _open(char const* path) {
    int fd = _openStanding(path);
    if (fd != NONE || errno != ENOENT) return fd;
    fd = ::open(path, O_RDWR | O_CREAT | FLAGS, NEW_FILE_MODE);
    if (fd != NONE || errno != EACCES) return fd;

    // In a folder of everybody's the system may refuse to make what another user has just made.
    fd = _openStanding(path);
    if (fd == NONE && errno == ENOENT) errno = EACCES;  // it was the folder that refused
    return fd;
}

bool _isSame(struct stat const& a, struct stat const& b) {
    return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

/// Opens what stands under the name, for the lock to hold. False, with errno, where it cannot.
bool _openFor(PFileLock& lock, char const* path) {
    for (;;) {
        unsigned int const forks = HeldLocks::forks();
        Descriptor file(_uninterrupted([&] { return _open(path); }));
        if (!file.isOpen() || !_leaveStandardStreams(file)) return false;
        if (HeldLocks::add(lock, file, forks)) return true;
    }
}

int _lockStanding(int fd, char const* path) {
    struct stat ours;
    if (fstat(fd, &ours) != 0) return _lockFailure(errno);
    if (!S_ISREG(ours.st_mode)) return PERR_REFUSED;
    if (_uninterrupted([&] { return flock(fd, LOCK_EX | LOCK_NB); }) != 0)
        return errno == EWOULDBLOCK ? PERR_LOCKED : PERR_SYSTEM;

    struct stat standing;
    if (stat(path, &standing) != 0) return errno == ENOENT ? CHANGED : _lockFailure(errno);
    return _isSame(ours, standing) ? PERR_OK : CHANGED;
}

}  // namespace

PFileLock::PFileLock() : next(nullptr), fd(NONE), holder(0) {
}

PFileLock::~PFileLock() {
    (void)unlock();  // nothing may be held
}

int PFileLock::lock(PLiteral const& name, unsigned int limit) {
    std::string path;
    int const named = _utf8Name(name, path);
    if (named != PERR_OK) return named;
    if (fd != NONE) return PERR_ALREADY_OPEN;
    if (!HeldLocks::watchForks()) return PERR_NO_MEMORY;

    for (Deadline const end(limit);;) {
        int const result = attempt(path.c_str());
        if (result != PERR_LOCKED || end.isOver()) return result;
        timespec place{};  // a pause that a signal cuts short only ends in an earlier try
        (void)nanosleep(end.within(PAUSE_MS).left(place), nullptr);
    }
}

int PFileLock::unlock() {
    if (fd == NONE || holder != getpid()) return PERR_NOT_OPEN;
    release();
    return PERR_OK;
}

/// Tries once, or until the name is left alone for long enough. Holds nothing on failure.
int PFileLock::attempt(char const* path) {
    Uncancelled const throughout;
    int result = CHANGED;
    while (result == CHANGED) {
        if (!_openFor(*this, path)) return _lockFailure(errno);
        result = _lockStanding(fd, path);
        if (result != PERR_OK) release();
    }
    return result;
}

void PFileLock::release() {
    Uncancelled const throughout;
    (void)flock(fd, LOCK_UN);  // also for copies that others may have; the close does the rest
    HeldLocks::close(*this);
}
