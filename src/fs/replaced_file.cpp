#include "fs/replaced_file.h"

#include <fcntl.h>
#include <sys/random.h>
#include <sys/xattr.h>

#include <cinttypes>
#include <climits>
#include <cstdio>

#include "fs/open_failure.h"
#include "fs/uninterrupted.h"

namespace {

constexpr int MOST_LINKS = 40;  // as the kernel
constexpr int MOST_NAMES = 100;
constexpr mode_t NEW_FILE_MODE = 0666;
constexpr mode_t OWNER_MODE = 0600;
constexpr mode_t ALL_BITS = 07777;
constexpr mode_t SET_ID_BITS = S_ISUID | S_ISGID;

/// Opens the folder of a path, which is relative to another one, and notes the last part of the
/// path.
int _enter(ReplacedFile& at, std::string const& path) {
    std::size_t const slash = path.rfind('/');
    std::string const folder = slash == std::string::npos ? "." : path.substr(0, slash + 1);
    at.name = slash == std::string::npos ? path : path.substr(slash + 1);

    int const from = at.folder.isOpen() ? at.folder.get() : AT_FDCWD;
    Descriptor opened(_uninterrupted(
        [&] { return openat(from, folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC); }));
    if (!opened.isOpen() || !_leaveStandardStreams(opened)) return _openFailure(errno);
    at.folder = std::move(opened);
    return at.name.empty() ? PERR_REFUSED : PERR_OK;  // only folders have a slash behind them
}

int _readLink(ReplacedFile const& at, std::string& target) {
    char text[PATH_MAX];
    ssize_t const length = readlinkat(at.folder.get(), at.name.c_str(), text, sizeof text);
    if (length < 0) return _openFailure(errno);
    target.assign(text, static_cast<std::size_t>(length));
    return PERR_OK;
}

bool _look(ReplacedFile const& at, struct stat& facts) {
    return fstatat(at.folder.get(), at.name.c_str(), &facts, AT_SYMLINK_NOFOLLOW) == 0;
}

bool _randomName(std::string& name) {
    std::uint64_t number = 0;
    if (_uninterrupted([&] { return getrandom(&number, sizeof number, 0); }) != sizeof number)
        return false;
    char text[sizeof ".replacement-0123456789abcdef"];
    (void)snprintf(text, sizeof text, ".replacement-%016" PRIx64, number);
    name = text;
    return true;
}

/// Takes away the rights that a folder gives to each new file: the old one may not have them.
bool _dropAccessList(Descriptor const& file) {
    return fremovexattr(file.get(), "system.posix_acl_access") == 0 || errno == ENODATA ||
           errno == ENOTSUP;
}

}  // namespace

int _findReplaced(std::string path, ReplacedFile& found) {
    for (int links = 0; links <= MOST_LINKS; ++links) {
        int result = _enter(found, path);
        if (result != PERR_OK) return result;

        found.exists = _look(found, found.facts);
        if (!found.exists) return errno == ENOENT ? PERR_OK : _openFailure(errno);
        if (S_ISREG(found.facts.st_mode)) return PERR_OK;
        if (!S_ISLNK(found.facts.st_mode)) return PERR_REFUSED;

        result = _readLink(found, path);
        if (result != PERR_OK) return result;
    }
    return PERR_REFUSED;
}

void _lookAgain(ReplacedFile& found) {
    struct stat now;
    if (!_look(found, now) || !S_ISREG(now.st_mode)) return;
    found.exists = true;
    found.facts = now;
}

int _createBeside(ReplacedFile const& replaced, std::string& name, Descriptor& file) {
    mode_t const mode = replaced.exists ? replaced.facts.st_mode & OWNER_MODE : NEW_FILE_MODE;
    for (int tries = 0; tries < MOST_NAMES; ++tries) {
        if (!_randomName(name)) return PERR_SYSTEM;
        file = Descriptor(_uninterrupted([&] {
            return openat(replaced.folder.get(), name.c_str(),
                          O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode);
        }));
        if (!file.isOpen() && errno == EEXIST) continue;
        if (!file.isOpen()) return _openFailure(errno);
        if (_leaveStandardStreams(file)) return PERR_OK;

        int const error = errno;
        (void)unlinkat(replaced.folder.get(), name.c_str(), 0);
        return _openFailure(error);
    }
    return PERR_SYSTEM;
}

int _copyMode(ReplacedFile const& replaced, Descriptor const& file) {
    if (!replaced.exists) return PERR_OK;
    struct stat ours;
    if (fstat(file.get(), &ours) != 0) return _openFailure(errno);

    if (!_dropAccessList(file)) return _openFailure(errno);

    // Only who belongs to the group may give it.
    bool const sameGroup = ours.st_gid == replaced.facts.st_gid ||
                           fchown(file.get(), ours.st_uid, replaced.facts.st_gid) == 0;
    mode_t mode = replaced.facts.st_mode & ALL_BITS;
    if (!sameGroup || ours.st_uid != replaced.facts.st_uid) mode &= ~SET_ID_BITS;
    return fchmod(file.get(), mode) == 0 ? PERR_OK : _openFailure(errno);
}
