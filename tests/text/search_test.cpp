#include <chrono>
#include <clocale>
#include <cstring>
#include <new>
#include <string>

#include <sys/mman.h>

#include <gtest/gtest.h>
#include <portinglayer/strings.h>
#include <support/expect.h>
#include <support/locales.h>

namespace {

constexpr bool FORWARD = false, FROM_END = true;
constexpr bool EXACT = false, IGNORING_CASE = true;
constexpr unsigned long NOWHERE = ~0UL;  // left as it was by a search that finds nothing

/// A view of characters that need not be terminated.
class View : public PLiteral {
public:
    View(wchar_t const* characters, unsigned long count) {
        text = characters;
        length = count;
    }
};

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

/// Pages with characters at their end, behind which nothing may be read.
class GuardedText {
public:
    explicit GuardedText(std::wstring const& characters) {
        auto const bytes = characters.size() * sizeof(wchar_t);
        (void)mprotect(pages, SIZE / 2, PROT_READ | PROT_WRITE);
        start = reinterpret_cast<wchar_t*>(static_cast<char*>(pages) + SIZE / 2 - bytes);
        std::memcpy(start, characters.data(), bytes);
    }
    ~GuardedText() { (void)munmap(pages, SIZE); }
    GuardedText(GuardedText const&) = delete;
    GuardedText& operator=(GuardedText const&) = delete;

