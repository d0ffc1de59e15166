#include "text/search.h"

#include <cwchar>
#include <cwctype>
#include <memory>
#include <new>

namespace {

wchar_t _upper(wchar_t c) {
    return static_cast<wchar_t>(towupper(static_cast<wint_t>(c)));
}

/// Upper case of characters seen before: a text uses few, and asking the locale for each one costs
/// more than the comparison. An empty slot reads as character 0, which has no other upper case.
class UpperCache {
public:
    wchar_t operator()(wchar_t c) {
        Slot& slot = slots[static_cast<unsigned>(c) % SLOTS];
        if (slot.character != c) slot = {c, _upper(c)};
        return slot.upper;
    }

private:
    static constexpr unsigned SLOTS = 256;
    struct Slot {
        wchar_t character;
        wchar_t upper;
    };
    Slot slots[SLOTS] = {};
};

/// The searched text in upper case, once. Without memory for a long one its characters are turned
/// at each comparison: slower, with the same result.
class UpperNeedle {
public:
    explicit UpperNeedle(SearchedText const& search) : what(search.what) {
        if (search.whatLength > SHORT) {
            longCopy.reset(new (std::nothrow) wchar_t[search.whatLength]);
            if (!longCopy) return;
        }
        wchar_t* const copy = longCopy ? longCopy.get() : shortCopy;
        for (std::size_t i = 0; i < search.whatLength; ++i) copy[i] = _upper(search.what[i]);
        folded = copy;
    }

    wchar_t operator[](std::size_t i) const { return folded ? folded[i] : _upper(what[i]); }

private:
    static constexpr std::size_t SHORT = 64;
    wchar_t const* what;
    wchar_t const* folded = nullptr;
    std::unique_ptr<wchar_t[]> longCopy;
    wchar_t shortCopy[SHORT] = {};
};

template <typename Upper>
bool _restMatches(wchar_t const* at, UpperNeedle const& needle, std::size_t length, Upper& upper) {
    for (std::size_t i = 1; i < length; ++i)
        if (upper(at[i]) != needle[i]) return false;
    return true;
}

template <typename Upper>
std::size_t _forward(SearchedText const& search, Upper&& upper) {
    UpperNeedle const needle(search);
    wchar_t const first = needle[0];
    std::size_t const starts = search.length - search.whatLength + 1;
    for (std::size_t i = 0; i < starts; ++i)
        if (upper(search.text[i]) == first &&
            _restMatches(search.text + i, needle, search.whatLength, upper))
            return i;
    return SEARCH_FAILED;
}

template <typename Upper>
std::size_t _backward(SearchedText const& search, int start, Upper&& upper) {
    UpperNeedle const needle(search);
    wchar_t const first = needle[0];
    for (int i = start; i >= 0; --i)
        if (upper(search.text[i]) == first &&
            _restMatches(search.text + i, needle, search.whatLength, upper))
            return static_cast<std::size_t>(i);
    return SEARCH_FAILED;
}

constexpr std::size_t CACHE_PAYS = 128;  // characters; below, clearing the cache costs more

}  // namespace

std::size_t _findForward(SearchedText const& search) {
    std::size_t const rest = search.whatLength - 1;
    wchar_t const first = search.what[0];
    wchar_t const last = search.what[rest];
    wchar_t const* const end = search.text + (search.length - rest);

    wchar_t const* at = search.text;
    while ((at = wmemchr(at, first, static_cast<std::size_t>(end - at))) != nullptr) {
        if (at[rest] == last && wmemcmp(at, search.what, rest) == 0)
            return static_cast<std::size_t>(at - search.text);
        ++at;
    }
    return SEARCH_FAILED;
}

std::size_t _findForwardIgnoringCase(SearchedText const& search) {
    return search.length < CACHE_PAYS ? _forward(search, _upper) : _forward(search, UpperCache());
}

std::size_t _findBackward(SearchedText const& search, int start) {
    std::size_t const rest = search.whatLength - 1;
    wchar_t const first = search.what[0];
    wchar_t const last = search.what[rest];
    for (int i = start; i >= 0; --i) {
        wchar_t const* const at = search.text + i;
        if (*at == first && at[rest] == last && wmemcmp(at, search.what, rest) == 0)
            return static_cast<std::size_t>(i);
    }
    return SEARCH_FAILED;
}

std::size_t _findBackwardIgnoringCase(SearchedText const& search, int start) {
    return search.length < CACHE_PAYS ? _backward(search, start, _upper)
                                      : _backward(search, start, UpperCache());
}

bool _standsAt(SearchedText const& search, std::size_t position, bool ignoreCase) {
    wchar_t const* const at = search.text + position;
    if (!ignoreCase) return wmemcmp(at, search.what, search.whatLength) == 0;
    for (std::size_t i = 0; i < search.whatLength; ++i)
        if (_upper(at[i]) != _upper(search.what[i])) return false;
    return true;
}
