#include <clocale>
#include <random>
#include <string>

#include <gtest/gtest.h>
#include <portinglayer/strings.h>

// Searches beside those of the standard library, in texts and for texts of few letters.

namespace {

std::mt19937_64 dice;

std::wstring _folded(std::wstring text, bool ignoreCase) {
    for (wchar_t& c : text)
        if (ignoreCase) c = PLiteral::toupper(c);
    return text;
}

/// Compares one search with the model, and the tests for beginning and end that build on it.
void _compare(std::wstring const& text, std::wstring const& sought, bool fromEnd, bool ignoreCase) {
    std::wstring const a = _folded(text, ignoreCase);
    std::wstring const b = _folded(sought, ignoreCase);
    bool const never = b.empty() && !a.empty();
    std::size_t const expected = never ? a.npos : fromEnd ? a.rfind(b) : a.find(b);

    PLiteral const literal(text.c_str());
    PLiteral const what(sought.c_str());
    unsigned long pos = a.npos;
    int const code = literal.str(what, pos, fromEnd, ignoreCase);
    ASSERT_EQ(expected, pos);
    ASSERT_EQ(expected == a.npos ? PERR_NOT_FOUND : PERR_OK, code);
    if (never) return;
    ASSERT_EQ(a.starts_with(b), literal.startsWith(what, ignoreCase));
    ASSERT_EQ(a.ends_with(b), literal.endsWith(what, ignoreCase));
}

std::wstring _someOf(std::wstring_view letters, std::size_t most) {
    std::wstring text(dice() % (most + 1), L' ');
    for (wchar_t& c : text) c = letters[dice() % letters.size()];
    return text;
}

/// A few letters again and again, with now and then another one.
std::wstring _pattern(std::wstring_view letters) {
    std::wstring const unit = _someOf(letters, 3) + letters[0];
    std::wstring text;
    while (text.size() < 3000) text += unit;
    for (std::size_t others = dice() % 4; others > 0; --others)
        text[dice() % text.size()] = letters[1];
    return text;
}

std::wstring _partOf(std::wstring const& text) {
    std::size_t const start = dice() % (text.size() + 1);
    return text.substr(start, dice() % (text.size() - start + 1));
}

}  // namespace

TEST(SearchModel, AgreesOnShortTextsAndOnLongOnesInWhichMuchMatchesInVain) {
    dice.seed(20240);  // every run is the same
    std::setlocale(LC_CTYPE, "C.UTF-8");
    for (std::wstring const letters : {L"abA", L"aA\u00e1\u00c1\U00010428\u00df", L"a\u00e1\u0160"})
        for (int round = 0; round < 60'000 && !testing::Test::HasFatalFailure(); ++round) {
            std::wstring const text = round % 20 == 0 ? _pattern(letters) : _someOf(letters, 12);
            std::wstring sought = round % 3 == 0 ? _someOf(letters, 3) : _partOf(text);
            if (!sought.empty() && round % 3 == 1)
                sought[dice() % sought.size()] = letters[dice() % 2];
            SCOPED_TRACE(testing::PrintToString(sought) + " in " + testing::PrintToString(text));
            _compare(text, sought, dice() & 1, dice() & 1);
        }
    std::setlocale(LC_CTYPE, "C");
}
