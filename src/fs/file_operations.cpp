#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

#include <portinglayer/files.h>

#include "fs/narrow_path.h"

namespace {

constexpr int KIND_FILE = 0;
constexpr int KIND_DIRECTORY = 1;
constexpr int KIND_SPECIAL = 2;
constexpr int KIND_COUNT = 3;
constexpr int KIND_NONE = -1;

int _kindOf(mode_t mode) {
    switch (mode & S_IFMT) {
    case S_IFREG: return KIND_FILE;
    case S_IFDIR: return KIND_DIRECTORY;
    case S_IFCHR:
    case S_IFBLK:
    case S_IFIFO:
    case S_IFLNK:
    case S_IFSOCK: return KIND_SPECIAL;
    default: return KIND_NONE;
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

/// Removes one thing below a directory whose name ends with a slash.
int _removeEntry(PString const& folder, PString const& entry) {
    // Each step is checked: a name left half composed would be that of the folder.
    PString child;
    int result = child.set(folder, P_WHOLE_STRING);
    if (result == PERR_OK) result = child.cat(entry);
    if (result != PERR_OK) return result;
    return PFile::check(child, KIND_DIRECTORY) ? PFile::removeAll(child) : PFile::pdelete(child);
}

/// Removes what a directory holds, until something cannot be removed or the listing ends.
int _empty(PString const& path) {
    PString folder;
    int result = folder.set(path, P_WHOLE_STRING);
    if (result == PERR_OK) result = folder.cat(L"/");
    if (result != PERR_OK) return result;

    PDir listing;
    (void)listing.popen(path, PLiteral());  // unopened it gives no entry, and removal is tried
    for ((void)listing.preaddir(); listing == PERR_OK; ++listing) {
        PString const& entry = listing.getEntry();
        if (entry == L"." || entry == L"..") continue;
        result = _removeEntry(folder, entry);
        if (result != PERR_OK) return result;
    }
    return PERR_OK;
}

}  // namespace

bool PFile::exists(PLiteral const& name) {
    if (name.len() == 0) return false;
    NarrowPath const path(name);
    return _onPath(path.get(), [](char const* p) { return access(p, F_OK); }) == 0;
}

bool PFile::check(PLiteral const& name, int kind) {
    if (kind < 0 || kind >= KIND_COUNT || name.len() == 0) return false;
    NarrowPath const path(name);
    struct stat facts;
    if (_onPath(path.get(), [&](char const* p) { return stat(p, &facts); }) != 0)
        return true;  // what cannot be examined passes every test; callers ask for existence first
    return _kindOf(facts.st_mode) == kind;
}

int PFile::pdelete(PLiteral const& name) {
    if (name.len() == 0) return PERR_INVALID_ARGUMENT;
    NarrowPath const path(name);
    if (_onPath(path.get(), [](char const* p) { return unlink(p); }) == 0) return PERR_OK;
    return errno == ENOENT ? PERR_NO_SUCH_FILE : PERR_DELETE;
}

int PFile::rename(PLiteral const& from, PLiteral const& to) {
    if (from.len() == 0 || to.len() == 0) return PERR_INVALID_ARGUMENT;
    NarrowPath const source(from);
    NarrowPath const target(to);
    int const renamed = _onPath(source.get(), [&](char const* oldName) {
        return _onPath(target.get(),
                       [&](char const* newName) { return ::rename(oldName, newName); });
    });
    return renamed == 0 ? PERR_OK : _renameFailure(errno);
}

int PFile::removeAll(PLiteral const& name) {
    PString path;
    if (path.set(name, P_WHOLE_STRING) != PERR_OK) return PERR_NO_MEMORY;
    (void)PUtils::fixFileSeparator(path);  // cannot fail
    if (path.endsWith(L"/", P_WHOLE_STRING, false))
        (void)path.erase(path.len() - 1, 1);  // the range is there

    if (!exists(path)) return PERR_DIR_NOT_FOUND;
    if (!check(path, KIND_DIRECTORY)) return PERR_INVALID_ARGUMENT;

    int const emptied = _empty(path);
    if (emptied != PERR_OK) return emptied;
    return PDir::pdelete(path) == PERR_OK ? PERR_OK : pdelete(path);
}
