/// Sixteen ASCII characters at once, with the vector instructions that every x86-64 has.
#ifndef PORTINGLAYER_TEXT_ASCII_BLOCK_H
#define PORTINGLAYER_TEXT_ASCII_BLOCK_H

#include <cstddef>
#include <cstdint>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

constexpr std::size_t ASCII_BLOCK = 16;  // characters

/// Whether every codeset has the character at its byte in ASCII; a few exchange the backslash and
/// what follows the last brace.
inline bool _isPlain(wchar_t c) {
    return static_cast<std::uint32_t>(c) - L' ' <= L'}' - L' ' && c != L'\\';
}

#if defined(__SSE2__)

/// Narrows a block. False, and nothing is written, when one of its characters is 0 or not ASCII.
inline bool _narrowAsciiBlock(char* to, wchar_t const* from) {
    auto const* const words = reinterpret_cast<__m128i const*>(from);
    __m128i const low = _mm_packs_epi32(_mm_loadu_si128(words), _mm_loadu_si128(words + 1));
    __m128i const high = _mm_packs_epi32(_mm_loadu_si128(words + 2), _mm_loadu_si128(words + 3));

    // Packing saturates: what is above ASCII keeps a high bit, what is negative becomes 0.
    __m128i const bytes = _mm_packus_epi16(low, high);
    __m128i const zeros = _mm_cmpeq_epi8(bytes, _mm_setzero_si128());
    if (_mm_movemask_epi8(_mm_or_si128(bytes, zeros)) != 0) return false;
    _mm_storeu_si128(reinterpret_cast<__m128i*>(to), bytes);
    return true;
}

/// Widens a block. False, and nothing is written, when one of its bytes is not ASCII.
inline bool _widenAsciiBlock(wchar_t* to, char const* from) {
    __m128i const bytes = _mm_loadu_si128(reinterpret_cast<__m128i const*>(from));
    if (_mm_movemask_epi8(bytes) != 0) return false;

    __m128i const zero = _mm_setzero_si128();
    __m128i const low = _mm_unpacklo_epi8(bytes, zero);
    __m128i const high = _mm_unpackhi_epi8(bytes, zero);
    auto* const words = reinterpret_cast<__m128i*>(to);
    _mm_storeu_si128(words, _mm_unpacklo_epi16(low, zero));
    _mm_storeu_si128(words + 1, _mm_unpackhi_epi16(low, zero));
    _mm_storeu_si128(words + 2, _mm_unpacklo_epi16(high, zero));
    _mm_storeu_si128(words + 3, _mm_unpackhi_epi16(high, zero));
    return true;
}

/// Narrows a block. False when one of its characters is not plain.
inline bool _narrowPlainBlock(char* to, wchar_t const* from) {
    if (!_narrowAsciiBlock(to, from)) return false;
    __m128i const bytes = _mm_loadu_si128(reinterpret_cast<__m128i const*>(to));
    __m128i const outside = _mm_or_si128(_mm_cmplt_epi8(bytes, _mm_set1_epi8(' ')),
                                         _mm_cmpgt_epi8(bytes, _mm_set1_epi8('}')));
    __m128i const backslash = _mm_cmpeq_epi8(bytes, _mm_set1_epi8('\\'));
    return _mm_movemask_epi8(_mm_or_si128(outside, backslash)) == 0;
}

#else

inline bool _narrowAsciiBlock(char* to, wchar_t const* from) {
    for (std::size_t i = 0; i < ASCII_BLOCK; ++i)
        if (static_cast<std::uint32_t>(from[i]) - 1U >= 0x7FU) return false;
    for (std::size_t i = 0; i < ASCII_BLOCK; ++i) to[i] = static_cast<char>(from[i]);
    return true;
}

inline bool _widenAsciiBlock(wchar_t* to, char const* from) {
    for (std::size_t i = 0; i < ASCII_BLOCK; ++i)
        if (static_cast<unsigned char>(from[i]) >= 0x80U) return false;
    for (std::size_t i = 0; i < ASCII_BLOCK; ++i) to[i] = static_cast<wchar_t>(from[i]);
    return true;
}

inline bool _narrowPlainBlock(char* to, wchar_t const* from) {
    for (std::size_t i = 0; i < ASCII_BLOCK; ++i)
        if (!_isPlain(from[i])) return false;
    return _narrowAsciiBlock(to, from);
}

#endif

#endif
