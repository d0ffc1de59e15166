#include <cmath>
#include <cstdlib>
#include <ctime>
#include <cwchar>
#include <memory>
#include <new>

#include <portinglayer/files.h>

namespace {

constexpr int NAME_COUNT = 238328;  // as many numbers as three of 62 signs could name
constexpr unsigned int SHARED = 1;

/// Room for the digits of `number` and a terminator: its natural logarithm is never below the count
/// of its digits less one, but for 0, 1 and 2, which are given room for theirs.
std::size_t _room(int number) {
    if (number < 3) return 2;
    return static_cast<std::size_t>(std::log(static_cast<double>(static_cast<float>(number)))) + 1;
}

/// Composes a name; PERR_NO_MEMORY leaves nothing that could be opened by mistake.
int _compose(PString& candidate, PLiteral const& prefix, wchar_t const* digits) {
    if (digits == nullptr) return PERR_NO_MEMORY;
    int result = candidate.set(prefix, P_WHOLE_STRING);
    if (result == PERR_OK) result = candidate.cat(digits);
    return result == PERR_OK ? PUtils::fixFileSeparator(candidate) : result;
}

/// Whether nothing stands under the name. The probe takes no lock and closes what it opened.
bool _isFree(PString const& candidate) {
    PFile probe;
    return probe.popen(candidate, 0, SHARED) == PERR_NO_SUCH_FILE;
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
        int result = _compose(candidate, prefix, digits.get());
        if (result != PERR_OK) return result;
        if (!_isFree(candidate)) continue;

        result = PFile::popen(candidate, newFlags, share);
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
    int const number = rand() % NAME_COUNT;
    std::size_t const room = _room(number);
    auto* const text = new (std::nothrow) wchar_t[room];
    if (text != nullptr) (void)swprintf(text, room, L"%d", number);  // it fits
    return text;
}
