#include <chrono>
#include <clocale>

#include <support/expect.h>
#include <text/view.h>

namespace {

constexpr bool FORWARD = false, FROM_END = true;
constexpr bool EXACT = false, IGNORING_CASE = true;
constexpr unsigned long NOWHERE = ~0UL;  // left as it was by a search that finds nothing

unsigned long _find(PLiteral const& text, PLiteral const& what, bool fromEnd, bool ignoreCase) {
    unsigned long pos = NOWHERE;
    int const code = text.str(what, pos, fromEnd, ignoreCase);
    EXPECT_CODE(pos == NOWHERE ? PERR_NOT_FOUND : PERR_OK, code);
    return pos;
}

unsigned long _find(PLiteral const& text, wchar_t c, bool fromEnd, bool ignoreCase) {
    unsigned long pos = NOWHERE;
    int const code = text.chr(c, pos, fromEnd, ignoreCase);
    EXPECT_CODE(pos == NOWHERE ? PERR_NOT_FOUND : PERR_OK, code);
    return pos;
}

}  // namespace

TEST(TextSearch, FindsAnEmptyTextOnlyInAnEmptyOne) {
    EXPECT_EQ(0UL, _find(PLiteral(), L"", FORWARD, EXACT));
    EXPECT_EQ(0UL, _find(L"", PLiteral(), FROM_END, EXACT));
    EXPECT_EQ(NOWHERE, _find(L"abc", L"", FORWARD, EXACT));
    EXPECT_EQ(NOWHERE, _find(L"", L"a", FROM_END, EXACT));
    EXPECT_EQ(NOWHERE, _find(L"abc", L"abcdefgh", FORWARD, EXACT)) << "a longer one";
}

TEST(TextSearch, OfWhatNearlyStandsEverywhereEndsSoonAndIsRight) {
    std::setlocale(LC_CTYPE, "C.UTF-8");
    std::wstring const most(100000, L'a');
    std::wstring const sought = most + L"b" + most;
    std::wstring text(4000000, L'a');
    text[2000000] = L'b';
    auto const start = std::chrono::steady_clock::now();
    for (bool const ignoreCase : {EXACT, IGNORING_CASE})
        for (bool const fromEnd : {FORWARD, FROM_END})
            EXPECT_EQ(1900000UL, _find(text.c_str(), sought.c_str(), fromEnd, ignoreCase));
    // Place by place it takes minutes, and much less than a second as it is.
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(20));
}

TEST(CharacterSearch, FindsTheFirstOrTheLastOfEitherCaseUpToTheTerminator) {
    EXPECT_EQ(1UL, _find(L"xaAy", L'a', FORWARD, EXACT));
    EXPECT_EQ(2UL, _find(L"xaAay", L'A', FROM_END, EXACT));
    EXPECT_EQ(1UL, _find(L"xaAy", L'a', FORWARD, IGNORING_CASE));
    EXPECT_EQ(2UL, _find(L"xAay", L'a', FROM_END, IGNORING_CASE));
    EXPECT_EQ(1UL, _find(L"xa", L'A', FROM_END, IGNORING_CASE));
    EXPECT_EQ(1UL, _find(L"xA", L'a', FROM_END, IGNORING_CASE));
    EXPECT_EQ(NOWHERE, _find(L"", L'\0', FORWARD, EXACT));
    EXPECT_EQ(3UL, _find(View(L"abcd", 2), L'd', FORWARD, EXACT)) << "whatever the length";
    EXPECT_EQ(NOWHERE, _find(View(L"ab\0d", 4), L'd', FORWARD, EXACT));
}

TEST(PrefixAndSuffix, OfWhichOnlyTheSecondIsComparedWithTheLengthThatIsGiven) {
    EXPECT_TRUE(PLiteral(L"abc").startsWith(L"ab", 1, EXACT));
    EXPECT_FALSE(PLiteral(L"abc").startsWith(L"ax", 1, EXACT));
    EXPECT_TRUE(PLiteral().startsWith(nullptr, 0, EXACT));
    EXPECT_FALSE(PLiteral(L"a").startsWith(L"", 0, EXACT));
    EXPECT_TRUE(PLiteral(L"abc").endsWith(L"bc", P_WHOLE_STRING, EXACT));
    EXPECT_FALSE(PLiteral(L"abc").endsWith(L"bc", 1, EXACT));
    EXPECT_TRUE(PLiteral(L"abcx").endsWith(L"bc", 3, EXACT));  // from where it stands to the end
    EXPECT_TRUE(PLiteral(L"").endsWith(L"", 0, EXACT));
    EXPECT_FALSE(PLiteral(L"a").endsWith(L"", 0, EXACT));
}
