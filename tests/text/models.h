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

/// A result with the string that an operation left, in which no buffer differs from no text.
inline std::wstring after(int code, PString const& s) {
    EXPECT_TRUE(s.ptr() == nullptr || s.ptr()[s.len()] == L'\0') << "not terminated";
    std::wstring const text = s.ptr() == nullptr ? L"none" : std::wstring(s.ptr(), s.len());
    return std::to_wstring(code) + L" " + text;
}

/// What all comparisons say about two things.
std::array<bool, 6> compared(auto const& a, auto const& b) {
    return {a == b, a != b, a<b, a <= b, a> b, a >= b};
}

#endif
