#include "text/ascii_run.h"

#include "text/ascii_block.h"

#if defined(__x86_64__)
#include <immintrin.h>
#define PORTINGLAYER_AVX2 [[gnu::target("avx2")]]
#endif

namespace {

#if defined(__x86_64__)

constexpr std::size_t WIDE_BLOCK = 32;

PORTINGLAYER_AVX2 bool _narrowWideBlock(char* to, wchar_t const* from) {
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

PORTINGLAYER_AVX2 std::size_t _narrowWideRun(char* to, wchar_t const* from, std::size_t n) {
    std::size_t done = 0;
    while (n - done >= WIDE_BLOCK && _narrowWideBlock(to + done, from + done)) done += WIDE_BLOCK;
    return done;
}

PORTINGLAYER_AVX2 bool _widenWideBlock(wchar_t* to, char const* from) {
    __m256i const bytes = _mm256_loadu_si256(reinterpret_cast<__m256i const*>(from));
    if (_mm256_movemask_epi8(bytes) != 0) return false;
    auto* const words = reinterpret_cast<__m256i*>(to);
    for (std::size_t i = 0; i < 4; ++i)
        _mm256_storeu_si256(words + i, _mm256_cvtepu8_epi32(_mm_loadl_epi64(
                                           reinterpret_cast<__m128i const*>(from + 8 * i))));
    return true;
}

PORTINGLAYER_AVX2 std::size_t _widenWideRun(wchar_t* to, char const* from, std::size_t n) {
    std::size_t done = 0;
    while (n - done >= WIDE_BLOCK && _widenWideBlock(to + done, from + done)) done += WIDE_BLOCK;
    return done;
}

#endif

}  // namespace

std::size_t _narrowAsciiRun(char* to, wchar_t const* from, std::size_t n) {
    std::size_t done = 0;
#if defined(__x86_64__)
    if (__builtin_cpu_supports("avx2")) done = _narrowWideRun(to, from, n);
#endif
    while (n - done >= ASCII_BLOCK && _narrowAsciiBlock(to + done, from + done))
        done += ASCII_BLOCK;
    return done;
}

std::size_t _widenAsciiRun(wchar_t* to, char const* from, std::size_t n) {
    std::size_t done = 0;
#if defined(__x86_64__)
    if (__builtin_cpu_supports("avx2")) done = _widenWideRun(to, from, n);
#endif
    while (n - done >= ASCII_BLOCK && _widenAsciiBlock(to + done, from + done)) done += ASCII_BLOCK;
    return done;
}
