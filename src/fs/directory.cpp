#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

#include <portinglayer/files.h>

#include "fs/joined_name.h"
#include "fs/name_pattern.h"
#include "fs/narrow_path.h"
#include "sync/uncancelled.h"

namespace {

constexpr mode_t NEW_DIRECTORY_MODE = 0775;

}  // namespace

PDir::PDir() : result(PERR_OK), stream(nullptr), current(nullptr) {
}

PDir::PDir(PLiteral const& dir, PLiteral const& newPattern) : PDir() {
    (void)popen(dir, newPattern);  // the code stays in `result`
}

PDir::~PDir() {
    (void)pclose();  // nobody is left to be told
}

int PDir::popen(PLiteral const& dir, PLiteral const& newPattern) {
    if (stream != nullptr) return result = PERR_DIR_ALREADY_OPEN;

    // After a failure the first pattern stays, and the new directory is tried with it.
    result = pattern.len() == 0 ? setUp(dir, newPattern) : PERR_OK;
    if (result != PERR_OK) return result;
    NarrowText const name(dir);
    if (_isName(name)) stream = opendir(name.get());
    return result = stream != nullptr ? PERR_OK : PERR_DIR_NOT_OPEN;
}

int PDir::setUp(PLiteral const& dir, PLiteral const& newPattern) {
    bool const slashed = dir.endsWith(L"/", P_WHOLE_STRING, false);
    int const joined = _joinName(path, {dir, slashed ? L"" : L"/"});
    if (joined != PERR_OK) return joined;
    return pattern.set(newPattern.len() != 0 ? newPattern : L"*", P_WHOLE_STRING);
}

int PDir::preaddir() {
    if (pattern.len() == 0 || stream == nullptr) return result = PERR_DIR_NOT_OPEN;

    do {
        current = readdir(stream);
        if (current == nullptr) return result = PERR_READ;
    } while (!_matchesPattern(pattern, current->d_name));

    entry = PString(current->d_name, P_WHOLE_STRING);
    return result = entry.len() != 0 ? PERR_OK : PERR_CONVERSION;
}

int PDir::operator++() {
    if (entry.len() == 0) return result = PERR_DIR_NOT_OPEN;
    return preaddir();
}

int PDir::operator++(int) {
    return ++*this;
}

bool PDir::operator==(int value) const {
    return result == value;
}

bool PDir::operator!=(int value) const {
    return result != value;
}

PString const& PDir::getEntry() const {
    return entry;
}

int PDir::getResult() const {
    return result;
}

int PDir::pclose() {
    Uncancelled const untilClosed;
    result = PERR_OK;
    if (stream != nullptr && closedir(stream) != 0) result = PERR_DIR_CLOSE;
    clear();  // which forgets a failure to close: callers always get success
    return result;
}

void PDir::clear() {
    stream = nullptr;
    current = nullptr;
    pattern.clear();
    path.clear();
    entry.clear();
    result = PERR_OK;
}

int PDir::pcreate(PLiteral const& dir) {
    NarrowText const name(dir);
    bool const made = _isName(name) && mkdir(name.get(), NEW_DIRECTORY_MODE) == 0;
    if (errno == EEXIST) return PERR_DIR_EXISTS;  // also when it stems from an earlier call
    return made ? PERR_OK : PERR_DIR_CREATE;
}

int PDir::pdelete(PLiteral const& dir) {
    if (dir.len() == 0) return PERR_INVALID_ARGUMENT;
    NarrowText const name(dir);
    if (_isName(name) && rmdir(name.get()) == 0) return PERR_OK;
    return errno == ENOENT ? PERR_DIR_NOT_FOUND : PERR_DIR_DELETE;
}
