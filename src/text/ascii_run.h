/// ASCII at the front of long texts, with the widest instructions that the processor has.
#ifndef PORTINGLAYER_TEXT_ASCII_RUN_H
#define PORTINGLAYER_TEXT_ASCII_RUN_H

#include <cstddef>

/// Narrows whole blocks at the front of `n` characters, as long as they are ASCII. Returns how many
/// characters were narrowed; fewer than a block may be left of a text that is all ASCII.
std::size_t _narrowAsciiRun(char* to, wchar_t const* from, std::size_t n);

/// Widens whole blocks at the front of `n` bytes in the same way.
std::size_t _widenAsciiRun(wchar_t* to, char const* from, std::size_t n);

#endif
