#include "text/multibyte.h"

#include <langinfo.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <utility>

#include "text/allocation.h"
#include "text/ascii_block.h"
#include "text/measured.h"
#include "text/utf8_codec.h"

// The C library converts each text through its general converter. Where the codeset is ASCII or
// UTF-8, ASCII and well-formed UTF-8 are converted here; at the first character that is anything
// else the rest of the text goes to the C library, whose answer then stands.

namespace {

enum class Codeset { ASCII, UTF8, OTHER };

/// Compares in place: this is asked for every text, however short.
template <std::size_t SIZE>
bool _is(char const* name, char const (&expected)[SIZE]) {
    for (std::size_t i = 0; i < SIZE; ++i)
        if (name[i] != expected[i]) return false;
    return true;
}

Codeset _codeset() {
    char const* const name = nl_langinfo(CODESET);
    if (_is(name, "UTF-8")) return Codeset::UTF8;
    if (_is(name, "ANSI_X3.4-1968")) return Codeset::ASCII;
    return Codeset::OTHER;
}

/// How far a conversion came, and whether the C library must go on from there.
template <typename From, typename To>
struct Progress {
    From const* from;
    To* to;
    bool handOver;
};

constexpr std::ptrdiff_t BLOCK = ASCII_BLOCK;

/// Narrows from `from` to `fromEnd`, or until the next character does not fit before `toEnd`. Text
/// that is not all ASCII pays for one look at a block in as many single characters.
Progress<wchar_t, char> _narrowRun(wchar_t const* from, wchar_t const* fromEnd, char* to,
                                   char* toEnd, bool utf8) {
    while (from != fromEnd && to != toEnd) {
        while (std::min(fromEnd - from, toEnd - to) >= BLOCK && _convertAsciiBlock(to, from)) {
            from += BLOCK;
            to += BLOCK;
        }
        wchar_t const* const pause = from + std::min(fromEnd - from, BLOCK);
        for (; from != pause && to != toEnd; ++from) {
            std::uint32_t const c = _codePoint(*from);
            if (c < 0x80) {
                *to++ = static_cast<char>(c);
                continue;
            }
            std::ptrdiff_t const bytes = utf8 ? _encodeUtf8(to, toEnd, c) : 0;
            if (bytes == 0) return {from, to, true};
            to += bytes;
        }
    }
    return {from, to, false};
}

/// Widens until the text ends or `toEnd` is reached. How many bytes may be looked at is measured on
/// the way: never more than there are wide characters to fill.
Progress<char, wchar_t> _widenRun(char const* from, wchar_t* to, wchar_t* toEnd, bool utf8) {
    char const* fromEnd = from;
    while (to != toEnd) {
        if (from >= fromEnd) fromEnd = from + strnlen(from, static_cast<std::size_t>(toEnd - to));
        if (from == fromEnd) break;

        while (fromEnd - from >= BLOCK && _convertAsciiBlock(to, from)) {
            from += BLOCK;
            to += BLOCK;
        }
        char const* const pause = from + std::min(fromEnd - from, BLOCK);
        while (from < pause) {
            std::uint32_t c = _utf8Byte(from);
            if (c < 0x80) {
                ++from;
            } else {
                std::ptrdiff_t const bytes = utf8 ? _decodeUtf8(from, c) : 0;
                if (bytes == 0) return {from, to, true};
                from += bytes;
            }
            *to++ = static_cast<wchar_t>(c);
        }
    }
    return {from, to, false};
}

}  // namespace

bool _keepsAscii() {
    return _codeset() != Codeset::OTHER;
}

std::size_t _narrow(char* out, wchar_t const* s, std::size_t limit) {
    Codeset const codeset = _codeset();
    if (codeset == Codeset::OTHER) return wcstombs(out, s, limit);

    wchar_t const* const end = s + wcsnlen(s, limit);
    auto const run = _narrowRun(s, end, out, out + limit, codeset == Codeset::UTF8);
    auto const done = static_cast<std::size_t>(run.to - out);
    if (run.handOver) {
        std::size_t const rest = wcstombs(run.to, run.from, limit - done);
        return rest == MULTIBYTE_FAILED ? rest : done + rest;
    }
    if (done < limit) *run.to = '\0';
    return done;
}

std::size_t _widen(wchar_t* out, char const* s, std::size_t limit) {
    Codeset const codeset = _codeset();
    if (codeset == Codeset::OTHER) return mbstowcs(out, s, limit);

    auto const run = _widenRun(s, out, out + limit, codeset == Codeset::UTF8);
    auto const done = static_cast<std::size_t>(run.to - out);
    if (run.handOver) {
        std::size_t const rest = mbstowcs(run.to, run.from, limit - done);
        return rest == MULTIBYTE_FAILED ? rest : done + rest;
    }
    if (done < limit) *run.to = L'\0';
    return done;
}

int _widenCopy(char const* s, unsigned long n, std::unique_ptr<wchar_t[]>& made) {
    n = _measured(s, n);
    if (n == 0) return PERR_OK;

    std::unique_ptr<wchar_t[]> buffer(_newText<wchar_t>(n, 0, CONVERSION_SPARE));
    if (!buffer) return PERR_NO_MEMORY;
    std::size_t const done = _widen(buffer.get(), s, n);
    if (done == 0 || done == MULTIBYTE_FAILED) return PERR_OK;
    std::fill(buffer.get() + done, buffer.get() + n + CONVERSION_SPARE, L'\0');
    made = std::move(buffer);
    return PERR_OK;
}
