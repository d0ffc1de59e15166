#include <clocale>
#include <cwctype>
#include <random>
#include <string>

#include <gtest/gtest.h>

#include <portinglayer/strings.h>

static_assert(sizeof(PLiteral) == 24 && sizeof(PString) == 24 && P_WHOLE_STRING == 0xFFFFFFFFUL);

namespace {

constexpr unsigned long NOWHERE = 77;

/// The place of `what`, tried one after the other.
unsigned long _naive(std::wstring const& text, std::wstring const& what, bool fromEnd, bool fold) {
    unsigned long found = text.empty() && what.empty() ? 0 : NOWHERE;
    for (size_t at = 0; !what.empty() && at + what.size() <= text.size(); ++at) {
        size_t i = 0;
        while (i < what.size() &&
               (fold ? towupper(wint_t(text[at + i])) == towupper(wint_t(what[i]))
                     : text[at + i] == what[i]))
            ++i;
        if (i == what.size() && (fromEnd || found == NOWHERE)) found = at;
    }
    return found;
}

std::wstring _random(std::mt19937& random, size_t most) {
    std::wstring text(random() % (most + 1), L' ');
    for (wchar_t& c : text)
        c = L"abAB\u00e9\u00c9\u0434\U00010428\u00e1"[random() % (random() % 4 == 0 ? 9 : 3)];
    return text;
}

}  // namespace

TEST(Literal, FindsWhatTryingEachPlaceFinds) {
    setlocale(LC_CTYPE, "C.UTF-8");
    for (unsigned seed = 0; seed < 40000; ++seed) {
        std::mt19937 random(seed);
        std::wstring const text = _random(random, seed % 5 == 0 ? 70 : 12);
        std::wstring const what = _random(random, seed % 50 == 0 ? 68 : 3);
        PLiteral const literal(text.c_str());
        bool const fromEnd = random() % 2 == 0, fold = random() % 2 == 0;
        unsigned long const expected = _naive(text, what, fromEnd, fold);
        int const code = expected == NOWHERE ? PERR_NOT_FOUND : PERR_OK;
        unsigned long pos = NOWHERE, place = NOWHERE;
        ASSERT_EQ(literal.str(what.c_str(), pos, fromEnd, fold), code) << seed;
        ASSERT_EQ(pos, expected) << seed << fromEnd << fold;
        if (what.size() == 1) {
            ASSERT_EQ(literal.chr(what[0], place, fromEnd, fold), code) << seed;
            ASSERT_EQ(place, expected) << seed;
        }
        ASSERT_EQ(literal.startsWith(what.c_str(), 1, fold), _naive(text, what, false, fold) == 0);
        unsigned long const last = _naive(text, what, true, fold);
        for (unsigned long n : {1UL, what.size(), P_WHOLE_STRING}) {
            unsigned long const length = n == P_WHOLE_STRING ? what.size() : n;
            bool const ends = last != NOWHERE && length + last == text.size();
            ASSERT_EQ(literal.endsWith(what.c_str(), n, fold), ends) << seed << " " << n;
        }
    }
    setlocale(LC_CTYPE, "C");
}

TEST(Literal, ComparesByLengthBeforeCharacters) {
    wchar_t const* const ascending[] = {nullptr, L"b", L"aa", L"abc", L"abd", L"abcd"};
    for (int i = 0; i < 6; ++i)
        for (int k = 0; k < 6; ++k) {
            PLiteral const a(ascending[i]), b(ascending[k]);
            wchar_t const* const s = ascending[k];
            EXPECT_TRUE((a == b) == (i == k) && (a == s) == (i == k) && (a != b) == (i != k) &&
                        (a != s) == (i != k) && (a < b) == (i < k) && (a < s) == (i < k) &&
                        (a <= b) == (i <= k) && (a <= s) == (i <= k) && (a > b) == (i > k) &&
                        (a > s) == (i > k) && (a >= b) == (i >= k) && (a >= s) == (i >= k))
                << i << k;
        }
    EXPECT_EQ(PLiteral(L"zz").cmp(L"aaa", P_WHOLE_STRING), -1);
    EXPECT_EQ(PLiteral().cmp(L"", P_WHOLE_STRING), 0);
}

TEST(Literal, AssigningTheSamePointerKeepsTheOldLength) {
    wchar_t buffer[] = L"abc";
    PLiteral literal(buffer);
    buffer[1] = L'\0';
    literal = buffer;
    EXPECT_EQ(literal.len(), 3U);
}

TEST(Tokens, EndAtOneSeparatorAndAreTrimmed) {
    PString source(L" a ,, b", P_WHOLE_STRING), token;
    wchar_t const* const expected[][2] = {{L"a", L", b"}, {L"", L" b"}, {L"b", L""}};
    for (auto const& [taken, left] : expected) {
        EXPECT_EQ(PLiteral::getNextToken(source, token, L','), PERR_OK);
        EXPECT_TRUE(token == taken && source == left) << left;
    }
    EXPECT_EQ(PLiteral::getNextToken(source, token, L','), PERR_TOKEN);
    source = L"ab";
    EXPECT_EQ(PLiteral::getNextToken(source, token, L'\0'), PERR_OK) << "the end separates nothing";
    EXPECT_TRUE(token == L"ab" && source.ptr() == nullptr);
}
