#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cwchar>
#include <utility>

#include <portinglayer/files.h>
#include <portinglayer/threads.h>

#include "fs/joined_name.h"
#include "fs/narrow_path.h"
#include "sync/uncancelled.h"

namespace {

constexpr int CLOSED = -1;
constexpr mode_t NEW_FILE_MODE = 0644;
constexpr std::size_t WRITER_ROOM = 64;  // characters of ".talv_temp-PROCESS-TICK", at most

/// Turns mode bits into those of the system; false for a combination that is not allowed.
bool _systemFlags(unsigned int flags, int& system) {
    bool const write = (flags & PFile::OPEN_WRITE) != 0;
    bool const create = (flags & PFile::OPEN_CREATE) != 0;
    bool const truncate = (flags & PFile::OPEN_TRUNCATE) != 0;
    if (truncate && !write && !create) return false;  // a created file may be truncated unwritten

    system = O_CLOEXEC | O_RDONLY;
    if (write) system = O_CLOEXEC | ((flags & PFile::OPEN_READ) != 0 ? O_RDWR : O_WRONLY);
    if (create) system |= O_CREAT;
    if (truncate) system |= O_TRUNC;
    if ((flags & PFile::OPEN_APPEND) != 0) system |= O_APPEND;
    return true;
}

}  // namespace

PFile::PFile() : fd(CLOSED), flags(0) {
}

PFile::~PFile() {
    (void)PFile::pclose();  // nobody is left to be told
}

int PFile::popen(PLiteral const& newName, unsigned int newFlags, unsigned int share) {
    if (newName.len() == 0) return PERR_INVALID_ARGUMENT;
    if (isOpen()) return PERR_ALREADY_OPEN;

    PString path(newName);
    if (path.len() == 0) return PERR_NO_MEMORY;
    (void)PUtils::fixFileSeparator(path);  // cannot fail

    if ((newFlags & OPEN_SAFE_WRITE) != 0) {
        if (share != EXCLUSIVE || newFlags != OPEN_SAFE_WRITE) return PERR_INVALID_ARGUMENT;
        return openSafely(std::move(path));
    }
    int system = 0;
    if (!_systemFlags(newFlags, system)) return PERR_INVALID_ARGUMENT;

    NarrowText const narrow(path);
    if (_isName(narrow)) fd = ::open(narrow.get(), system, NEW_FILE_MODE);
    if (!isOpen()) return errno == ENOENT ? PERR_NO_SUCH_FILE : PERR_OPEN;

    // Refused the lock, the handle stays half open: callers close it themselves.
    if (share == EXCLUSIVE && flock(fd, LOCK_EX | LOCK_NB) != 0)
        return errno == EAGAIN ? PERR_LOCKED : PERR_OPEN;

    flags = newFlags;
    name = std::move(path);
    return PERR_OK;
}

int PFile::openSafely(PString&& path) {
    wchar_t writer[WRITER_ROOM];
    (void)swprintf(writer, WRITER_ROOM, L".talv_temp-%d-%lld", getpid(), PTime::getTickCount());
    PString sibling;
    int result = _joinName(sibling, {path, writer});
    if (result != PERR_OK) return result;
    result = popen(sibling, OPEN_WRITE | OPEN_CREATE | OPEN_TRUNCATE, EXCLUSIVE);
    if (result != PERR_OK) return result;

    tempName = std::move(name);
    name = std::move(path);
    flags = OPEN_SAFE_WRITE;
    return PERR_OK;
}

int PFile::pread(char* buffer, unsigned long length, unsigned long& done) {
    if (length == 0 || buffer == nullptr) return PERR_INVALID_ARGUMENT;
    if (!isOpen()) return PERR_NOT_OPEN;
    ssize_t const got = ::read(fd, buffer, length);
    if (got < 0) return PERR_READ;
    if (got == 0) return PERR_END_OF_FILE;
    done = static_cast<unsigned long>(got);
    return PERR_OK;
}

int PFile::pwrite(char const* buffer, unsigned long length, unsigned long& done) {
    if (!isOpen()) return PERR_NOT_OPEN;
    ssize_t const put = ::write(fd, buffer, length);
    if (put < 0) return PERR_WRITE;
    if (put == 0) return PERR_END_OF_FILE;
    done = static_cast<unsigned long>(put);
    return PERR_OK;
}

int PFile::pseek(long long offset, int whence) {
    if (!isOpen()) return PERR_NOT_OPEN;
    return lseek(fd, offset, whence) == -1 ? PERR_SEEK : PERR_OK;
}

int PFile::pgetSize(long long& size) {
    if (!isOpen()) return PERR_NOT_OPEN;
    struct stat facts;
    if (fstat(fd, &facts) != 0) return PERR_STAT;
    size = facts.st_size;
    return PERR_OK;
}

int PFile::pflush() {
    if (!isOpen()) return PERR_NOT_OPEN;
    (void)fsync(fd);  // callers treat flushing as a hint
    return PERR_OK;
}

int PFile::pclose() {
    if (!isOpen()) return PERR_NOT_OPEN;
    Uncancelled const untilMoved;
    (void)::close(std::exchange(fd, CLOSED));  // it is gone whatever the system says

    int result = PERR_OK;
    if (flags == OPEN_SAFE_WRITE) {
        // Nothing can be moved; what is left of the names stays, to tell which file it was.
        if (name.len() == 0 || tempName.len() == 0) return PERR_NOT_OPEN;
        if (PFile::rename(tempName, name) != PERR_OK) result = PERR_SYSTEM;
    }
    name.clear();
    tempName.clear();
    flags = 0;
    return result;
}

bool PFile::isOpen() {
    return fd != CLOSED;
}

int PFile::pgetName(PString& out) {
    if (!isOpen()) return PERR_NOT_OPEN;
    return out.set(name, P_WHOLE_STRING);
}

void PFile::getFileName(PString& path) {
    unsigned long slash = 0;
    if (path.str(L"/", slash, true, false) != PERR_OK) return;
    (void)path.erase(0, slash + 1);  // the range was found in the text
}
