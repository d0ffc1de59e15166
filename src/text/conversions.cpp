/// PUtils: text to and from numbers, booleans, hexadecimal digits and bytes.
#include <algorithm>
#include <array>
#include <cstdint>
#include <cwchar>
#include <memory>
#include <new>
#include <string_view>
#include <type_traits>

#include <portinglayer/strings.h>

#include "text/assigned_text.h"
#include "text/measured.h"

namespace {

constexpr std::wstring_view MARK = L"0x";
constexpr wchar_t HEX_DIGITS[] = L"0123456789ABCDEF";
constexpr unsigned long ITEM_DIGITS = 2;      // hexadecimal digits of a byte, at most
constexpr unsigned long BYTE_CHARACTERS = 6;  // "0xAB, "
constexpr int LONGEST_NUMBER = 20;            // -9223372036854775808, 18446744073709551615

bool _isDigit(wchar_t c) {
    return c >= L'0' && c <= L'9';
}

/// Reads digits, with a minus sign for a signed type, that begin at the first character: the value
/// that swscanf gives, which scans 64 bits and cuts to the type's size. False, with `out` as it
/// was, for everything else: white space, a plus sign, more than 64 bits.
template <typename T>
bool _readPlainNumber(wchar_t const* s, T& out) {
    bool const negative = std::is_signed_v<T> && *s == L'-';
    if (negative) ++s;
    if (!_isDigit(*s)) return false;
    unsigned long long value = 0;
    for (; _isDigit(*s); ++s) {
        auto const digit = static_cast<unsigned int>(*s - L'0');
        if (__builtin_mul_overflow(value, 10U, &value) ||
            __builtin_add_overflow(value, digit, &value))
            return false;
    }
    if (std::is_signed_v<T> && value > INT64_MAX) return false;
    out = static_cast<T>(negative ? 0 - value : value);
    return true;
}

template <typename T>
int _strToNumber(PLiteral const& s, wchar_t const* format, T& out) {
    wchar_t const* const text = s.ptr();
    if (text == nullptr || s.len() == 0) return PERR_BAD_FORMAT;
    if (_readPlainNumber(text, out)) return PERR_OK;
    return swscanf(text, format, &out) == 1 ? PERR_OK : PERR_BAD_FORMAT;
}

/// The digits of 0 to 99. Written two a step and straight in wide characters, a number becomes text
/// in two thirds of the time of `std::to_chars` and widening what that gives.
constexpr auto DIGIT_PAIRS = [] {
    std::array<wchar_t[2], 100> pairs{};
    for (std::size_t i = 0; i < 100; ++i) {
        pairs[i][0] = L'0' + static_cast<wchar_t>(i / 10);
        pairs[i][1] = L'0' + static_cast<wchar_t>(i % 10);
    }
    return pairs;
}();

/// Writes digits backwards from `end`; gives the first one.
template <typename Unsigned>
wchar_t* _writeDigits(Unsigned v, wchar_t* end) {
    for (; v >= 100; v /= 100) end = std::copy_n(DIGIT_PAIRS[v % 100], 2, end - 2) - 2;
    if (v >= 10) return std::copy_n(DIGIT_PAIRS[v], 2, end - 2) - 2;
    *--end = L'0' + static_cast<wchar_t>(v);
    return end;
}

template <typename T>
int _numberToStr(T v, PString& out) {
    wchar_t text[LONGEST_NUMBER + 1];
    wchar_t* const end = text + LONGEST_NUMBER;
    *end = L'\0';
    auto const size = static_cast<std::make_unsigned_t<T>>(v);
    wchar_t* first = _writeDigits(v < 0 ? 0 - size : size, end);
    if (v < 0) *--first = L'-';
    return _assign(out, first);
}

int _hexDigit(wchar_t c) {
    if (_isDigit(c)) return c - L'0';
    if (c >= L'A' && c <= L'F') return c - L'A' + 10;
    if (c >= L'a' && c <= L'f') return c - L'a' + 10;
    return -1;
}

/// The byte that "%x" reads from a text, two plain digits without the detour.
bool _scanHexByte(wchar_t const* s, unsigned char& out) {
    unsigned int value = 0;
    int const high = _hexDigit(s[0]);
    int const low = high < 0 ? -1 : _hexDigit(s[1]);
    if (low >= 0 && s[2] == L'\0')
        value = static_cast<unsigned int>(high * 16 + low);
    else if (swscanf(s, L"%x", &value) != 1)
        return false;
    out = static_cast<unsigned char>(value);
    return true;
}

/// Takes an item off the front, with its mark and the comma behind it. The comma is searched up to
/// a zero character: without one the item is all that is left.
std::wstring_view _takeItem(std::wstring_view& rest) {
    rest.remove_prefix(MARK.size());
    std::size_t stop = 0;
    while (stop < rest.size() && rest[stop] != L',' && rest[stop] != L'\0') ++stop;

    bool const comma = stop < rest.size() && rest[stop] == L',';
    std::wstring_view const item = comma ? rest.substr(0, stop) : rest;
    rest.remove_prefix(comma ? stop + 1 : rest.size());
    return item;
}

/// Reads every item into `bytes`, which has room for all of them. The text is taken apart as the
/// same steps on a PString would, without moving the rest down for each item.
bool _readItems(std::wstring_view rest, unsigned char* bytes, unsigned long& count) {
    wchar_t const* const zero = std::find(rest.begin(), rest.end(), L'\0');
    for (count = 0;; ++count) {
        wchar_t const* const start = rest.data();
        rest = _stripped(rest);
        // What moves to the front ends at the first zero. It is searched once: the time stays
        // linear.
        if (rest.data() != start)
            rest = rest.substr(0, static_cast<std::size_t>(zero - rest.data()));
        if (rest.empty()) return true;
        if (!rest.starts_with(MARK)) return false;

        std::wstring_view const item = _takeItem(rest);
        if (item.size() > ITEM_DIGITS) return false;
        wchar_t digits[ITEM_DIGITS + 1];
        *std::copy(item.begin(), item.end(), digits) = L'\0';
        if (!_scanHexByte(digits, bytes[count])) return false;
    }
}

}  // namespace

