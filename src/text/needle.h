/// What a search looks for, in the two senses of equal. Both give the same operations, so that one
/// search serves for them.
#ifndef PORTINGLAYER_TEXT_NEEDLE_H
#define PORTINGLAYER_TEXT_NEEDLE_H

#include <algorithm>
#include <cstddef>
#include <cwchar>

#include "text/ascii_block.h"
#include "text/upper_case.h"

/// The first and the last character of a needle, or what can be told of them.
template <typename Wanted>
struct Ends {
    Wanted first;
    Wanted last;
    std::size_t distance;

    /// At which places in a block they stand: the lowest bit stands for the first.
    unsigned placesIn(wchar_t const* block) const {
        return _placesBetween(block, first, block + distance, last);
    }
};

/// A needle whose characters must be equal; never empty.
class ExactNeedle {
public:
    /// From here on blocks of places pay.
    static constexpr std::size_t MANY_PLACES = ASCII_BLOCK;

    ExactNeedle(wchar_t const* text, std::size_t length) : characters(text), count(length) {}

    std::size_t length() const { return count; }
    /// Characters are equal when these are.
    static wchar_t folded(wchar_t c) { return c; }
    wchar_t operator[](std::size_t i) const { return characters[i]; }

    bool mayStandAt(wchar_t const* at) const {
        return at[0] == characters[0] && at[count - 1] == characters[count - 1];
    }

    /// What is told of it in whole blocks.
    Ends<wchar_t> ends() const { return {characters[0], characters[count - 1], count - 1}; }

    /// Whether it stands at `at`; if not, adds to `vain` what was compared.
    bool standsAt(wchar_t const* at, std::size_t& vain) const {
        std::size_t const few = std::min(count, FEW);
        if (wmemcmp(at, characters, few) == 0) return few == count || goesOnAt(at, vain);
        vain += few;
        return false;
    }

private:
    static constexpr std::size_t FEW = 16;  // a comparison in vain seldom gets further

    [[gnu::noinline]] bool goesOnAt(wchar_t const* at, std::size_t& vain) const {
        if (wmemcmp(at + FEW, characters + FEW, count - FEW) == 0) return true;
        vain += count;
        return false;
    }

    wchar_t const* characters;
    std::size_t count;
};

/// A needle whose characters must have equal upper cases in the locale; never empty.
class FoldedNeedle {
public:
    /// From here on it pays to ask the locale about all of ASCII first.
    static constexpr std::size_t MANY_PLACES = 512;

    explicit FoldedNeedle(ExactNeedle sought)
        : needle(sought), first(upper(needle[0])), last(upper(needle[length() - 1])) {}

    std::size_t length() const { return needle.length(); }
    wchar_t folded(wchar_t c) { return upper(c); }
    wchar_t operator[](std::size_t i) { return upper(needle[i]); }

    /// Asks for the last character first, unless the first one is known: going forward it is the
    /// first of a later place, and known there. That spares questions, and in 64 characters a tenth
    /// of the time.
    bool mayStandAt(wchar_t const* at) {
        if (upper.knows(*at) && upper(*at) != first) return false;
        return upper(at[length() - 1]) == last && upper(*at) == first;
    }

    /// What is told of it in whole blocks.
    Ends<AsciiSet> ends() { return {asciiOf(first), asciiOf(last), length() - 1}; }

    /// Whether it stands at `at`; if not, adds to `vain` what was compared.
    bool standsAt(wchar_t const* at, std::size_t& vain) {
        for (std::size_t i = 0; i < length(); ++i) {
            if (upper(at[i]) == upper(needle[i])) continue;
            vain += COST * i;
            return false;
        }
        return true;
    }

private:
    /// The ASCII characters with the given upper case.
    AsciiSet asciiOf(wchar_t wanted) {
        unsigned common = 0x7F;
        unsigned any = 0;
        for (unsigned c = 0; c < 0x80; ++c) {
            if (upper(static_cast<wchar_t>(c)) != wanted) continue;
            common &= c;
            any |= c;
        }
        if ((common & ~any) != 0) return {};  // none
        return {static_cast<unsigned char>(any ^ common), static_cast<unsigned char>(any)};
    }

    static constexpr std::size_t COST = 8;  // of a character, beside an exact comparison
    UpperCase upper;
    ExactNeedle needle;
    wchar_t first, last;
};

#endif
