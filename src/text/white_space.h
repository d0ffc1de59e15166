/// What counts as white space wherever text is trimmed or split: four characters, whatever the
/// locale.
#ifndef PORTINGLAYER_TEXT_WHITE_SPACE_H
#define PORTINGLAYER_TEXT_WHITE_SPACE_H

#include <string_view>

inline bool _isWhite(wchar_t c) {
    return c == L'\t' || c == L'\n' || c == L'\r' || c == L' ';
}

/// A text without the white space around it, where it stands.
inline std::wstring_view _stripped(std::wstring_view text) {
    while (!text.empty() && _isWhite(text.front())) text.remove_prefix(1);
    while (!text.empty() && _isWhite(text.back())) text.remove_suffix(1);
    return text;
}

/// What PString::trim leaves of a text: what it moves to the front it measures there, so that this
/// ends at its first zero.
inline std::wstring_view _trimmed(std::wstring_view text) {
    std::wstring_view const kept = _stripped(text);
    return kept.data() == text.data() ? kept : kept.substr(0, kept.find(L'\0'));
}

#endif