int PUtils::strToInt32(PLiteral const& s, int& out) {
    return _strToNumber(s, L"%d", out);
}

int PUtils::strToUint32(PLiteral const& s, unsigned int& out) {
    return _strToNumber(s, L"%u", out);
}

int PUtils::strToInt64(PLiteral const& s, long long& out) {
    return _strToNumber(s, L"%lld", out);
}

int PUtils::strToUint64(PLiteral const& s, unsigned long long& out) {
    return _strToNumber(s, L"%llu", out);
}

int PUtils::strToBool(PLiteral const& s, bool& out) {
    bool const isTrue = s == L"true";
    if (!isTrue && s != L"false") return PERR_BAD_FORMAT;
    out = isTrue;
    return PERR_OK;
}

int PUtils::hexToByte(PLiteral const& s, char& out) {
    if (s.ptr() == nullptr || s.len() == 0 || s.len() > ITEM_DIGITS) return PERR_BAD_FORMAT;
    unsigned char byte = 0;
    if (!_scanHexByte(s.ptr(), byte)) return PERR_BAD_FORMAT;
    out = static_cast<char>(byte);
    return PERR_OK;
}

int PUtils::hexToDec(wchar_t c, char& out) {
    int const digit = _hexDigit(c);
    if (digit < 0) return PERR_BAD_FORMAT;
    out = static_cast<char>(digit);
    return PERR_OK;
}

bool PUtils::isDec(wchar_t const* s, unsigned long n, bool allowSign) {
    if (n == 0) return true;
    if (s == nullptr) return false;
    n = _measured(s, n);
    bool const sign = n != 0 && allowSign && (*s == L'+' || *s == L'-');
    return std::all_of(s + (sign ? 1 : 0), s + n, _isDigit);
}

bool PUtils::isHex(wchar_t const* s, unsigned long n) {
    if (n == 0) return true;
    if (s == nullptr) return false;
    n = _measured(s, n);
    return std::all_of(s, s + n, [](wchar_t c) { return _hexDigit(c) >= 0; });
}

int PUtils::int32ToStr(int v, PString& out) {
    return _numberToStr(v, out);
}

int PUtils::uint32ToStr(unsigned int v, PString& out) {
    return _numberToStr(v, out);
}

int PUtils::int64ToStr(long long v, PString& out) {
    return _numberToStr(v, out);
}

int PUtils::uint64ToStr(unsigned long long v, PString& out) {
    return _numberToStr(v, out);
}

int PUtils::boolToStr(bool v, PString& out) {
    out = v ? L"true" : L"false";
    return PERR_OK;
}

int PUtils::binaryToStr(unsigned char const* data, unsigned long n, PString& out) {
    if (n == 0 || data == nullptr) return PERR_INVALID_ARGUMENT;
    constexpr unsigned long MOST = (PTRDIFF_MAX / sizeof(wchar_t) - 1) / BYTE_CHARACTERS;
    if (n > MOST) return PERR_NO_MEMORY;
    std::unique_ptr<wchar_t[]> const text(new (std::nothrow) wchar_t[BYTE_CHARACTERS * n + 1]);
    if (!text) return PERR_NO_MEMORY;
    wchar_t* put = text.get();
    for (unsigned long i = 0; i < n; ++i, put += BYTE_CHARACTERS) {
        put[0] = L'0';
        put[1] = L'x';
        put[2] = HEX_DIGITS[data[i] >> 4U];
        put[3] = HEX_DIGITS[data[i] & 15U];
        put[4] = L',';
        put[5] = L' ';
    }
    put[-2] = L'\0';  // nothing follows the last byte
    return _assign(out, text.get());
}

int PUtils::strToBinary(PLiteral const& s, unsigned char*& out, unsigned long& outLen) {
    if (s.ptr() == nullptr || s.len() == 0) return PERR_BAD_FORMAT;
    unsigned long const most = s.len() / 4 + 1;  // an item takes four characters with its comma
    std::unique_ptr<unsigned char[]> const bytes(new (std::nothrow) unsigned char[most]);
    if (!bytes) return PERR_NO_MEMORY;
    unsigned long count = 0;
    if (!_readItems({s.ptr(), s.len()}, bytes.get(), count)) return PERR_BAD_FORMAT;
    auto* const exact = new (std::nothrow) unsigned char[count];
    if (exact == nullptr) return PERR_NO_MEMORY;
    std::copy_n(bytes.get(), count, exact);
    out = exact;
    outLen = count;
    return PERR_OK;
}
