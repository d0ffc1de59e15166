#include <algorithm>
#include <bit>
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
constexpr std::size_t PART = 768;      // characters encoded at once: within a page of the stack
constexpr std::size_t MOST_BYTES = 4;  // of a character
constexpr std::size_t PART_BYTES = PART * MOST_BYTES + ASCII_BLOCK;

/// Encodes one character behind the other. Null at one that has no form, else the end of what was
/// written.
char* _encodeEach(char* to, wchar_t const* from, wchar_t const* const end) {
    for (; from != end; ++from) {
        std::uint32_t const c = _codePoint(*from);
        if (c < 0x80) {
            *to++ = static_cast<char>(c);
            continue;
        }
        std::ptrdiff_t const bytes = _encodeUtf8(to, to + MOST_BYTES, c);
        if (bytes == 0) return nullptr;
        to += bytes;
    }
    return to;
}

/// As above, into room for a block more than what the characters can take.
char* _encodePart(char* to, wchar_t const* from, wchar_t const* const end) {
    std::size_t const run = _convertAsciiRun(to, from, static_cast<std::size_t>(end - from));
    to += run;
    from += run;
    while (end - from >= BLOCK) {
        unsigned const others = _convertAsciiFront(to, from);
        std::ptrdiff_t const ascii = others == 0 ? BLOCK : std::countr_zero(others);
        wchar_t const* behind = from + std::bit_width(others);  // the last other
        to += ascii;
        from += ascii;
        if (others == 0) continue;
        while (behind != end && _codePoint(*behind) >= 0x80) ++behind;
        to = _encodeEach(to, from, behind);
        if (to == nullptr) return nullptr;
        from = behind;
    }
    return _encodeEach(to, from, end);
}

/// Part by part through `part`.
int _encodeLong(PLiteral const& text, char* part, std::string& bytes) {
    wchar_t const* const end = text.ptr() + text.len();
    std::string whole;
    for (wchar_t const* from = text.ptr(); from != end;) {
        wchar_t const* const pause = from + std::min(end - from, std::ptrdiff_t{PART});
        char const* const partEnd = _encodePart(part, from, pause);
        if (partEnd == nullptr) return PERR_BAD_FORMAT;
        auto const made = static_cast<std::size_t>(partEnd - part);
        // As if all were like the first part, but at most twice what it is sure to take.
        if (whole.empty()) whole.reserve(std::min((text.len() / PART + 1) * made, 2 * text.len()));
        whole.append(part, made);
        from = pause;
    }
    bytes.swap(whole);
    return PERR_OK;
}

/// The bytes that a character has by its first one, which is not ASCII.
std::ptrdiff_t _announced(char const* s) {
    std::uint32_t const lead = _utf8Byte(s);
    if (lead < 0xE0) return 2;
    return lead < 0xF0 ? 3 : 4;
}

/// Decodes one character behind the other up to the next that is ASCII with a block behind it.
/// False at the first that is not well-formed.
bool _decodeOthers(wchar_t*& to, char const*& from, char const* const end) {
    do {
        std::uint32_t c = _utf8Byte(from);
        std::ptrdiff_t bytes = 1;
        if (c >= 0x80) bytes = _announced(from) > end - from ? 0 : _decodeUtf8(from, c);
        if (bytes == 0) return false;
        from += bytes;
        *to++ = static_cast<wchar_t>(c);
    } while (from != end && (_utf8Byte(from) >= 0x80 || end - from < BLOCK));
    return true;
}

/// Decodes into room for as many characters as there are bytes. Null where they are not
/// well-formed, else the end of what was written.
wchar_t* _decode(wchar_t* to, char const* from, char const* const end) {
    std::size_t const run = _convertAsciiRun(to, from, static_cast<std::size_t>(end - from));
    to += run;
    from += run;
    while (from != end) {
        if (end - from >= BLOCK) {
            unsigned const others = _convertAsciiFront(to, from);
            std::ptrdiff_t const ascii = others == 0 ? BLOCK : std::countr_zero(others);
            to += ascii;
            from += ascii;
            if (others == 0) continue;
        }
        if (!_decodeOthers(to, from, end)) return nullptr;
    }
    return to;
}

/// How many bytes more than characters a text takes; -1 where one has no form.
long _surplus(PLiteral const& text) {
    long bytes = 0;
    for (wchar_t const* s = text.ptr(); s != text.ptr() + text.len(); ++s) {
        std::uint32_t const c = _codePoint(*s);
        if (c < 0x80) continue;
        std::ptrdiff_t const length = _utf8Length(c);
        if (length == 0) return -1;
        bytes += length - 1;
    }
    return bytes;
}

/// A copy with room for a terminator and no more; null without memory for it.
std::unique_ptr<wchar_t[]> _exactly(wchar_t const* s, std::size_t length) {
    std::unique_ptr<wchar_t[]> copy(_newText<wchar_t>(length, 0, 1));
    if (copy) std::copy_n(s, length, copy.get());
    return copy;
}

}  // namespace

int PUtf8::encode(PLiteral const& text, std::string& bytes) try {
    char part[PART_BYTES];
    if (text.len() > PART) return _encodeLong(text, part, bytes);
    char const* const end = _encodePart(part, text.ptr(), text.ptr() + text.len());
    if (end == nullptr) return PERR_BAD_FORMAT;
    bytes = std::string(part, static_cast<std::size_t>(end - part));
    return PERR_OK;
} catch (std::exception const&) {  // no memory, or more than a string can hold
    return PERR_NO_MEMORY;
}

int PUtf8::decode(char const* bytes, unsigned long n, PString& text) {
    if (bytes == nullptr && n != 0) return PERR_INVALID_ARGUMENT;
    if (n == P_WHOLE_STRING) n = strlen(bytes);
    if (n == 0) {
        text.clear();
        return PERR_OK;
    }
    std::unique_ptr<wchar_t[]> wide(_newText<wchar_t>(n, 0, 1));
    if (!wide) return PERR_NO_MEMORY;
    wchar_t const* const end = _decode(wide.get(), bytes, bytes + n);
    if (end == nullptr) return PERR_BAD_FORMAT;

    auto const count = static_cast<unsigned long>(end - wide.get());
    if (count < n) wide = _exactly(wide.get(), count);
    if (!wide) return PERR_NO_MEMORY;
    wide[count] = L'\0';
    AdoptedText::give(text, std::move(wide), count);
    return PERR_OK;
}

int PUtf8::padded(PLiteral const& text, PString& fitted) {
    if (text.len() == 0) {
        fitted.clear();
        return PERR_OK;
    }
    // First, as of every name: it is the caller's mistake, whatever else the text holds.
    if (wmemchr(text.ptr(), L'\0', text.len()) != nullptr) return PERR_INVALID_ARGUMENT;
    long const surplus = _surplus(text);
    if (surplus < 0) return PERR_BAD_FORMAT;

    auto const more = static_cast<std::size_t>(surplus);
    std::size_t const length = text.len() + more;
    std::unique_ptr<wchar_t[]> wide(_newText<wchar_t>(length, 0, 1));
    if (!wide) return PERR_NO_MEMORY;
    std::copy_n(text.ptr(), text.len(), wide.get());
    std::fill_n(wide.get() + text.len(), more, L'x');
    wide[length] = L'\0';
    AdoptedText::give(fitted, std::move(wide), length);
    return PERR_OK;
}
