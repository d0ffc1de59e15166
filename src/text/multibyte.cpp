#include "text/multibyte.h"

#include <langinfo.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <cwchar>

// The C library converts each text through its general converter. Where the codeset is ASCII or
// UTF-8, runs of ASCII and well-formed UTF-8 are converted here; at the first character that is
// anything else the rest of the text goes to the C library, whose answer then stands.

namespace {

constexpr std::size_t BLOCK =
    16;  // characters looked at together; the compiler makes vectors of it

enum class Codeset { ASCII, UTF8, OTHER };

Codeset _codeset() {
    char const* const name = nl_langinfo(CODESET);
    if (strcmp(name, "UTF-8") == 0) return Codeset::UTF8;
    if (strcmp(name, "ANSI_X3.4-1968") == 0) return Codeset::ASCII;
    return Codeset::OTHER;
}

bool _isAscii(wchar_t c) {
    return static_cast<std::uint32_t>(c) < 0x80;
}

bool _isAsciiBlock(wchar_t const* s) {
    std::uint32_t any = 0;
    for (std::size_t i = 0; i < BLOCK; ++i) any |= static_cast<std::uint32_t>(s[i]);
    return any < 0x80;
}

bool _isAsciiBlock(char const* s) {
    std::uint64_t halves[2];
    memcpy(halves, s, BLOCK);
    return ((halves[0] | halves[1]) & 0x8080808080808080U) == 0;
}

/// Bytes of a character in UTF-8; 0 for what only the C library may decide about.
std::size_t _utf8Length(std::uint32_t c) {
    if (c < 0x800) return 2;
    if (c >= 0xD800 && c <= 0xDFFF) return 0;
    if (c < 0x10000) return 3;
    return c < 0x110000 ? 4 : 0;
}

void _encode(char* out, std::uint32_t c, std::size_t bytes) {
    for (std::size_t i = bytes - 1; i > 0; --i, c >>= 6)
        out[i] = static_cast<char>(0x80U | (c & 0x3FU));
    out[0] = static_cast<char>((0xF00U >> bytes) | c);  // C0, E0 or F0 in the lower eight bits
}

/// Decodes one character of two to four bytes, reading no byte behind the first that is no
/// continuation. Returns its bytes; 0 for what only the C library may decide about.
std::size_t _decode(char const* s, wchar_t& out) {
    auto const lead = static_cast<unsigned char>(*s);
    if (lead < 0xC2 || lead > 0xF4) return 0;
    std::size_t const bytes = lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
    std::uint32_t c = lead & (0x7FU >> bytes);
    for (std::size_t i = 1; i < bytes; ++i) {
        auto const next = static_cast<unsigned char>(s[i]);
        if ((next & 0xC0U) != 0x80U) return 0;
        c = (c << 6U) | (next & 0x3FU);
    }
    if (_utf8Length(c) != bytes) return 0;
    out = static_cast<wchar_t>(c);
    return bytes;
}

struct Narrowing {
    wchar_t const* from;
    wchar_t const* fromEnd;
    char* to;
    char* toEnd;

    /// Whether both sides have room for one more block.
    bool blockLeft() const { return std::min(fromEnd - from, toEnd - to) >= std::ptrdiff_t{BLOCK}; }
    bool left() const { return from < fromEnd && to < toEnd; }
    void asciiBlocks();
    bool one(bool utf8);
};

void Narrowing::asciiBlocks() {
    while (blockLeft() && _isAsciiBlock(from)) {
        for (std::size_t i = 0; i < BLOCK; ++i) to[i] = static_cast<char>(from[i]);
        from += BLOCK;
        to += BLOCK;
    }
}

/// Converts one character; false where the C library must go on.
bool Narrowing::one(bool utf8) {
    if (_isAscii(*from)) {
        *to++ = static_cast<char>(*from++);
        return true;
    }
    auto const c = static_cast<std::uint32_t>(*from);
    std::size_t const bytes = utf8 ? _utf8Length(c) : 0;
    if (bytes == 0 || bytes > static_cast<std::size_t>(toEnd - to)) return false;
    _encode(to, c, bytes);
    to += bytes;
    ++from;
    return true;
}

struct Widening {
    char const* from;
    char const* fromEnd;  // no further from `from` than `toEnd` is from `to`
    wchar_t* to;
    wchar_t* toEnd;

    bool left();
    void asciiBlocks();
    bool one(bool utf8);
};

/// Whether there is text to convert and room for it. How many bytes may be looked at is measured
/// as it goes: only as many as there are wide characters to fill.
bool Widening::left() {
    if (to == toEnd) return false;
    if (from >= fromEnd) fromEnd = from + strnlen(from, static_cast<std::size_t>(toEnd - to));
    return from != fromEnd;
}

void Widening::asciiBlocks() {
    while (fromEnd - from >= std::ptrdiff_t{BLOCK} && _isAsciiBlock(from)) {
        for (std::size_t i = 0; i < BLOCK; ++i) to[i] = static_cast<wchar_t>(from[i]);
        from += BLOCK;
        to += BLOCK;
    }
}

/// Converts one character; false where the C library must go on.
bool Widening::one(bool utf8) {
    if (static_cast<unsigned char>(*from) < 0x80) {
        *to++ = static_cast<wchar_t>(*from++);
        return true;
    }
    std::size_t const bytes = utf8 ? _decode(from, *to) : 0;
    from += bytes;
    to += bytes != 0 ? 1 : 0;
    return bytes != 0;
}

/// Converts until the text or the room ends; false where the C library must go on. Text that is
/// not all ASCII pays for one look at a block in as many single characters.
template <typename Conversion>
bool _convert(Conversion& conversion, bool utf8) {
    while (conversion.left()) {
        conversion.asciiBlocks();
        for (std::size_t i = 0; i < BLOCK && conversion.left(); ++i)
            if (!conversion.one(utf8)) return false;
    }
    return true;
}

}  // namespace

std::size_t _narrow(char* out, wchar_t const* s, std::size_t limit) {
    Codeset const codeset = _codeset();
    if (codeset == Codeset::OTHER) return wcstombs(out, s, limit);

    Narrowing conversion{s, s + wcsnlen(s, limit), out, out + limit};
    bool const complete = _convert(conversion, codeset == Codeset::UTF8);
    auto const done = static_cast<std::size_t>(conversion.to - out);
    if (!complete) {
        std::size_t const rest = wcstombs(conversion.to, conversion.from, limit - done);
        return rest == MULTIBYTE_FAILED ? rest : done + rest;
    }
    if (done < limit) *conversion.to = '\0';
    return done;
}

std::size_t _widen(wchar_t* out, char const* s, std::size_t limit) {
    Codeset const codeset = _codeset();
    if (codeset == Codeset::OTHER) return mbstowcs(out, s, limit);

    Widening conversion{s, s, out, out + limit};
    bool const complete = _convert(conversion, codeset == Codeset::UTF8);
    auto const done = static_cast<std::size_t>(conversion.to - out);
    if (!complete) {
        std::size_t const rest = mbstowcs(conversion.to, conversion.from, limit - done);
        return rest == MULTIBYTE_FAILED ? rest : done + rest;
    }
    if (done < limit) *conversion.to = L'\0';
    return done;
}
