#include <climits>
#include <clocale>
#include <memory>
#include <type_traits>
#include <utility>

#include <support/expect.h>

using namespace std::string_view_literals;

static_assert(sizeof(PString) == 24 && alignof(PString) == 8, "those of its base");
static_assert(std::is_base_of_v<PLiteral, PString> && std::has_virtual_destructor_v<PLiteral>);

namespace {

constexpr unsigned long TOO_MANY = ULONG_MAX;  // characters

void _expectTerminated(PString const& text) {
    if (text.ptr() == nullptr) return;
    EXPECT_EQ(L'\0', text.ptr()[text.len()]) << "the terminator";
}

class InUtf8 : public testing::Test {
protected:
    void SetUp() override { ASSERT_NE(nullptr, setlocale(LC_CTYPE, "C.UTF-8")); }
    void TearDown() override { setlocale(LC_CTYPE, "C"); }
};

using StringOfBytes = InUtf8;

}  // namespace

TEST(String, CopiesSoManyCharacters) {
    EXPECT_TEXT(L"ab", PString(L"abc", 2));
    EXPECT_TEXT(L"abc", PString(L"abc", P_WHOLE_STRING));
    EXPECT_TEXT(L"a\0b"sv, PString(L"a\0b", 3));
    EXPECT_EQ(nullptr, PString(L"abc", 0).ptr());
    EXPECT_EQ(nullptr, PString(static_cast<wchar_t const*>(nullptr), P_WHOLE_STRING).ptr());
    EXPECT_EQ(nullptr, PString().ptr());
}

TEST(String, OwnsWhatItCopies) {
    PString original(L"abc", 3);
    PString const copy(original), ofView(static_cast<PLiteral const&>(original));
    ASSERT_CODE(PERR_OK, original.fill(L'x'));
    EXPECT_TEXT(L"abc", copy);
    EXPECT_TEXT(L"abc", ofView);
    _expectTerminated(copy);
}

TEST(String, MovesItsBufferAndBecomesEmpty) {
    PString source(L"abc", 3);
    wchar_t const* const buffer = source.ptr();
    PString made(std::move(source));
    EXPECT_EQ(buffer, made.ptr());
    EXPECT_TEXT(L"abc", made);
    EXPECT_EQ(nullptr, source.ptr());
    EXPECT_EQ(0U, source.len());

    PString target(L"old", 3);
    target = std::move(made);
    EXPECT_EQ(buffer, target.ptr());
    EXPECT_TEXT(L"abc", target);
    EXPECT_EQ(nullptr, made.ptr());
    EXPECT_EQ(0U, made.len());

    PString& itself = target;
    target = std::move(itself);
    EXPECT_TEXT(L"abc", target);
}

TEST(String, CopiesTheCharactersThatAreAssigned) {
    PString const abc(L"abc", 3);
    PString target;
    EXPECT_TEXT(L"abc", target = abc);
    EXPECT_NE(abc.ptr(), target.ptr());
    EXPECT_TEXT(L"de", target = PLiteral(L"de"));
    EXPECT_TEXT(L"fgh", target = L"fgh");
    EXPECT_TEXT(L"gh", target = target.ptr() + 1) << "from its own buffer";
    EXPECT_TEXT(L"gh", target = std::as_const(target)) << "from itself";
    EXPECT_TEXT(L"", target = static_cast<wchar_t const*>(nullptr));
    EXPECT_EQ(nullptr, target.ptr());
    EXPECT_NE(nullptr, (target = L"").ptr()) << "an empty text has a buffer";
}

TEST(String, CopiesWhatIsAssignedThroughItsBase) {
    PString target(L"old", 3);
    PLiteral& base = target;
    wchar_t const text[] = L"abc";
    base = text;
    EXPECT_TEXT(L"abc", target);
    EXPECT_NE(text, target.ptr());
    base = PLiteral(text);
    EXPECT_NE(text, target.ptr());
}

TEST(String, AppendsByOperators) {
    PString text(L"a", 1);
    EXPECT_TEXT(L"abc", text += PLiteral(L"bc"));
    EXPECT_TEXT(L"abcd", text += L"d");
    EXPECT_TEXT(L"abcd", text += static_cast<wchar_t const*>(nullptr));
    EXPECT_TEXT(L"abcdabcd", text += text);
}

