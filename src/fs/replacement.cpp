#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <memory>
#include <new>
#include <utility>

#include <portinglayer/replacements.h>

#include "fs/open_failure.h"
#include "fs/replaced_file.h"
#include "fs/uninterrupted.h"
#include "sync/uncancelled.h"
#include "text/utf8_name.h"

/// What stands between `begin` and the end of a replacement.
struct PReplacement::Begun {
    ReplacedFile target;
    std::string name;  ///< of the new file, in the folder of the target
    Descriptor file;
    pid_t process = getpid();
    int failure = PERR_OK;  ///< of the first `write` that failed

    int move() const {
        int const folder = target.folder.get();
        bool const moved = renameat(folder, name.c_str(), folder, target.name.c_str()) == 0;
        return moved ? PERR_OK : _openFailure(errno);
    }
    void remove() const { (void)unlinkat(target.folder.get(), name.c_str(), 0); }
};

namespace {

bool _writeAll(int fd, char const* bytes, unsigned long length) {
    while (length > 0) {
        ssize_t const put = _uninterrupted([&] { return ::write(fd, bytes, length); });
        if (put <= 0) return false;
        bytes += put;
        length -= static_cast<unsigned long>(put);
    }
    return true;
}

bool _flush(Descriptor const& of) {
    return _uninterrupted([&] { return fsync(of.get()); }) == 0;
}

/// Some file systems tell only here that something was not written.
bool _closes(Descriptor& file) {
    return file.close() == 0 || errno == EINTR;
}

}  // namespace

PReplacement::PReplacement() : begun(nullptr) {
}

PReplacement::~PReplacement() {
    abandon();
}

int PReplacement::begin(PLiteral const& name) {
    Uncancelled const throughout;
    try {
        std::string path;
        int result = _utf8Name(name, path);
        if (result != PERR_OK) return result;
        if (own() != nullptr) return PERR_ALREADY_OPEN;

        auto replacement = std::make_unique<Begun>();
        result = _findReplaced(std::move(path), replacement->target);
        if (result != PERR_OK) return result;
        result = _createBeside(replacement->target, replacement->name, replacement->file);
        if (result != PERR_OK) return result;
        begun = replacement.release();
        return PERR_OK;
    } catch (std::bad_alloc const&) {
        return PERR_NO_MEMORY;
    }
}

int PReplacement::write(char const* bytes, unsigned long length) {
    Begun* const replacement = own();
    if (replacement == nullptr) return PERR_NOT_OPEN;
    if (replacement->failure != PERR_OK || length == 0) return replacement->failure;
    if (bytes == nullptr) return failed(PERR_INVALID_ARGUMENT);

    replacement->failure = PERR_WRITE;  // also of a thread that is cancelled on the way
    if (_writeAll(replacement->file.get(), bytes, length)) replacement->failure = PERR_OK;
    return replacement->failure;
}

int PReplacement::writeLine(PLiteral const& line) {
    Begun const* const replacement = own();
    if (replacement == nullptr) return PERR_NOT_OPEN;
    if (replacement->failure != PERR_OK) return replacement->failure;

    std::string bytes;
    int const result = _utf8Text(line, bytes);
    if (result != PERR_OK) return failed(result);
    try {
        bytes += '\n';
    } catch (std::bad_alloc const&) {
        return failed(PERR_NO_MEMORY);
    }
    return write(bytes.data(), bytes.size());
}

int PReplacement::commit() {
    Uncancelled const throughout;
    Begun* const replacement = own();
    if (replacement == nullptr) return PERR_NOT_OPEN;

    int result = replacement->failure;
    _lookAgain(replacement->target);
    if (result == PERR_OK) result = _copyMode(replacement->target, replacement->file);
    if (result == PERR_OK && !_flush(replacement->file)) result = PERR_WRITE;
    if (result == PERR_OK && !_closes(replacement->file)) result = PERR_WRITE;
    if (result == PERR_OK) result = replacement->move();
    if (result != PERR_OK) {
        abandon();
        return result;
    }
    std::unique_ptr<Begun> const done(std::exchange(begun, nullptr));
    return _flush(done->target.folder) ? PERR_OK : PERR_WRITE;
}

void PReplacement::abandon() {
    Uncancelled const throughout;
    if (own() == nullptr) return;
    std::unique_ptr<Begun> const given(std::exchange(begun, nullptr));
    given->remove();
}

/// What this process began. In a forked child the copy is dropped: the new file is the parent's.
PReplacement::Begun* PReplacement::own() {
    if (begun == nullptr || begun->process == getpid()) return begun;
    Uncancelled const throughout;
    delete std::exchange(begun, nullptr);
    return nullptr;
}

int PReplacement::failed(int code) {
    return begun->failure = code;
}
