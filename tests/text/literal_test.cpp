#include <clocale>

#include <support/expect.h>
#include <support/order.h>

using namespace std::string_view_literals;

TEST(Literal, RefersToTheTextItIsGivenUpToItsTerminator) {
    wchar_t text[] = L"abc\0d";
    PLiteral const view(text);
    EXPECT_EQ(text, static_cast<wchar_t const*>(view));
    EXPECT_EQ(3U, view.len());

    PLiteral assigned(L"x");
    assigned = view;
    EXPECT_EQ(text, assigned.ptr());
    EXPECT_EQ(3U, assigned.len());
    text[3] = L'c';
    assigned = text;
    EXPECT_EQ(3U, assigned.len()) << "the pointer that it holds";
    assigned = L"xy\0z";
    EXPECT_EQ(2U, assigned.len());
}

TEST(Comparison, OrdersByLengthBeforeCharacters) {
    wchar_t const* const ascending[] = {nullptr, L"b", L"aa", L"abc", L"abd", L"abcd"};
    for (int i = 0; i < 6; ++i)
        for (int j = 0; j < 6; ++j) {
            expectOrder(i, j, PLiteral(ascending[i]), PLiteral(ascending[j]));
            expectOrder(i, j, PLiteral(ascending[i]), ascending[j]);
        }
}

TEST(Comparison, TakesSoManyCharactersOfTheOther) {
    PLiteral const ab(L"ab");
    EXPECT_EQ(0, ab.cmp(L"abx", 2));
    EXPECT_GT(ab.cmp(L"ab", 1), 0);
    EXPECT_LT(ab.cmp(L"abx", 3), 0);
    EXPECT_EQ(0, PLiteral().cmp(L"ab", 0));
    EXPECT_GT(ab.cmp(nullptr, 2), 0);
    EXPECT_LT(ab.cmp(nullptr, P_WHOLE_STRING), 0);
    EXPECT_EQ(0, PString(L"a\0b", 3).cmp(L"a\0c", 3)) << "up to a zero in both";
}

TEST(Case, IsThatOfTheLocale) {
    ASSERT_NE(nullptr, setlocale(LC_CTYPE, "C.UTF-8"));
    EXPECT_EQ(L'\u00c9', PLiteral::toupper(L'\u00e9'));
    EXPECT_EQ(L'\u00e9', PLiteral::tolower(L'\u00c9'));
}

TEST(Token, IsTakenOffTheFrontWithItsSeparatorAndTrimmed) {
    PString source(L"\t a b \r\n, , c", P_WHOLE_STRING), token;
    EXPECT_CODE(PERR_OK, PLiteral::getNextToken(source, token, L','));
    EXPECT_TEXT(L"a b", token);
    EXPECT_CODE(PERR_OK, PLiteral::getNextToken(source, token, L','));
    EXPECT_TEXT(L"", token);
    EXPECT_TEXT(L" c", source) << "not trimmed";
    source = PString(L"a\0,b ", 5);
    EXPECT_CODE(PERR_OK, PLiteral::getNextToken(source, token, L','));
    EXPECT_TEXT(L"a\0,b"sv, token) << "looked for up to the terminator";
    EXPECT_CODE(PERR_TOKEN, PLiteral::getNextToken(source, token, L','));
}
