/// What counts as white space wherever text is trimmed or split: four characters, whatever the locale.
#ifndef PORTINGLAYER_TEXT_WHITE_SPACE_H
#define PORTINGLAYER_TEXT_WHITE_SPACE_H

inline bool _isWhite(wchar_t c) {
    return c == L'\t' || c == L'\n' || c == L'\r' || c == L' ';
}

#endif
