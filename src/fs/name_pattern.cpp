#include "fs/name_pattern.h"

#include <fnmatch.h>

#include <algorithm>

#include "text/narrow_text.h"

// fnmatch converts pattern and name at every call. For ordinary patterns and names of ASCII
// only, which is nearly all of them, comparing characters gives the same answer.

namespace {

/// Letters, digits and few others: every locale's codeset has them at the same bytes, and none of
/// them but "*" and "?" has a meaning in a pattern.
bool _isOrdinary(wchar_t c) {
    return (c >= L'a' && c <= L'z') || (c >= L'A' && c <= L'Z') || (c >= L'0' && c <= L'9') ||
           c == L'*' || c == L'?' || c == L'.' || c == L'_' || c == L'-';
}

bool _isOrdinary(PLiteral const& pattern) {
    return std::all_of(pattern.ptr(), pattern.ptr() + pattern.len(),
                       [](wchar_t c) { return _isOrdinary(c); });
}

bool _isAscii(char const* name) {
    for (; *name != '\0'; ++name)
        if (static_cast<unsigned char>(*name) >= 0x80) return false;
    return true;
}

/// Matches from the left; after a mismatch the last "*" takes one character more.
bool _matchesOrdinary(wchar_t const* pattern, char const* name) {
    wchar_t const* star = nullptr;
    char const* taken = nullptr;  // end of what the last star takes
    while (*name != '\0') {
        if (*pattern == L'*') {
            star = pattern++;
            taken = name;
        } else if (*pattern == L'?' || *pattern == static_cast<wchar_t>(*name)) {
            ++pattern;
            ++name;
        } else {
            if (star == nullptr) return false;
            pattern = star + 1;
            name = ++taken;
        }
    }
    while (*pattern == L'*') ++pattern;
    return *pattern == L'\0';
}

}  // namespace

bool _matchesPattern(PLiteral const& pattern, char const* name) {
    if (_isOrdinary(pattern) && _isAscii(name)) return _matchesOrdinary(pattern.ptr(), name);
    NarrowText const text(pattern);
    return text.get() != nullptr && fnmatch(text.get(), name, FNM_PATHNAME | FNM_NOESCAPE) == 0;
}
