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

std::string codeName(int code);

inline std::wstring_view view(PLiteral const& text) {
    return text.ptr() == nullptr ? std::wstring_view() : std::wstring_view(text.ptr(), text.len());
}

/// For failures of gtest's own comparisons and containers.
void PrintTo(PLiteral const& text, std::ostream* out);

testing::AssertionResult _compareCodes(char const*, char const* call, int expected, int actual);
testing::AssertionResult _compareTexts(char const*, char const* what, std::wstring_view expected,
                                       PLiteral const& actual);

#endif
