/// Sixteen characters at once, with the vector instructions that every x86-64 has, in long runs more
/// with those that newer ones have, and by plain loops on other processors: no other file asks for
/// the processor. As the compiler vectorises them, the loops take four times as long to convert
/// 4,096 characters.
#ifndef PORTINGLAYER_TEXT_ASCII_BLOCK_H
#define PORTINGLAYER_TEXT_ASCII_BLOCK_H

#include <cstddef>
#include <cstdint>
#include <type_traits>

#if defined(__SSE2__)
#include <immintrin.h>
#endif

constexpr std::size_t ASCII_BLOCK = 16;  // characters
constexpr std::size_t ASCII_HALF = ASCII_BLOCK / 2;

/// A few ASCII characters: those that have `bits` once the bits in which they differ are set.
struct AsciiSet {
    unsigned char differing = 0;
    unsigned char bits = 0xFF;  // as it is, of no ASCII character
};

/// Converts up to 32 characters one by one, as far as they are ASCII and not 0. Returns a bit for
/// each of the others, the lowest for the first.
template <typename To, typename From>
unsigned _convertAsciiEach(To* to, From const* from, std::size_t n) {
    unsigned others = 0;
    for (std::size_t i = 0; i < n; ++i) {
        // NOLINTNEXTLINE(bugprone-signed-char-misuse,cert-str34-c): a wide character, or unsigned
        std::uint32_t const c = static_cast<std::make_unsigned_t<From>>(from[i]);
        if (c - 1U >= 0x7FU) others |= 1U << i;
        to[i] = static_cast<To>(c);
    }
    return others;
}

#if defined(__SSE2__)

/// Half a block in half the width.
inline __m128i _halfOf(wchar_t const* from) {
    auto const* const words = reinterpret_cast<__m128i const*>(from);
    return _mm_packs_epi32(_mm_loadu_si128(words), _mm_loadu_si128(words + 1));
}

/// A block as bytes: ASCII as it is, for the rest 0 or a high bit. Packing saturates: what is above
/// ASCII keeps a high bit, what is negative becomes 0.
inline __m128i _bytesOf(wchar_t const* from) {
    return _mm_packus_epi16(_halfOf(from), _halfOf(from + ASCII_HALF));
}

/// A bit for each byte that is 0 or not ASCII.
inline unsigned _othersAmong(__m128i bytes) {
    __m128i const zeros = _mm_cmpeq_epi8(bytes, _mm_setzero_si128());
    return static_cast<unsigned>(_mm_movemask_epi8(_mm_or_si128(bytes, zeros)));
}

/// Narrows a block. False, and nothing is written, where one of its characters is 0 or not ASCII.
inline bool _convertAsciiBlock(char* to, wchar_t const* from) {
    __m128i const bytes = _bytesOf(from);
    if (_othersAmong(bytes) != 0) return false;
    _mm_storeu_si128(reinterpret_cast<__m128i*>(to), bytes);
    return true;
}

/// Narrows a block as far as its characters are ASCII and not 0. Returns a bit for each of the
/// others, the lowest for the first; what is written from there on means nothing.
inline unsigned _convertAsciiFront(char* to, wchar_t const* from) {
    __m128i const bytes = _bytesOf(from);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(to), bytes);
    return _othersAmong(bytes);
}

/// Narrows half a block. True where all of it is ASCII and not 0.
inline bool _convertAsciiHalf(char* to, wchar_t const* from) {
    __m128i const half = _halfOf(from);
    __m128i const bytes = _mm_packus_epi16(half, half);
    _mm_storel_epi64(reinterpret_cast<__m128i*>(to), bytes);
    return _othersAmong(bytes) == 0;
}

inline void _widenHalf(wchar_t* to, __m128i half) {
    __m128i const zero = _mm_setzero_si128();
    auto* const words = reinterpret_cast<__m128i*>(to);
    _mm_storeu_si128(words, _mm_unpacklo_epi16(half, zero));
    _mm_storeu_si128(words + 1, _mm_unpackhi_epi16(half, zero));
}

inline void _widenBytes(wchar_t* to, __m128i bytes) {
    _widenHalf(to, _mm_unpacklo_epi8(bytes, _mm_setzero_si128()));
    _widenHalf(to + ASCII_HALF, _mm_unpackhi_epi8(bytes, _mm_setzero_si128()));
}

/// Widens a block. False where one of its bytes is not ASCII.
inline bool _convertAsciiBlock(wchar_t* to, char const* from) {
    __m128i const bytes = _mm_loadu_si128(reinterpret_cast<__m128i const*>(from));
    if (_mm_movemask_epi8(bytes) != 0) return false;
    _widenBytes(to, bytes);
    return true;
}

