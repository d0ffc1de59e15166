#include <algorithm>
#include <cstdint>
#include <cstring>
#include <cwchar>
#include <exception>
#include <memory>
#include <utility>

#include <portinglayer/utf8.h>

#include "text/adopted_text.h"
#include "text/allocation.h"
#include "text/ascii_block.h"
#include "text/utf8_codec.h"

namespace {

constexpr std::ptrdiff_t BLOCK = ASCII_BLOCK;
constexpr std::size_t COUNTED_AT_ONCE = 0x10000;  // a 32-bit sum is safe for so many

/// How many bytes a text needs beyond one for each character.
struct Surplus {
    unsigned long bytes;
    bool refused;  ///< a character has no form
};

/// Without a branch, so that several characters are looked at in one step.
Surplus _surplusOfPart(wchar_t const* s, std::size_t count) {
    std::uint32_t bytes = 0;
    std::uint32_t refused = 0;
    for (std::size_t i = 0; i < count; ++i) {
        auto const c = static_cast<std::uint32_t>(s[i]);
        bytes += std::uint32_t{c > 0x7F} + std::uint32_t{c > 0x7FF} + std::uint32_t{c > 0xFFFF};
        refused |= std::uint32_t{c - 0xD800 < 0x800} | std::uint32_t{c > 0x10FFFF};
    }
    return {bytes, refused != 0};
}

Surplus _surplus(PLiteral const& text) {
    Surplus whole{0, false};
    wchar_t const* const s = text.ptr();
    for (std::size_t at = 0; at < text.len() && !whole.refused; at += COUNTED_AT_ONCE) {
        auto const part = _surplusOfPart(s + at, std::min(COUNTED_AT_ONCE, text.len() - at));
        whole.bytes += part.bytes;
        whole.refused = part.refused;
    }
    return whole;
}

/// Encodes characters that have a form into room for all of them.
void _encode(wchar_t const* from, wchar_t const* const end, char* to, char const* const toEnd) {
    while (from != end) {
        while (end - from >= BLOCK && _narrowAsciiBlock(to, from)) {
            from += BLOCK;
            to += BLOCK;
        }
        wchar_t const* const pause = from + std::min(end - from, BLOCK);
        for (; from != pause; ++from) {
            auto const c = static_cast<std::uint32_t>(*from);
            if (c < 0x80)
                *to++ = static_cast<char>(c);
            else
                to += _encodeUtf8(to, toEnd, c);
        }
    }
}

/// The bytes that begin a character: as many as there are characters, where all are well-formed.
std::size_t _leads(char const* s, std::size_t n) {
    std::size_t whole = 0;
    for (std::size_t at = 0; at < n; at += COUNTED_AT_ONCE) {
        std::size_t const count = std::min(COUNTED_AT_ONCE, n - at);
        std::uint32_t part = 0;
        for (std::size_t i = 0; i < count; ++i) part += std::uint32_t{!_continuesUtf8(s + at + i)};
        whole += part;
    }
    return whole;
}

/// The bytes that a character has by its first one, which is not ASCII.
std::ptrdiff_t _announced(char const* s) {
    std::uint32_t const lead = _utf8Byte(s);
    if (lead < 0xE0) return 2;
    return lead < 0xF0 ? 3 : 4;
}

/// Decodes into room for as many characters as there are bytes that begin one. False at the first
/// that is not well-formed.
bool _decode(char const* from, char const* const end, wchar_t* to) {
    while (from != end) {
        while (end - from >= BLOCK && _widenAsciiBlock(to, from)) {
            from += BLOCK;
            to += BLOCK;
        }
        char const* const pause = from + std::min(end - from, BLOCK);
        while (from < pause) {
            std::uint32_t c = _utf8Byte(from);
            std::ptrdiff_t bytes = 1;
            if (c >= 0x80) bytes = _announced(from) > end - from ? 0 : _decodeUtf8(from, c);
            if (bytes == 0) return false;
            from += bytes;
            *to++ = static_cast<wchar_t>(c);
        }
    }
    return true;
}

}  // namespace

int PUtf8::encode(PLiteral const& text, std::string& bytes) {
    Surplus const more = _surplus(text);
    if (more.refused) return PERR_BAD_FORMAT;
    try {
        bytes.resize(text.len() + more.bytes);
    } catch (std::exception const&) {  // too long for memory or for a string, which is as it was
        return PERR_NO_MEMORY;
    }
    _encode(text.ptr(), text.ptr() + text.len(), bytes.data(), bytes.data() + bytes.size());
    return PERR_OK;
}

int PUtf8::decode(char const* bytes, unsigned long n, PString& text) {
    if (bytes == nullptr && n != 0) return PERR_INVALID_ARGUMENT;
    if (n == P_WHOLE_STRING) n = strlen(bytes);
    if (n == 0) {
        text.clear();
        return PERR_OK;
    }
    std::size_t const count = _leads(bytes, n);
    std::unique_ptr<wchar_t[]> wide(_newText<wchar_t>(count, 0, 1));
    if (!wide) return PERR_NO_MEMORY;
    if (!_decode(bytes, bytes + n, wide.get())) return PERR_BAD_FORMAT;
    wide[count] = L'\0';
    AdoptedText::give(text, std::move(wide), count);
    return PERR_OK;
}

int PUtf8::padded(PLiteral const& text, PString& fitted) {
    Surplus const more = _surplus(text);
    if (more.refused) return PERR_BAD_FORMAT;
    if (text.len() == 0) {
        fitted.clear();
        return PERR_OK;
    }
    if (wmemchr(text.ptr(), L'\0', text.len()) != nullptr) return PERR_INVALID_ARGUMENT;

    std::size_t const length = text.len() + more.bytes;
    std::unique_ptr<wchar_t[]> wide(_newText<wchar_t>(length, 0, 1));
    if (!wide) return PERR_NO_MEMORY;
    std::copy_n(text.ptr(), text.len(), wide.get());
    std::fill_n(wide.get() + text.len(), more.bytes, L'x');
    wide[length] = L'\0';
    AdoptedText::give(fitted, std::move(wide), length);
    return PERR_OK;
}
