/// Substring search: `what` is never empty and never longer than the text.
#ifndef PORTINGLAYER_TEXT_SEARCH_H
#define PORTINGLAYER_TEXT_SEARCH_H

#include <cstddef>

struct SearchedText {
    wchar_t const* text;
    std::size_t length;
    wchar_t const* what;
    std::size_t whatLength;
};

constexpr std::size_t SEARCH_FAILED = static_cast<std::size_t>(-1);

/// The first position of `what`.
std::size_t _findForward(SearchedText const& search);
std::size_t _findForwardIgnoringCase(SearchedText const& search);

/// The last position of `what` at or before `start`, none when that is negative.
std::size_t _findBackward(SearchedText const& search, int start);
std::size_t _findBackwardIgnoringCase(SearchedText const& search, int start);

/// Whether `what` stands at `position`.
bool _standsAt(SearchedText const& search, std::size_t position, bool ignoreCase);

#endif
