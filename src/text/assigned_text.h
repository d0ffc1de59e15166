/// How a text becomes the content of an output.
#ifndef PORTINGLAYER_TEXT_ASSIGNED_TEXT_H
#define PORTINGLAYER_TEXT_ASSIGNED_TEXT_H

#include <string_view>

#include <portinglayer/strings.h>

#include "text/white_space.h"

/// Assigns through the virtual operator, which a derived class may have replaced. It gives no code,
/// but makes a buffer even for an empty text: only without memory there is none.
inline int _assign(PString& out, wchar_t const* text) {
    out = text;
    return out.ptr() == nullptr ? PERR_NO_MEMORY : PERR_OK;
}

/// Sets an exact copy of what `set` and `trim` would leave.
inline int _setTrimmed(PString& out, std::wstring_view text) {
    std::wstring_view const kept = _trimmed(text);
    bool const onlyWhite = kept.empty() && !text.empty();
    if (!onlyWhite) return out.set(kept.data(), kept.size());

    int const result = out.set(text.data(), 1);  // of white space `trim` leaves an empty buffer
    return result == PERR_OK ? out.trim() : result;
}

#endif
