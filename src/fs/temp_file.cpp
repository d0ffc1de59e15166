#include <cstdlib>
#include <ctime>
#include <cwchar>
#include <memory>
#include <new>

#include <portinglayer/files.h>

#include "fs/joined_name.h"

namespace {

constexpr int NAME_COUNT = 238328;      // as many numbers as three of 62 signs could name
constexpr std::size_t NUMBER_ROOM = 7;  // six digits and a terminator

/// Whether nothing stands under the name. The probe takes no lock and closes what it opened.
bool _isFree(PString const& candidate) {
    PFile probe;
    return probe.popen(candidate, PFile::OPEN_READ, PFile::UNLOCKED) == PERR_NO_SUCH_FILE;
}

}  // namespace

PTempFile::PTempFile() : active(false) {
}

PTempFile::~PTempFile() = default;

int PTempFile::popen(PLiteral const& prefix, unsigned int newFlags, unsigned int share) {
    if (active) return PERR_ALREADY_OPEN;
    if (prefix.len() == 0) return PERR_INVALID_ARGUMENT;

    for (int attempt = 0; attempt < NAME_COUNT; ++attempt) {
        std::unique_ptr<wchar_t[]> const digits(getRandStr());
        PString candidate;
        if (!digits || _joinName(candidate, {prefix, digits.get()}) != PERR_OK)
            return PERR_NO_MEMORY;
        (void)PUtils::fixFileSeparator(candidate);  // cannot fail
        if (!_isFree(candidate)) continue;

        int const result = PFile::popen(candidate, newFlags, share);
        active = result == PERR_OK;
        return result;
    }
    return PERR_OPEN;
}

int PTempFile::pclose() {
    int const result = PFile::pclose();
    active = false;
    return result;
}

wchar_t* PTempFile::getRandStr() {
    srand(static_cast<unsigned int>(time(nullptr)));  // at each call: one second, one number
    auto* const text = new (std::nothrow) wchar_t[NUMBER_ROOM];
    if (text != nullptr) (void)swprintf(text, NUMBER_ROOM, L"%d", rand() % NAME_COUNT);
    return text;
}
