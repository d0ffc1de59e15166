/// The form of single characters in UTF-8. What is ASCII is its own form, and quicker where it is
/// met.
#ifndef PORTINGLAYER_TEXT_UTF8_CODEC_H
#define PORTINGLAYER_TEXT_UTF8_CODEC_H

#include <cstddef>
#include <cstdint>

inline std::uint32_t _codePoint(wchar_t c) {
    // NOLINTNEXTLINE(bugprone-signed-char-misuse,cert-str34-c): a wide character
    return static_cast<std::uint32_t>(c);
}

/// Bytes of a character beyond ASCII; 0 for what is no character: surrogates, and all above
/// U+10FFFF.
inline std::ptrdiff_t _utf8Length(std::uint32_t c) {
    if (c < 0x800) return 2;
    if (c >= 0xD800 && c <= 0xDFFF) return 0;
    if (c < 0x10000) return 3;
    return c < 0x110000 ? 4 : 0;
}

/// The byte that carries the lowest six bits, behind the first one.
inline char _utf8Continuation(std::uint32_t c) {
    return static_cast<char>(0x80U | (c & 0x3FU));
}

/// Encodes a character beyond ASCII. Returns its bytes; 0, with nothing written, when it is no
/// character or does not fit before `end`.
inline std::ptrdiff_t _encodeUtf8(char* out, char const* end, std::uint32_t c) {
    std::ptrdiff_t const room = end - out;
    if (c < 0x800) {
        if (room < 2) return 0;
        out[0] = static_cast<char>(0xC0U | (c >> 6U));
        out[1] = _utf8Continuation(c);
        return 2;
    }
    if (c < 0x10000) {
        if (room < 3 || c - 0xD800 < 0x800) return 0;
        out[0] = static_cast<char>(0xE0U | (c >> 12U));
        out[1] = _utf8Continuation(c >> 6U);
        out[2] = _utf8Continuation(c);
        return 3;
    }
    if (room < 4 || c > 0x10FFFF) return 0;
    out[0] = static_cast<char>(0xF0U | (c >> 18U));
    out[1] = _utf8Continuation(c >> 12U);
    out[2] = _utf8Continuation(c >> 6U);
    out[3] = _utf8Continuation(c);
    return 4;
}

inline std::uint32_t _utf8Byte(char const* s) {
    return static_cast<unsigned char>(*s);
}

inline bool _continuesUtf8(char const* s) {
    return (_utf8Byte(s) & 0xC0U) == 0x80U;
}

inline std::uint32_t _sixUtf8Bits(char const* s) {
    return _utf8Byte(s) & 0x3FU;
}

/// Decodes a character beyond ASCII, looking at no byte behind the first that does not continue it.
/// Returns its bytes; 0 when they are no well-formed character: overlong, a surrogate, cut and
/// such.
inline std::ptrdiff_t _decodeUtf8(char const* s, std::uint32_t& c) {
    std::uint32_t const lead = _utf8Byte(s);
    if (lead < 0xC2 || lead > 0xF4 || !_continuesUtf8(s + 1)) return 0;
    c = (lead & 0x1FU) << 6U | _sixUtf8Bits(s + 1);
    if (lead < 0xE0) return 2;

    if (!_continuesUtf8(s + 2)) return 0;
    c = (c & 0x3FFU) << 6U | _sixUtf8Bits(s + 2);
    if (lead < 0xF0) return _utf8Length(c) == 3 ? 3 : 0;

    if (!_continuesUtf8(s + 3)) return 0;
    c = (c & 0x7FFFU) << 6U | _sixUtf8Bits(s + 3);
    return _utf8Length(c) == 4 ? 4 : 0;
}

#endif
