/// Where a needle stands in a text: one search for both directions and both senses of equal.
#ifndef PORTINGLAYER_TEXT_SUBSTRING_H
#define PORTINGLAYER_TEXT_SUBSTRING_H

#include <algorithm>
#include <bit>
#include <cstddef>

#include "text/ascii_block.h"
#include "text/prepared_needle.h"

/// What may be compared in vain, in characters, before it pays to prepare the needle.
constexpr std::size_t ALLOWED_IN_VAIN = 4096;
constexpr std::size_t ALLOWED_PER_PLACE = 4;

/// Compares at every place, however long it takes.
template <bool FROM_END, typename Needle>
wchar_t const* _findPatiently(wchar_t const* text, std::size_t places, Needle& needle) {
    std::size_t vain = 0;
    for (std::size_t passed = 0; passed < places; ++passed) {
        wchar_t const* const at = text + (FROM_END ? places - 1 - passed : passed);
        if (needle.standsAt(at, vain)) return at;
    }
    return nullptr;
}

/// Searches on behind a place at which too much was compared in vain.
template <bool FROM_END, typename Needle>
[[gnu::noinline]] wchar_t const* _findBehind(std::size_t place, wchar_t const* text,
                                             std::size_t places, Needle& needle) {
    wchar_t const* const rest = FROM_END ? text : text + place + 1;
    std::size_t const left = FROM_END ? place : places - place - 1;
    PreparedNeedle<FROM_END, Needle> const prepared(needle);
    return prepared.usable() ? prepared.find(rest, left)
                             : _findPatiently<FROM_END>(rest, left, needle);
}

/// Goes from place to place: a short text is passed before blocks would pay.
template <bool FROM_END, typename Needle>
wchar_t const* _findOneByOne(wchar_t const* text, std::size_t places, Needle& needle) {
    std::size_t vain = 0;
    for (std::size_t passed = 0; passed < places; ++passed) {
        std::size_t const place = FROM_END ? places - 1 - passed : passed;
        if (!needle.mayStandAt(text + place)) continue;
        if (needle.standsAt(text + place, vain)) return text + place;
        if (vain > ALLOWED_IN_VAIN) return _findBehind<FROM_END>(place, text, places, needle);
    }
    return nullptr;
}

/// Takes the place that comes first in the direction of the search out of a block.
template <bool FROM_END>
std::size_t _takePlace(unsigned& block) {
    int const place = FROM_END ? 31 - std::countl_zero(block) : std::countr_zero(block);
    block &= ~(1U << place);
    return static_cast<std::size_t>(place);
}

/// Looks for both ends of the needle at sixteen places at once, and compares where they stand.
template <bool FROM_END, typename Needle>
wchar_t const* _findInBlocks(wchar_t const* text, std::size_t places, Needle& needle) {
    auto const ends = needle.ends();
    std::size_t vain = 0;
    for (std::size_t passed = 0; passed < places; passed += ASCII_BLOCK) {
        // The last block reaches back over places at which the needle does not stand.
        std::size_t const left = std::max(places - passed, ASCII_BLOCK);
        std::size_t const start = FROM_END ? left - ASCII_BLOCK : places - left;
        unsigned block = ends.placesIn(text + start);
        if (block == 0) [[likely]]
            continue;  // said aloud it is a third faster

        do {
            std::size_t const place = start + _takePlace<FROM_END>(block);
            if (needle.standsAt(text + place, vain)) return text + place;
            if (vain > ALLOWED_IN_VAIN + ALLOWED_PER_PLACE * passed)
                return _findBehind<FROM_END>(place, text, places, needle);
        } while (block != 0);
    }
    return nullptr;
}

/// The first of `places` in a text at which the needle stands, or the last; null without one.
template <bool FROM_END, typename Needle>
wchar_t const* _find(wchar_t const* text, std::size_t places, Needle& needle) {
    return places < Needle::MANY_PLACES ? _findOneByOne<FROM_END>(text, places, needle)
                                        : _findInBlocks<FROM_END>(text, places, needle);
}

#endif
