#include <algorithm>
#include <climits>
#include <cwchar>
#include <cwctype>
#include <memory>

#include <portinglayer/strings.h>

#include "text/allocation.h"

namespace {

/// What is sought; never empty, never longer than the text.
struct Needle {
    wchar_t const* text;
    std::size_t length;
};

/// The first place of the needle at `at` or behind it, before `end`; null when there is none.
wchar_t const* _forward(wchar_t const* at, wchar_t const* end, Needle needle) {
    std::size_t const rest = needle.length - 1;
    wchar_t const last = needle.text[rest];
    while ((at = wmemchr(at, needle.text[0], static_cast<std::size_t>(end - at))) != nullptr) {
        if (at[rest] == last && wmemcmp(at, needle.text, rest) == 0) return at;
        ++at;
    }
    return nullptr;
}

/// The last place of the needle at `text[start]` or before; null when there is none.
[[gnu::noinline]] wchar_t const* _backward(wchar_t const* text, int start, Needle needle) {
    std::size_t const rest = needle.length - 1;
    wchar_t const first = needle.text[0];
    wchar_t const last = needle.text[rest];
    for (int i = start; i >= 0; --i) {
        wchar_t const* const at = text + i;
        if (*at == first && at[rest] == last && wmemcmp(at, needle.text, rest) == 0) return at;
    }
    return nullptr;
}

wchar_t _upper(wchar_t c) {
    return static_cast<wchar_t>(towupper(static_cast<wint_t>(c)));
}

/// Upper case of the characters seen before: a text uses few, and asking the locale for each costs
/// more than comparing. An empty slot reads as character 0, which is its own upper case.
class UpperCache {
public:
    wchar_t operator()(wchar_t c) {
        Slot& slot = slots[static_cast<unsigned>(c) % SLOTS];
        if (slot.character != c) slot = {c, _upper(c)};
        return slot.upper;
    }

private:
    static constexpr unsigned SLOTS = 128;
    struct Slot {
        wchar_t character;
        wchar_t upper;
    };
    Slot slots[SLOTS] = {};
};

/// The needle in upper case, turned once. Without memory for a long one its characters are turned
/// at each comparison: slower, with the same result.
class UpperNeedle {
public:
    UpperNeedle(Needle needle, UpperCache& upper) : cache(upper), original(needle) {
        wchar_t* copy = shortCopy;
        if (needle.length > SHORT) {
            longCopy.reset(_newText<wchar_t>(needle.length, 0, 0));
            copy = longCopy.get();
        }
        if (copy != nullptr) std::transform(needle.text, needle.text + needle.length, copy, _upper);
        folded = copy;
    }

    wchar_t operator[](std::size_t i) const {
        return folded != nullptr ? folded[i] : _upper(original.text[i]);
    }

    bool standsAt(wchar_t const* at) const {
        for (std::size_t i = 0; i < original.length; ++i)
            if (cache(at[i]) != (*this)[i]) return false;
        return true;
    }

private:
    static constexpr std::size_t SHORT = 64;
    UpperCache& cache;
    Needle original;
    wchar_t const* folded = nullptr;
    std::unique_ptr<wchar_t[]> longCopy;
    wchar_t shortCopy[SHORT];
};

// Both ways of ignoring case keep their room for characters off the stack of plain searches.

[[gnu::noinline]] wchar_t const* _forwardIgnoringCase(wchar_t const* at, wchar_t const* end,
                                                      Needle needle) {
    UpperCache upper;
    UpperNeedle const folded(needle, upper);
    wchar_t const first = folded[0];
    for (; at != end; ++at)
        if (upper(*at) == first && folded.standsAt(at)) return at;
    return nullptr;
}

[[gnu::noinline]] wchar_t const* _backwardIgnoringCase(wchar_t const* text, int start,
                                                       Needle needle) {
    UpperCache upper;
    UpperNeedle const folded(needle, upper);
    wchar_t const first = folded[0];
    for (int i = start; i >= 0; --i)
        if (upper(text[i]) == first && folded.standsAt(text + i)) return text + i;
    return nullptr;
}

bool _standsAt(wchar_t const* at, Needle needle, bool ignoreCase) {
    if (!ignoreCase) return wmemcmp(at, needle.text, needle.length) == 0;
    return std::equal(needle.text, needle.text + needle.length, at,
                      [](wchar_t a, wchar_t b) { return _upper(a) == _upper(b); });
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

    Needle const needle{what.text, what.length};
    unsigned long const lastStart = length - needle.length;
    wchar_t const* found = nullptr;
    if (fromEnd) {
        // The position counts in signed 32 bits: in a text of 2 Gi characters and more the search
        // begins where the narrowed start says, or nowhere.
        auto const start = static_cast<int>(lastStart);
        found = ignoreCase ? _backwardIgnoringCase(text, start, needle)
                           : _backward(text, start, needle);
    } else {
        wchar_t const* const end = text + lastStart + 1;
        found = ignoreCase ? _forwardIgnoringCase(text, end, needle) : _forward(text, end, needle);
    }
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
    return _standsAt(text, {prefix.text, prefix.length}, ignoreCase);
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
        return _standsAt(text + (length - n), {suffix.text, n}, ignoreCase);

    unsigned long pos = 0;
    if (str(suffix, pos, true, ignoreCase) != PERR_OK) return false;
    return n == length - pos;
}

bool PLiteral::endsWith(PLiteral const& p, bool ignoreCase) const {
    return endsWith(p.text, p.length, ignoreCase);
}
