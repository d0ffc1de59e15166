/// What several tests of text compare with.
#ifndef TESTS_TEXT_MODELS_H
#define TESTS_TEXT_MODELS_H

#include <array>
#include <random>
#include <string>

#include <gtest/gtest.h>
#include <portinglayer/strings.h>

inline std::mt19937_64 dice(20240);  // seeded: every run is the same

/// Up to `most` of the letters, by chance.
inline std::wstring pick(std::wstring const& letters, size_t most) {
    std::wstring text(dice() % (most + 1), L' ');
    for (wchar_t& c : text) c = letters[dice() % letters.size()];
    return text;
}

/// What all comparisons say about two things.
std::array<bool, 6> compared(auto const& a, auto const& b) {
    return {a == b, a != b, a<b, a <= b, a> b, a >= b};
}

#endif
