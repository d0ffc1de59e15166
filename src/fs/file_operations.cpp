#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cwchar>

#include <portinglayer/files.h>

#include "fs/narrow_path.h"

namespace {

constexpr int NO_KIND = -1;

int _kindOf(mode_t mode) {
    switch (mode & S_IFMT) {
    case S_IFREG: return PFile::KIND_FILE;
    case S_IFDIR: return PFile::KIND_DIRECTORY;
    case S_IFCHR:
    case S_IFBLK:
    case S_IFIFO:
    case S_IFSOCK: return PFile::KIND_SPECIAL;
    default: return NO_KIND;  // what has no name but in /proc, such as an event counter
    }
}

int _renameFailure(int error) {
    switch (error) {
    case ENOENT: return PERR_NOT_FOUND;
    case EPERM:
    case EBUSY:
    case EEXIST:
    case EXDEV:
    case ENOTDIR:
    case EISDIR:
    case EINVAL:
    case ENOSPC:
    case EROFS:
    case ENOTEMPTY: return PERR_REFUSED;
    case EIO:
    case EMLINK:
    case ENAMETOOLONG:
    case ELOOP: return PERR_IO;
    default: return PERR_SYSTEM;
    }
}

/// Characters of a name that the system sees. The zeros that may follow make room: a name beyond
/// ASCII is cut at as many bytes as it has characters.
unsigned long _seen(PString const& path) {
    return path.ptr() != nullptr ? wcslen(path.ptr()) : 0;
}

/// Composes the path of an entry, which goes before any zeros. False when no memory is left: what
/// was composed may then be the path of the folder.
bool _composeChild(PString& child, PString const& folder, PString const& entry) {
    unsigned long const end = _seen(folder);
    return child.set(folder, P_WHOLE_STRING) == PERR_OK && child.insert(end, L"/", 1) == PERR_OK &&
           child.insert(end + 1, entry, P_WHOLE_STRING) == PERR_OK;
}

/// Removes what a directory holds, until something cannot be removed or the listing ends.
int _empty(PString const& path) {
    PDir listing;
    (void)listing.popen(path, PLiteral());  // unopened it gives no entry, and removal is tried
    for ((void)listing.preaddir(); listing == PERR_OK; ++listing) {
        PString const& entry = listing.getEntry();
        if (entry == L"." || entry == L"..") continue;

        PString child;
        if (!_composeChild(child, path, entry)) return PERR_NO_MEMORY;
        bool const isFolder = PFile::check(child, PFile::KIND_DIRECTORY);
        int const result = isFolder ? PFile::removeAll(child) : PFile::pdelete(child);
        if (result != PERR_OK) return result;
    }
    return PERR_OK;
}

}  // namespace

bool PFile::exists(PLiteral const& name) {
    if (name.len() == 0) return false;
    NarrowText const path = _narrowPath(name);
    return _isName(path) && access(path.get(), F_OK) == 0;
}

bool PFile::check(PLiteral const& name, int kind) {
    if (kind < KIND_FILE || kind > KIND_SPECIAL || name.len() == 0) return false;
    NarrowText const path = _narrowPath(name);
    struct stat facts;
    if (!_isName(path) || stat(path.get(), &facts) != 0)
        return true;  // what cannot be examined passes every test; callers ask for existence first
    return _kindOf(facts.st_mode) == kind;
}

int PFile::pdelete(PLiteral const& name) {
    if (name.len() == 0) return PERR_INVALID_ARGUMENT;
    NarrowText const path = _narrowPath(name);
    if (_isName(path) && unlink(path.get()) == 0) return PERR_OK;
    return errno == ENOENT ? PERR_NO_SUCH_FILE : PERR_DELETE;
}

int PFile::rename(PLiteral const& from, PLiteral const& to) {
    if (from.len() == 0 || to.len() == 0) return PERR_INVALID_ARGUMENT;
    NarrowText const source = _narrowPath(from);
    NarrowText const target = _narrowPath(to);
    if (!_isName(source) || !_isName(target)) return _renameFailure(errno);
    return ::rename(source.get(), target.get()) == 0 ? PERR_OK : _renameFailure(errno);
}

int PFile::removeAll(PLiteral const& name) {
    PString path;
    if (path.set(name, P_WHOLE_STRING) != PERR_OK) return PERR_NO_MEMORY;
    (void)PUtils::fixFileSeparator(path);  // cannot fail
    unsigned long const end = _seen(path);
    if (end > 0 && path.ptr()[end - 1] == L'/') (void)path.erase(end - 1, 1);  // the range is there

    if (!exists(path)) return PERR_DIR_NOT_FOUND;
    if (!check(path, KIND_DIRECTORY)) return PERR_INVALID_ARGUMENT;

    int const emptied = _empty(path);
    if (emptied != PERR_OK) return emptied;
    if (PDir::pdelete(path) == PERR_OK) return PERR_OK;
    return pdelete(path);  // a link to a folder
}