TEST(String, IsANullPointerWithoutLengthOnceCleared) {
    PString text(L"abc", 3);
    text.clear();
    EXPECT_EQ(nullptr, text.ptr());
    EXPECT_EQ(0U, text.len());
}

TEST(StringSet, TakesSoManyCharacters) {
    wchar_t const* const null = nullptr;
    PString text(L"old", 3);
    EXPECT_CODE(PERR_OK, text.set(L"abc", 2));
    EXPECT_TEXT(L"ab", text);
    EXPECT_CODE(PERR_OK, text.set(L"abc", P_WHOLE_STRING));
    EXPECT_TEXT(L"abc", text);
    EXPECT_CODE(PERR_OK, text.set(text.ptr() + 1, 2));
    EXPECT_TEXT(L"bc", text) << "from its own buffer";
    EXPECT_CODE(PERR_OK, text.set(null, P_WHOLE_STRING));
    EXPECT_EQ(nullptr, text.ptr());
    EXPECT_CODE(PERR_NO_MEMORY, text.set(L"abc", TOO_MANY));
    EXPECT_TEXT(L"", text);
}

TEST(StringSet, RefusesMoreOfAViewThanItHolds) {
    struct {
        char const* what;
        unsigned long n;
        int code;
        wchar_t const* left;
    } const rows[] = {
        {"a part", 2, PERR_OK, L"ab"},
        {"just the length", 3, PERR_OK, L"abc"},
        {"one more", 4, PERR_INVALID_ARGUMENT, L"old"},
        {"all", P_WHOLE_STRING, PERR_OK, L"abc"},
        {"nothing", 0, PERR_OK, L""},
    };
    for (auto const& row : rows) {
        SCOPED_TRACE(row.what);
        PString text(L"old", 3);
        EXPECT_CODE(row.code, text.set(PLiteral(L"abc"), row.n));
        EXPECT_TEXT(row.left, text);
    }
}

TEST(StringCat, AppendsSoManyCharacters) {
    struct {
        char const* what;
        wchar_t const *text, *more;
        unsigned long n;
        int code;
        wchar_t const* left;
    } const rows[] = {
        {"a part", L"ab", L"cde", 2, PERR_OK, L"abcd"},
        {"all", L"ab", L"cde", P_WHOLE_STRING, PERR_OK, L"abcde"},
        {"nothing of a text", L"ab", L"cde", 0, PERR_OK, L"ab"},
        {"nothing", L"ab", nullptr, P_WHOLE_STRING, PERR_OK, L"ab"},
        {"to nothing", nullptr, L"c", 1, PERR_OK, L"c"},
        {"more than there can be", L"ab", L"c", ULONG_MAX - 2, PERR_NO_MEMORY, L"ab"},
    };
    for (auto const& row : rows) {
        SCOPED_TRACE(row.what);
        PString text(row.text, P_WHOLE_STRING);
        EXPECT_CODE(row.code, text.cat(row.more, row.n));
        EXPECT_TEXT(row.left, text);
        _expectTerminated(text);
    }
}

TEST(StringCat, TakesTheWholeOfAViewAndItsOwnCharacters) {
    PString text(L"ab", 2);
    EXPECT_CODE(PERR_OK, text.cat(PLiteral(L"cd")));
    EXPECT_TEXT(L"abcd", text);
    EXPECT_CODE(PERR_OK, text.cat(text.ptr() + 1, 2));
    EXPECT_TEXT(L"abcdbc", text);
}

TEST_F(StringOfBytes, HasTheLengthOfItsCharacters) {
    EXPECT_TEXT(L"\u00e9", PString("\u00e9", P_WHOLE_STRING));
    EXPECT_TEXT(L"ab", PString("abc", 2));
    EXPECT_TEXT(L"", PString("\xff", P_WHOLE_STRING)) << "cannot be converted";
    EXPECT_TEXT(L"", PString(static_cast<char const*>(nullptr), 3));
}

TEST_F(StringOfBytes, CountsBytesWhereTheyAreAppendedOrSet) {
    PString text(L"a", 1);
    EXPECT_CODE(PERR_OK, text.cat("\u00e9", 2));
    EXPECT_TEXT(L"a\u00e9\0"sv, text);
    EXPECT_CODE(PERR_OK, text.set("\u00e9", P_WHOLE_STRING));
    EXPECT_TEXT(L"\u00e9\0"sv, text);
    EXPECT_CODE(PERR_OK, text.cat("\u00e9z", 2));
    EXPECT_TEXT(L"\u00e9\0\u00e9z"sv, text) << "the bytes read are not limited";
    EXPECT_CODE(PERR_OK, text.cat(static_cast<char const*>(nullptr), P_WHOLE_STRING));
    EXPECT_CODE(PERR_OK, text.cat("x", 0));
    EXPECT_EQ(4U, text.len());
}

