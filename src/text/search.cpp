#include <algorithm>
#include <climits>
#include <cwchar>

#include <portinglayer/strings.h>

#include "text/needle.h"
#include "text/substring.h"
#include "text/upper_case.h"

namespace {

// Each way apart: none takes room on the stack, or registers, for another.

[[gnu::noinline]] wchar_t const* _findIgnoringCase(wchar_t const* text, std::size_t places,
                                                   ExactNeedle what, bool fromEnd) {
    FoldedNeedle needle(what);
    return fromEnd ? _find<true>(text, places, needle) : _find<false>(text, places, needle);
}

[[gnu::noinline]] wchar_t const* _findExact(wchar_t const* text, std::size_t places,
                                            ExactNeedle needle, bool fromEnd) {
    return fromEnd ? _find<true>(text, places, needle) : _find<false>(text, places, needle);
}

/// Goes from one place of the first character to the next while they are few: the C library finds
/// them faster than blocks of places are looked at.
wchar_t const* _findForward(wchar_t const* text, std::size_t places, ExactNeedle needle) {
    constexpr std::ptrdiff_t FEW = 4;
    constexpr std::ptrdiff_t RARE = 64;
    wchar_t const* const end = text + places;
    wchar_t const* at = text;
    std::size_t vain = 0;
    for (std::ptrdiff_t stops = 0; stops < FEW + (at - text) / RARE && vain < ALLOWED_IN_VAIN;
         ++stops) {
        at = wmemchr(at, needle[0], static_cast<std::size_t>(end - at));
        if (at == nullptr) return nullptr;
        if (needle.mayStandAt(at) && needle.standsAt(at, vain)) return at;
        ++at;
    }
    return _findExact(at, static_cast<std::size_t>(end - at), needle, false);
}

bool _equal(wchar_t const* a, wchar_t const* b, std::size_t length, bool ignoreCase) {
    if (!ignoreCase) return wmemcmp(a, b, length) == 0;
    return std::equal(a, a + length, b,
                      [](wchar_t x, wchar_t y) { return UpperCase::ask(x) == UpperCase::ask(y); });
}

/// The position of `c` in the terminated text, null when there is none.
wchar_t const* _character(wchar_t const* text, wchar_t c, bool fromEnd) {
    return fromEnd ? wcsrchr(text, c) : wcschr(text, c);
}

wchar_t const* _eitherCase(wchar_t const* text, wchar_t c, bool fromEnd) {
    wchar_t const* const upper = _character(text, PLiteral::toupper(c), fromEnd);
    wchar_t const* const lower = _character(text, PLiteral::tolower(c), fromEnd);
    if (upper == nullptr) return lower;
    if (lower == nullptr) return upper;
    return fromEnd ? std::max(upper, lower) : std::min(upper, lower);
}

}  // namespace

int PLiteral::str(PLiteral const& what, unsigned long& pos, bool fromEnd, bool ignoreCase) const {
    bool const nothingSought = what.text == nullptr || what.length == 0;
    if (text == nullptr || length == 0) {
        if (!nothingSought) return PERR_NOT_FOUND;
        pos = 0;
        return PERR_OK;
    }
    if (nothingSought || what.length > length) return PERR_NOT_FOUND;

    // From the end the position counts in signed 32 bits: in a text of 2 Gi characters and more the
    // search begins where the narrowed start says, or nowhere.
    unsigned long const lastStart = length - what.length;
    if (fromEnd && static_cast<int>(lastStart) < 0) return PERR_NOT_FOUND;
    std::size_t const places = 1 + (fromEnd ? lastStart & INT_MAX : lastStart);
    ExactNeedle const needle(what.text, what.length);
    wchar_t const* const found = ignoreCase ? _findIgnoringCase(text, places, needle, fromEnd)
                                 : fromEnd  ? _findExact(text, places, needle, fromEnd)
                                            : _findForward(text, places, needle);
    if (found == nullptr) return PERR_NOT_FOUND;
    pos = static_cast<unsigned long>(found - text);
    return PERR_OK;
}

int PLiteral::chr(wchar_t c, unsigned long& pos, bool fromEnd, bool ignoreCase) const {
    if (text == nullptr || length == 0) return PERR_NOT_FOUND;
    wchar_t const* const found =
        ignoreCase ? _eitherCase(text, c, fromEnd) : _character(text, c, fromEnd);
    if (found == nullptr) return PERR_NOT_FOUND;
    pos = static_cast<unsigned long>(found - text);
    return PERR_OK;
}

bool PLiteral::startsWith(wchar_t const* s, unsigned long /*n*/, bool ignoreCase) const {
    PLiteral const prefix(s);
    if (text == nullptr || length == 0) return prefix.length == 0;
    if (prefix.length == 0 || prefix.length > length) return false;
    return _equal(text, prefix.text, prefix.length, ignoreCase);
}

bool PLiteral::startsWith(PLiteral const& p, bool ignoreCase) const {
    return startsWith(p.text, p.length, ignoreCase);
}

bool PLiteral::endsWith(wchar_t const* s, unsigned long n, bool ignoreCase) const {
    if (n == P_WHOLE_STRING && s != nullptr) n = wcslen(s);
    PLiteral const suffix(s);

    // A suffix given with its true length can only stand at the end: there is nothing to search.
    bool const trueLength = n == suffix.length && n != 0 && n <= length;
    if (trueLength && text != nullptr && length - n <= INT_MAX)
        return _equal(text + (length - n), suffix.text, n, ignoreCase);

    unsigned long pos = 0;
    if (str(suffix, pos, true, ignoreCase) != PERR_OK) return false;
    return n == length - pos;
}

bool PLiteral::endsWith(PLiteral const& p, bool ignoreCase) const {
    return endsWith(p.text, p.length, ignoreCase);
}
