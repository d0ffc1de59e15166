/// Conversion between wide and multibyte text in the locale of the calling thread: the results of
/// wcstombs and mbstowcs, with a direct path for runs of ASCII where the locale's codeset allows
/// it.
#ifndef PORTINGLAYER_TEXT_MULTIBYTE_H
#define PORTINGLAYER_TEXT_MULTIBYTE_H

#include <cstddef>
#include <memory>

/// What both conversions return for text that the locale cannot express.
constexpr std::size_t MULTIBYTE_FAILED = static_cast<std::size_t>(-1);

/// Whether the locale is known to keep every character of ASCII, and no other, at its own byte.
bool _keepsAscii();

constexpr std::size_t CONVERSION_SPARE = 8;  // zero characters behind every converted array

/// As wcstombs(out, s, limit): converts up to the terminator of `s` or until the next character
/// does not fit in `limit` bytes. Returns the bytes written, terminator not counted, or
/// MULTIBYTE_FAILED. A terminator is written only when the text ended before `limit` bytes were
/// used.
std::size_t _narrow(char* out, wchar_t const* s, std::size_t limit);

/// As mbstowcs(out, s, limit): converts up to the terminator of `s` or until `limit` wide
/// characters are written. Returns the wide characters written, or MULTIBYTE_FAILED.
std::size_t _widen(wchar_t* out, char const* s, std::size_t limit);

/// Makes the array of PLiteral::pchar2pwchar, null as there. Returns PERR_OK, also where nothing
/// can be converted, or PERR_NO_MEMORY.
int _widenCopy(char const* s, unsigned long n, std::unique_ptr<wchar_t[]>& made);

#endif