TEST_F(StringOfBytes, WithoutAConversionIsNotAppendedAndSetsNothing) {
    PString text(L"a", 1);
    EXPECT_CODE(PERR_NO_MEMORY, text.cat("\xff", 1));
    EXPECT_TEXT(L"a", text);
    EXPECT_CODE(PERR_NO_MEMORY, text.set("\xff", 1));
    EXPECT_EQ(nullptr, text.ptr());
}

TEST(StringInsert, PutsCharactersInFrontOfAPosition) {
    struct {
        char const* what;
        wchar_t const* text;
        unsigned long pos;
        wchar_t const* more;
        unsigned long n;
        int code;
        wchar_t const* left;
    } const rows[] = {
        {"at the front", L"abc", 0, L"xyz", 2, PERR_OK, L"xyabc"},
        {"within", L"abc", 1, L"xyz", P_WHOLE_STRING, PERR_OK, L"axyzbc"},
        {"at the end", L"abc", 3, L"x", 1, PERR_OK, L"abcx"},
        {"behind the end", L"abc", 4, L"x", 1, PERR_INVALID_ARGUMENT, L"abc"},
        {"nothing behind the end", L"abc", 4, nullptr, 0, PERR_INVALID_ARGUMENT, L"abc"},
        {"nothing of a text", L"abc", 1, L"x", 0, PERR_OK, L"abc"},
        {"nothing", L"abc", 1, nullptr, P_WHOLE_STRING, PERR_OK, L"abc"},
        {"into nothing", nullptr, 0, L"xyz", 2, PERR_OK, L"xy"},
        {"more than there can be", L"abc", 1, L"x", ULONG_MAX - 3, PERR_NO_MEMORY, L"abc"},
    };
    for (auto const& row : rows) {
        SCOPED_TRACE(row.what);
        PString text(row.text, P_WHOLE_STRING);
        EXPECT_CODE(row.code, text.insert(row.pos, row.more, row.n));
        EXPECT_TEXT(row.left, text);
        _expectTerminated(text);
    }
}

TEST(StringInsert, TakesAViewOrItsOwnCharacters) {
    PString text(L"abc", 3);
    EXPECT_CODE(PERR_OK, text.insert(1, PLiteral(L"xyz"), 2));
    EXPECT_TEXT(L"axybc", text);
    EXPECT_CODE(PERR_OK, text.insert(0, PLiteral(L"z"), P_WHOLE_STRING));
    EXPECT_TEXT(L"zaxybc", text);
    EXPECT_CODE(PERR_OK, text.insert(1, text.ptr() + 4, 2));
    EXPECT_TEXT(L"zbcaxybc", text);
}

TEST(StringErase, TakesARangeOutAndRefusesOneThatEndsBehindTheText) {
    struct {
        char const* what;
        unsigned long pos, count;
        int code;
        wchar_t const* left;
    } const rows[] = {
        {"from the middle", 1, 2, PERR_OK, L"ad"},
        {"up to the end", 2, 2, PERR_OK, L"ab"},
        {"nothing", 4, 0, PERR_OK, L"abcd"},
        {"nothing behind the end", 5, 0, PERR_INVALID_ARGUMENT, L"abcd"},
        {"one too many", 2, 3, PERR_INVALID_ARGUMENT, L"abcd"},
        {"a sum that wraps", 2, ULONG_MAX, PERR_INVALID_ARGUMENT, L"abcd"},
    };
    for (auto const& row : rows) {
        SCOPED_TRACE(row.what);
        PString text(L"abcd", P_WHOLE_STRING);
        EXPECT_CODE(row.code, text.erase(row.pos, row.count));
        EXPECT_TEXT(row.left, text);
        _expectTerminated(text);
    }
}

TEST(StringErase, OfAllReleasesTheBuffer) {
    PString text(L"abcd", 4);
    EXPECT_CODE(PERR_OK, text.erase(0, 4));
    EXPECT_EQ(nullptr, text.ptr());
    EXPECT_CODE(PERR_OK, text.erase(0, 0));
    EXPECT_CODE(PERR_INVALID_ARGUMENT, text.erase(0, 1));
}