    wchar_t const* get() const { return start; }

private:
    static constexpr std::size_t SIZE = 16384;
    void* pages = mmap(nullptr, SIZE, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    wchar_t* start;
};

bool outOfMemory = false;  // for the library's own buffers, while it is true

}  // namespace

// Stands in for that of the standard library in the whole test program, the library included.
void* operator new[](std::size_t size, std::nothrow_t const& /*tag*/) noexcept {
    return outOfMemory ? nullptr : ::operator new[](size);
}

TEST(TextSearch, FindsTheFirstOrTheLastPlaceInEitherCase) {
    std::setlocale(LC_CTYPE, "C.UTF-8");
    struct {
        char const* what;
        wchar_t const *text, *sought;
        unsigned long first, last, firstOfEitherCase, lastOfEitherCase;
    } const rows[] = {
        {"the same at both ends", L"abcab", L"ab", 0, 3, 0, 3},
        {"one within the other", L"aaaa", L"aa", 0, 2, 0, 2},
        {"the whole text", L"abc", L"abc", 0, 0, 0, 0},
        {"longer than the text", L"abc", L"abcd", NOWHERE, NOWHERE, NOWHERE, NOWHERE},
        {"another case", L"xAbaB", L"ab", NOWHERE, NOWHERE, 1, 3},
        {"another case in the text sought", L"xabab", L"AB", NOWHERE, NOWHERE, 1, 3},
        {"not ASCII", L"\u00e9a\u00c9A", L"\u00c9a", NOWHERE, NOWHERE, 0, 2},
        {"two small letters of one capital", L"\u03c3\u03c2", L"\u03c2", 1, 1, 0, 1},
        {"only the beginning", L"xyxyxy", L"xyz", NOWHERE, NOWHERE, NOWHERE, NOWHERE},
    };
    for (auto const& row : rows) {
        SCOPED_TRACE(row.what);
        EXPECT_EQ(row.first, _find(row.text, row.sought, FORWARD, EXACT));
        EXPECT_EQ(row.last, _find(row.text, row.sought, FROM_END, EXACT));
        EXPECT_EQ(row.firstOfEitherCase, _find(row.text, row.sought, FORWARD, IGNORING_CASE));
        EXPECT_EQ(row.lastOfEitherCase, _find(row.text, row.sought, FROM_END, IGNORING_CASE));
    }
}

TEST(TextSearch, FindsAnEmptyTextOnlyInAnEmptyOne) {
    wchar_t const* const empty[] = {nullptr, L""};
    for (bool const fromEnd : {FORWARD, FROM_END}) {
        for (auto const* const what : empty) {
            EXPECT_EQ(0UL, _find(nullptr, what, fromEnd, EXACT));
            EXPECT_EQ(0UL, _find(L"", what, fromEnd, EXACT));
            EXPECT_EQ(NOWHERE, _find(L"abc", what, fromEnd, EXACT));
        }
        EXPECT_EQ(NOWHERE, _find(nullptr, L"a", fromEnd, EXACT));
        EXPECT_EQ(NOWHERE, _find(L"", L"a", fromEnd, EXACT));
    }
}

TEST(TextSearch, CountsZeroCharactersAsAnyOther) {
    wchar_t const characters[] = L"ab\0cd\0cd";
    View const text(characters, 8);
    EXPECT_EQ(2UL, _find(text, View(L"\0c", 2), FORWARD, EXACT));
    EXPECT_EQ(5UL, _find(text, View(L"\0C", 2), FROM_END, IGNORING_CASE));
}

TEST(TextSearch, ReadsNothingBehindTheText) {
    for (unsigned long length = 1; length < 100; ++length) {
        SCOPED_TRACE(length);
        GuardedText const guarded(std::wstring(length, L'a'));
        View const text(guarded.get(), length);
        for (unsigned long part = 1; part <= length; part += 7) {
            View const end(guarded.get() + length - part, part);
            EXPECT_EQ(0UL, _find(text, end, FORWARD, EXACT));
            EXPECT_EQ(length - part, _find(text, end, FROM_END, EXACT));
            EXPECT_EQ(0UL, _find(text, end, FORWARD, IGNORING_CASE));
            EXPECT_EQ(length - part, _find(text, end, FROM_END, IGNORING_CASE));
        }
        EXPECT_EQ(NOWHERE, _find(text, L"ab", FORWARD, EXACT));
        EXPECT_EQ(NOWHERE, _find(text, L"b", FROM_END, EXACT));
    }
}

TEST(TextSearch, CountsPlacesFromTheEndIn32Bits) {
    constexpr unsigned long GI = 1UL << 30U;
    constexpr unsigned long LONGEST = 4 * GI + 100;
    void* const zeros = mmap(nullptr, LONGEST * sizeof(wchar_t), PROT_READ,
                             MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (zeros == MAP_FAILED) GTEST_SKIP() << "no room for 16 GiB of addresses";
    struct {
        char const* what;
        unsigned long length, found;
    } const rows[] = {
        {"the last start that is counted", 2 * GI, 2 * GI - 1},
        {"one more, which is negative", 2 * GI + 1, NOWHERE},
        {"the last that is negative", 4 * GI, NOWHERE},
        {"counted from 0 again", 4 * GI + 10, 9},
    };
    auto const* const characters = static_cast<wchar_t const*>(zeros);
    for (auto const& row : rows) {
        SCOPED_TRACE(row.what);
        View const text(characters, row.length);
        EXPECT_EQ(row.found, _find(text, View(L"", 1), FROM_END, EXACT));
        EXPECT_EQ(row.found, _find(text, View(L"", 1), FROM_END, IGNORING_CASE));
    }
    (void)munmap(zeros, LONGEST * sizeof(wchar_t));
}

TEST(TextSearch, OfWhatNearlyStandsEverywhereEndsSoonAndIsRight) {
    std::setlocale(LC_CTYPE, "C.UTF-8");
    std::wstring const most(100000, L'a');
    std::wstring const sought = most + L"b" + most;
    std::wstring text(4000000, L'a');
    auto const start = std::chrono::steady_clock::now();
    for (bool const ignoreCase : {EXACT, IGNORING_CASE}) {
        for (bool const fromEnd : {FORWARD, FROM_END}) {
            text[2000000] = L'a';
            EXPECT_EQ(NOWHERE, _find(text.c_str(), sought.c_str(), fromEnd, ignoreCase));
            text[2000000] = L'b';
            EXPECT_EQ(1900000UL, _find(text.c_str(), sought.c_str(), fromEnd, ignoreCase));
        }
    }
    // Place by place it takes minutes, and much less than a second as it is.
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(20));
}

TEST(TextSearch, OfWhatNearlyStandsEverywhereNeedsNoMemory) {
    std::wstring const most(500, L'a');
    std::wstring const sought = most + L"b" + most;
    std::wstring text(5000, L'a');
    text[2000] = text[4000] = L'b';
    PLiteral const view(text.c_str());
    PLiteral const what(sought.c_str());

    outOfMemory = true;
    unsigned long const first = _find(view, what, FORWARD, EXACT);
    unsigned long const last = _find(view, what, FROM_END, EXACT);
    unsigned long const firstOfEitherCase = _find(view, what, FORWARD, IGNORING_CASE);
    unsigned long const lastOfEitherCase = _find(view, what, FROM_END, IGNORING_CASE);
    outOfMemory = false;
    EXPECT_EQ(1500UL, first);
    EXPECT_EQ(3500UL, last);
    EXPECT_EQ(1500UL, firstOfEitherCase);
    EXPECT_EQ(3500UL, lastOfEitherCase);
}

TEST(TextSearch, TellsTurkishLettersApartByTheLocale) {
    std::setlocale(LC_CTYPE, "C.UTF-8");
    EXPECT_EQ(1UL, _find(L"xI", L"i", FORWARD, IGNORING_CASE));
    MadeLocale const turkish("UTF-8", "tr_TR");
    EXPECT_EQ(NOWHERE, _find(L"xI", L"i", FORWARD, IGNORING_CASE));
    EXPECT_EQ(1UL, _find(L"x\u0130", L"i", FORWARD, IGNORING_CASE));
    EXPECT_EQ(1UL, _find(L"xI", L"\u0131", FROM_END, IGNORING_CASE));
}

TEST(CharacterSearch, FindsTheFirstOrTheLastOfEitherCaseUpToTheTerminator) {
    std::setlocale(LC_CTYPE, "C.UTF-8");
    struct {
        char const* what;
        wchar_t const* text;
        wchar_t sought;
        unsigned long first, last, firstOfEitherCase, lastOfEitherCase;
    } const rows[] = {
        {"as it stands", L"xaya", L'a', 1, 3, 1, 3},
        {"both cases, the small one first", L"xaA", L'A', 2, 2, 1, 2},
        {"both cases, the capital first", L"xAa", L'A', 1, 1, 1, 2},
        {"only the capital", L"xA", L'a', NOWHERE, NOWHERE, 1, 1},
        {"only the small one", L"xa", L'A', NOWHERE, NOWHERE, 1, 1},
        {"neither", L"xy", L'a', NOWHERE, NOWHERE, NOWHERE, NOWHERE},
        {"the terminator", L"xy", L'\0', 2, 2, 2, 2},
        {"in no text", nullptr, L'a', NOWHERE, NOWHERE, NOWHERE, NOWHERE},
        {"the terminator of an empty text", L"", L'\0', NOWHERE, NOWHERE, NOWHERE, NOWHERE},
    };
    for (auto const& row : rows) {
        SCOPED_TRACE(row.what);
        EXPECT_EQ(row.first, _find(row.text, row.sought, FORWARD, EXACT));
        EXPECT_EQ(row.last, _find(row.text, row.sought, FROM_END, EXACT));
        EXPECT_EQ(row.firstOfEitherCase, _find(row.text, row.sought, FORWARD, IGNORING_CASE));
        EXPECT_EQ(row.lastOfEitherCase, _find(row.text, row.sought, FROM_END, IGNORING_CASE));
    }
}

TEST(CharacterSearch, RunsToTheTerminatorNotToTheLength) {
    EXPECT_EQ(3UL, _find(View(L"abcd", 2), L'd', FORWARD, EXACT));
    EXPECT_EQ(NOWHERE, _find(View(L"ab\0d", 4), L'd', FORWARD, EXACT));
}

TEST(Prefix, IsComparedUpToItsTerminatorWhateverLengthIsGiven) {
    EXPECT_TRUE(PLiteral(L"abc").startsWith(L"ab", 1, EXACT));
    EXPECT_TRUE(PLiteral(L"abc").startsWith(L"ab", 100, EXACT));
    EXPECT_FALSE(PLiteral(L"abc").startsWith(L"ax", 1, EXACT));
    EXPECT_FALSE(PLiteral(L"xab").startsWith(L"ab", 2, EXACT));
    EXPECT_TRUE(PLiteral(L"abc").startsWith(PLiteral(L"abc"), EXACT));
    EXPECT_FALSE(PLiteral(L"abc").startsWith(PLiteral(L"abcd"), EXACT));
    EXPECT_FALSE(PLiteral(L"abc").startsWith(PLiteral(L"AB"), EXACT));
    EXPECT_TRUE(PLiteral(L"abc").startsWith(PLiteral(L"AB"), IGNORING_CASE));
}

TEST(Suffix, IsComparedWithTheLengthThatIsGiven) {
    EXPECT_TRUE(PLiteral(L"abc").endsWith(L"bc", 2, EXACT));
    EXPECT_TRUE(PLiteral(L"abc").endsWith(L"bc", P_WHOLE_STRING, EXACT));
    EXPECT_FALSE(PLiteral(L"abc").endsWith(L"bc", 1, EXACT));
    EXPECT_TRUE(PLiteral(L"abcx").endsWith(L"bc", 3, EXACT));  // from where it stands to the end
    EXPECT_FALSE(PLiteral(L"abcx").endsWith(PLiteral(L"bc"), EXACT));
    EXPECT_FALSE(PLiteral(L"abc").endsWith(PLiteral(L"xabc"), EXACT));
    EXPECT_FALSE(PLiteral(L"abc").endsWith(PLiteral(L"BC"), EXACT));
    EXPECT_TRUE(PLiteral(L"abc").endsWith(PLiteral(L"BC"), IGNORING_CASE));
}

TEST(PrefixAndSuffix, OfNothingStandsOnlyInNothing) {
    EXPECT_TRUE(PLiteral().startsWith(nullptr, 0, EXACT));
    EXPECT_TRUE(PLiteral(L"").endsWith(L"", 0, EXACT));
    EXPECT_FALSE(PLiteral(L"").endsWith(L"", 1, EXACT));
    EXPECT_FALSE(PLiteral(L"a").startsWith(L"", 0, EXACT));
    EXPECT_FALSE(PLiteral(L"a").endsWith(L"", 0, EXACT));
    EXPECT_FALSE(PLiteral().startsWith(L"a", 1, EXACT));
    EXPECT_FALSE(PLiteral().endsWith(L"a", 1, EXACT));
}