/// Widens a block as far as its bytes are ASCII. Returns a bit for each of the others, as above, 0
/// among them or not.
inline unsigned _convertAsciiFront(wchar_t* to, char const* from) {
    __m128i const bytes = _mm_loadu_si128(reinterpret_cast<__m128i const*>(from));
    _widenBytes(to, bytes);
    return static_cast<unsigned>(_mm_movemask_epi8(bytes));
}

/// Widens half a block. True where all of it is ASCII and not 0.
inline bool _convertAsciiHalf(wchar_t* to, char const* from) {
    __m128i const half = _mm_loadl_epi64(reinterpret_cast<__m128i const*>(from));
    _widenHalf(to, _mm_unpacklo_epi8(half, _mm_setzero_si128()));
    return _othersAmong(_mm_unpacklo_epi64(half, half)) == 0;
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

constexpr std::size_t WIDE_BLOCK = 32;  // characters at once, by AVX2

[[gnu::target("avx2")]] inline bool _convertWideBlock(char* to, wchar_t const* from) {
    auto const* const words = reinterpret_cast<__m256i const*>(from);
    __m256i const a = _mm256_loadu_si256(words);
    __m256i const b = _mm256_loadu_si256(words + 1);
    __m256i const c = _mm256_loadu_si256(words + 2);
    __m256i const d = _mm256_loadu_si256(words + 3);
    __m256i const all = _mm256_or_si256(_mm256_or_si256(a, b), _mm256_or_si256(c, d));
    if (_mm256_testz_si256(all, _mm256_set1_epi32(~0x7F)) == 0) return false;

    // Packing keeps to the halves of its operands: four characters each of a, b, c, d, twice.
    __m256i const mixed = _mm256_packus_epi16(_mm256_packs_epi32(a, b), _mm256_packs_epi32(c, d));
    __m256i const order = _mm256_setr_epi32(0, 4, 1, 5, 2, 6, 3, 7);
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(to), _mm256_permutevar8x32_epi32(mixed, order));
    return true;
}

[[gnu::target("avx2")]] inline bool _convertWideBlock(wchar_t* to, char const* from) {
    __m256i const bytes = _mm256_loadu_si256(reinterpret_cast<__m256i const*>(from));
    if (_mm256_movemask_epi8(bytes) != 0) return false;
    auto* const words = reinterpret_cast<__m256i*>(to);
    for (std::size_t i = 0; i < 4; ++i)
        _mm256_storeu_si256(words + i, _mm256_cvtepu8_epi32(_mm_loadl_epi64(
                                           reinterpret_cast<__m128i const*>(from + 8 * i))));
    return true;
}

template <typename To, typename From>
[[gnu::target("avx2")]] std::size_t _convertWideBlocks(To* to, From const* from, std::size_t n) {
    std::size_t done = 0;
    while (n - done >= WIDE_BLOCK && _convertWideBlock(to + done, from + done)) done += WIDE_BLOCK;
    return done;
}

/// Narrows or widens wide blocks at the front of `n` characters, as long as they are ASCII. Returns
/// how many characters were converted.
template <typename To, typename From>
std::size_t _convertWideRun(To* to, From const* from, std::size_t n) {
    return __builtin_cpu_supports("avx2") ? _convertWideBlocks(to, from, n) : 0;
}

#else

template <typename To, typename From>
bool _convertAsciiBlock(To* to, From const* from) {
    return _convertAsciiEach(to, from, ASCII_BLOCK) == 0;
}

template <typename To, typename From>
unsigned _convertAsciiFront(To* to, From const* from) {
    return _convertAsciiEach(to, from, ASCII_BLOCK);
}

template <typename To, typename From>
bool _convertAsciiHalf(To* to, From const* from) {
    return _convertAsciiEach(to, from, ASCII_HALF) == 0;
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

template <typename To, typename From>
std::size_t _convertWideRun(To*, From const*, std::size_t) {
    return 0;
}

#endif

/// Narrows or widens whole blocks at the front of `n` characters, as long as they are ASCII. Returns
/// how many characters were converted; fewer than a block may be left of a text that is all ASCII.
template <typename To, typename From>
std::size_t _convertAsciiRun(To* to, From const* from, std::size_t n) {
    std::size_t done = _convertWideRun(to, from, n);
    while (n - done >= ASCII_BLOCK && _convertAsciiBlock(to + done, from + done))
        done += ASCII_BLOCK;
    return done;
}

/// Narrows or widens `n` characters. False where one of them is 0 or not ASCII; what is written then
/// means nothing. The last half of a block overlaps the one before it: with no single characters
/// left, writing texts of ten to thirty takes three quarters of the time.
template <typename To, typename From>
bool _convertAscii(To* to, From const* from, std::size_t n) {
    if (n < ASCII_HALF) return _convertAsciiEach(to, from, n) == 0;

    std::size_t const last = n - ASCII_HALF;
    for (std::size_t i = 0; i < last; i += ASCII_HALF)
        if (!_convertAsciiHalf(to + i, from + i)) return false;
    return _convertAsciiHalf(to + last, from + last);
}

#endif