TEST(StringTrim, TakesWhiteSpaceOffBothEnds) {
    struct {
        char const* what;
        std::wstring_view text, left;
    } const rows[] = {
        {"both ends", L"\t ab\r\n", L"ab"},
        {"the front", L" ab", L"ab"},
        {"the end", L"a b ", L"a b"},
        {"nothing", L"ab", L"ab"},
        {"other white space", L"\v ab\f", L"\v ab\f"},
        {"white space alone", L"    ", L""},
        {"a text that moves, up to its first zero", L" a\0b"sv, L"a"},
        {"a text that stays, with its zeros", L"a\0b "sv, L"a\0b"sv},
        {"no text", L"", L""},
    };
    for (auto const& row : rows) {
        SCOPED_TRACE(row.what);
        PString text(row.text.data(), row.text.size());
        wchar_t const* const buffer = text.ptr();
        EXPECT_CODE(PERR_OK, text.trim());
        EXPECT_TEXT(row.left, text);
        EXPECT_EQ(buffer, text.ptr()) << "the buffer is kept";
        _expectTerminated(text);
    }
}

TEST(StringStripall, TakesOutAllWhiteSpace) {
    PString text(L" a b\tc\r\n\vd", P_WHOLE_STRING), empty;
    EXPECT_CODE(PERR_OK, text.stripall());
    EXPECT_TEXT(L"abc\vd", text);
    _expectTerminated(text);
    EXPECT_CODE(PERR_OK, empty.stripall());
    EXPECT_EQ(nullptr, empty.ptr());
}

TEST(StringFill, OverwritesEveryCharacter) {
    PString text(L"abcd", 4), empty;
    EXPECT_CODE(PERR_OK, text.fill(L'x'));
    EXPECT_TEXT(L"xxxx", text);
    EXPECT_CODE(PERR_OK, empty.fill(L'x'));
    EXPECT_EQ(nullptr, empty.ptr());
}

TEST(StringFill, OfANumberNeverShortensTheLength) {
    struct {
        char const* what;
        unsigned long n;
        int code;
        std::wstring_view left;
    } const rows[] = {
        {"none", 0, PERR_OK, L"abcd"},
        {"fewer", 2, PERR_OK, L"xx\0d"sv},
        {"as many", 4, PERR_OK, L"xxxx"},
        {"more", 6, PERR_OK, L"xxxxxx"},
        {"more than there can be", TOO_MANY, PERR_NO_MEMORY, L"abcd"},
    };
    for (auto const& row : rows) {
        SCOPED_TRACE(row.what);
        PString text(L"abcd", 4);
        EXPECT_CODE(row.code, text.fill(L'x', row.n));
        EXPECT_TEXT(row.left, text);
        _expectTerminated(text);
    }
}

TEST(StringReplace, ChangesEachOfACharacter) {
    PString text(L"a/b//\0/", 7), empty;
    EXPECT_CODE(PERR_OK, text.replace(L'/', L'x'));
    EXPECT_TEXT(L"axbxx\0x"sv, text);
    EXPECT_CODE(PERR_OK, text.replace(L'\0', L'y'));
    EXPECT_TEXT(L"axbxxyx", text) << "not behind the length";
    _expectTerminated(text);
    EXPECT_CODE(PERR_OK, empty.replace(L'a', L'b'));
}

TEST(StringCopy, IsANewArrayWithItsLength) {
    unsigned long length = 77;
    std::unique_ptr<wchar_t[]> copy(PString::dupPtr(L"abc", 2, length));
    EXPECT_STREQ(L"ab", copy.get());
    EXPECT_EQ(2U, length);
    copy.reset(PString::dupPtr(L"", P_WHOLE_STRING, length));
    EXPECT_STREQ(L"", copy.get());
    EXPECT_EQ(0U, length);
}

TEST(StringCopy, IsNullOfNothingAndWithoutMemory) {
    unsigned long length = 77;
    EXPECT_EQ(nullptr, PString::dupPtr(L"abc", TOO_MANY, length));
    EXPECT_EQ(77U, length) << "without memory";
    EXPECT_EQ(nullptr, PString::dupPtr(L"abc", 0, length));
    EXPECT_EQ(0U, length);
    length = 77;
    EXPECT_EQ(nullptr, PString::dupPtr(nullptr, 3, length));
    EXPECT_EQ(0U, length);
}
