#include "support/expect.h"

std::string codeName(int code) {
    char const* const name = perrorName(code);
    return name != nullptr ? name : std::to_string(code) + ", which is no result code";
}

void PrintTo(PLiteral const& text, std::ostream* out) {
    *out << testing::PrintToString(std::wstring(view(text)));
}

testing::AssertionResult _compareCodes(char const*, char const* call, int expected, int actual) {
    if (expected == actual) return testing::AssertionSuccess();
    return testing::AssertionFailure()
           << call << "\n  gave     " << codeName(actual) << "\n  expected " << codeName(expected);
}

testing::AssertionResult _compareTexts(char const*, char const* what, std::wstring_view expected,
                                       PLiteral const& actual) {
    if (view(actual) == expected) return testing::AssertionSuccess();
    return testing::AssertionFailure()
           << what << "\n  is       " << testing::PrintToString(std::wstring(view(actual)))
           << "\n  expected " << testing::PrintToString(std::wstring(expected));
}
