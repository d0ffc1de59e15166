/// Comparisons of what the library gives: a code fails with the names of both, a text with its
/// characters.
#ifndef TESTS_SUPPORT_EXPECT_H
#define TESTS_SUPPORT_EXPECT_H

#include <string>
#include <string_view>

#include <gtest/gtest.h>
#include <portinglayer/strings.h>

#define EXPECT_CODE(expected, actual) EXPECT_PRED_FORMAT2(_compareCodes, expected, actual)
#define ASSERT_CODE(expected, actual) ASSERT_PRED_FORMAT2(_compareCodes, expected, actual)

/// The whole of a text, zero characters included: `expected` is anything that makes a wide view.
#define EXPECT_TEXT(expected, actual) EXPECT_PRED_FORMAT2(_compareTexts, expected, actual)
#define ASSERT_TEXT(expected, actual) ASSERT_PRED_FORMAT2(_compareTexts, expected, actual)

inline std::string codeName(int code) {
    char const* const name = perrorName(code);
    return name != nullptr ? name : std::to_string(code) + ", which is no result code";
}

inline std::wstring_view view(PLiteral const& text) {
    return text.ptr() == nullptr ? std::wstring_view() : std::wstring_view(text.ptr(), text.len());
}

/// For failures of gtest's own comparisons and containers.
inline void PrintTo(PLiteral const& text, std::ostream* out) {
    *out << testing::PrintToString(std::wstring(view(text)));
}

inline testing::AssertionResult _compareCodes(char const*, char const* call, int expected,
                                              int actual) {
    if (expected == actual) return testing::AssertionSuccess();
    return testing::AssertionFailure()
           << call << "\n  gave     " << codeName(actual) << "\n  expected " << codeName(expected);
}

inline testing::AssertionResult _compareTexts(char const*, char const* what,
                                              std::wstring_view expected, PLiteral const& actual) {
    if (view(actual) == expected) return testing::AssertionSuccess();
    return testing::AssertionFailure()
           << what << "\n  is       " << testing::PrintToString(std::wstring(view(actual)))
           << "\n  expected " << testing::PrintToString(std::wstring(expected));
}

#endif
