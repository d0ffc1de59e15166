/// Sixteen characters at once, with the vector instructions that every x86-64 has, and by plain
/// loops on other processors: no other file asks for the processor. As the compiler vectorises
/// them, the loops take four times as long to convert 4,096 characters.
#ifndef PORTINGLAYER_TEXT_ASCII_BLOCK_H
#define PORTINGLAYER_TEXT_ASCII_BLOCK_H

#include <cstddef>
#include <cstdint>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

constexpr std::size_t ASCII_BLOCK = 16;  // characters

/// A few ASCII characters: those that have `bits` once the bits in which they differ are set.
struct AsciiSet {
    unsigned char differing = 0;
    unsigned char bits = 0xFF;  // as it is, of no ASCII character
};

#if defined(__SSE2__)

/// A block as bytes: ASCII as it is, for the rest 0 or a high bit. Packing saturates: what is above
/// ASCII keeps a high bit, what is negative becomes 0.
inline __m128i _bytesOf(wchar_t const* from) {
    auto const* const words = reinterpret_cast<__m128i const*>(from);
    __m128i const low = _mm_packs_epi32(_mm_loadu_si128(words), _mm_loadu_si128(words + 1));
    __m128i const high = _mm_packs_epi32(_mm_loadu_si128(words + 2), _mm_loadu_si128(words + 3));
    return _mm_packus_epi16(low, high);
}

/// Narrows a block. False, and nothing is written, when one of its characters is 0 or not ASCII.
inline bool _narrowAsciiBlock(char* to, wchar_t const* from) {
    __m128i const bytes = _bytesOf(from);
    __m128i const zeros = _mm_cmpeq_epi8(bytes, _mm_setzero_si128());
    if (_mm_movemask_epi8(_mm_or_si128(bytes, zeros)) != 0) return false;
    _mm_storeu_si128(reinterpret_cast<__m128i*>(to), bytes);
    return true;
}

inline void _widenBytes(wchar_t* to, __m128i bytes) {
    __m128i const zero = _mm_setzero_si128();
    __m128i const low = _mm_unpacklo_epi8(bytes, zero);
    __m128i const high = _mm_unpackhi_epi8(bytes, zero);
    auto* const words = reinterpret_cast<__m128i*>(to);
    _mm_storeu_si128(words, _mm_unpacklo_epi16(low, zero));
    _mm_storeu_si128(words + 1, _mm_unpackhi_epi16(low, zero));
    _mm_storeu_si128(words + 2, _mm_unpacklo_epi16(high, zero));
    _mm_storeu_si128(words + 3, _mm_unpackhi_epi16(high, zero));
}

/// Widens a block. False, and nothing is written, when one of its bytes is not ASCII.
inline bool _widenAsciiBlock(wchar_t* to, char const* from) {
    __m128i const bytes = _mm_loadu_si128(reinterpret_cast<__m128i const*>(from));
    if (_mm_movemask_epi8(bytes) != 0) return false;

    _widenBytes(to, bytes);
    return true;
}

/// Narrows a block as far as its characters are ASCII and not 0. Returns a bit for each of the
/// others, the lowest for the first; what is written from there on means nothing.
inline unsigned _narrowAsciiFront(char* to, wchar_t const* from) {
    __m128i const bytes = _bytesOf(from);
    __m128i const zeros = _mm_cmpeq_epi8(bytes, _mm_setzero_si128());
    _mm_storeu_si128(reinterpret_cast<__m128i*>(to), bytes);
    return static_cast<unsigned>(_mm_movemask_epi8(_mm_or_si128(bytes, zeros)));
}

/// Widens a block as far as its bytes are ASCII. Returns a bit for each of the others, as above.
inline unsigned _widenAsciiFront(wchar_t* to, char const* from) {
    __m128i const bytes = _mm_loadu_si128(reinterpret_cast<__m128i const*>(from));
    _widenBytes(to, bytes);
    return static_cast<unsigned>(_mm_movemask_epi8(bytes));
}

/// At which of sixteen places the first character and, behind them, the last are the given ones:
/// the lowest bit stands for `first[0]` and `last[0]`.
inline unsigned _placesBetween(wchar_t const* first, wchar_t firstWanted, wchar_t const* last,
                               wchar_t lastWanted) {
    auto const* const firsts = reinterpret_cast<__m128i const*>(first);
    auto const* const lasts = reinterpret_cast<__m128i const*>(last);
    __m128i const wantedFirsts = _mm_set1_epi32(firstWanted);
    __m128i const wantedLasts = _mm_set1_epi32(lastWanted);
    auto const four = [&](int i) {
        return _mm_and_si128(_mm_cmpeq_epi32(_mm_loadu_si128(firsts + i), wantedFirsts),
                             _mm_cmpeq_epi32(_mm_loadu_si128(lasts + i), wantedLasts));
    };
    __m128i const places =
        _mm_packs_epi16(_mm_packs_epi32(four(0), four(1)), _mm_packs_epi32(four(2), four(3)));
    return static_cast<unsigned>(_mm_movemask_epi8(places));
}

inline __m128i _among(__m128i bytes, AsciiSet set) {
    __m128i const differing = _mm_set1_epi8(static_cast<char>(set.differing));
    __m128i const bits = _mm_set1_epi8(static_cast<char>(set.bits));
    __m128i const inSet = _mm_cmpeq_epi8(_mm_or_si128(bytes, differing), bits);
    __m128i const notAscii = _mm_cmplt_epi8(bytes, _mm_set1_epi8(1));
    return _mm_or_si128(inSet, notAscii);
}

/// As above, where the characters are in a set or not ASCII, or 0.
inline unsigned _placesBetween(wchar_t const* first, AsciiSet firstWanted, wchar_t const* last,
                               AsciiSet lastWanted) {
    __m128i const places =
        _mm_and_si128(_among(_bytesOf(first), firstWanted), _among(_bytesOf(last), lastWanted));
    return static_cast<unsigned>(_mm_movemask_epi8(places));
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

inline unsigned _narrowAsciiFront(char* to, wchar_t const* from) {
    unsigned others = 0;
    for (std::size_t i = 0; i < ASCII_BLOCK; ++i) {
        to[i] = static_cast<char>(from[i]);
        if (static_cast<std::uint32_t>(from[i]) - 1U >= 0x7FU) others |= 1U << i;
    }
    return others;
}

inline unsigned _widenAsciiFront(wchar_t* to, char const* from) {
    unsigned others = 0;
    for (std::size_t i = 0; i < ASCII_BLOCK; ++i) {
        to[i] = static_cast<wchar_t>(from[i]);
        if (static_cast<unsigned char>(from[i]) >= 0x80U) others |= 1U << i;
    }
    return others;
}

inline bool _among(wchar_t c, wchar_t wanted) {
    return c == wanted;
}

inline bool _among(wchar_t c, AsciiSet set) {
    auto const code = static_cast<std::uint32_t>(c);
    return code >= 0x80 || (code | set.differing) == set.bits;
}

template <typename Wanted>
unsigned _placesBetween(wchar_t const* first, Wanted firstWanted, wchar_t const* last,
                        Wanted lastWanted) {
    unsigned places = 0;
    for (std::size_t i = 0; i < ASCII_BLOCK; ++i)
        if (_among(first[i], firstWanted) && _among(last[i], lastWanted)) places |= 1U << i;
    return places;
}

#endif

#endif
