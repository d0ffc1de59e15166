#include <climits>
#include <clocale>
#include <memory>
#include <utility>

#include <support/expect.h>

using namespace std::string_view_literals;

namespace {

constexpr unsigned long TOO_MANY = ULONG_MAX;  // characters
constexpr wchar_t const* NO_TEXT = nullptr;

using S = PString&;

/// What an edit makes of a text.
struct Edit {
    char const* what;
    std::wstring_view before;
    int (*edit)(PString&);
    int code;
    std::wstring_view after;
};

void _expectEdits(std::initializer_list<Edit> rows) {
    for (Edit const& row : rows) {
        SCOPED_TRACE(row.what);
        PString text(row.before.data(), row.before.size());
        EXPECT_CODE(row.code, row.edit(text));
        EXPECT_TEXT(row.after, text);
        if (text.ptr() == nullptr) continue;
        EXPECT_EQ(L'\0', text.ptr()[text.len()]) << "the terminator";
    }
}

}  // namespace

TEST(String, CopiesSoManyCharacters) {
    EXPECT_TEXT(L"ab", PString(L"abc", 2));
    EXPECT_TEXT(L"abc", PString(L"abc", P_WHOLE_STRING));
    EXPECT_EQ(nullptr, PString(L"abc", 0).ptr());
}

TEST(String, OwnsWhatItCopies) {
    PString original(L"abc", 3);
    PString const copy(original), ofView(static_cast<PLiteral const&>(original));
    ASSERT_CODE(PERR_OK, original.fill(L'x'));
    EXPECT_STREQ(L"abc", copy.ptr());
    EXPECT_STREQ(L"abc", ofView.ptr());
}

TEST(String, MovesItsBufferAndBecomesEmpty) {
    PString source(L"abc", 3), target(L"old", 3);
    wchar_t const* const buffer = source.ptr();
    PString made(std::move(source));
    EXPECT_EQ(buffer, made.ptr());
    EXPECT_TEXT(L"abc", made);
    EXPECT_EQ(nullptr, source.ptr());
    EXPECT_EQ(0U, source.len());

    target = std::move(made);
    EXPECT_EQ(buffer, target.ptr());
    EXPECT_TEXT(L"abc", target);
    EXPECT_EQ(nullptr, made.ptr());
}

TEST(String, CopiesTheCharactersThatAreAssigned) {
    PString const abc(L"abc", 3);
    PString target;
    EXPECT_TEXT(L"abc", target = abc);
    EXPECT_NE(abc.ptr(), target.ptr());
    EXPECT_TEXT(L"fgh", target = L"fgh");
    EXPECT_TEXT(L"gh", target = target.ptr() + 1) << "from its own buffer";
    EXPECT_EQ(nullptr, (target = NO_TEXT).ptr());
    EXPECT_EQ(0U, target.len());
    EXPECT_NE(nullptr, (target = L"").ptr()) << "an empty text has a buffer";
}

TEST(String, CopiesWhatIsAssignedThroughItsBase) {
    PString target(L"old", 3);
    PLiteral& base = target;
    wchar_t const text[] = L"abc";
    base = text;
    EXPECT_TEXT(L"abc", target);
    EXPECT_NE(text, target.ptr());
}

TEST(StringSet, TakesSoManyCharactersButNoMoreOfAViewThanItHolds) {
    static PLiteral const abc(L"abc");
    _expectEdits({
        {"a part", L"old", [](S s) { return s.set(L"abc", 2); }, PERR_OK, L"ab"},
        {"its own", L"abc", [](S s) { return s.set(s.ptr() + 1, 2); }, PERR_OK, L"bc"},
        {"nothing", L"old", [](S s) { return s.set(NO_TEXT, P_WHOLE_STRING); }, PERR_OK, L""},
        {"more of a view", L"old", [](S s) { return s.set(abc, 4); }, PERR_INVALID_ARGUMENT,
         L"old"},
        {"all of a view", L"", [](S s) { return s.set(abc, P_WHOLE_STRING); }, PERR_OK, L"abc"},
    });
}

TEST(StringCat, AppendsSoManyCharacters) {
    _expectEdits({
        {"a part", L"ab", [](S s) { return s.cat(L"cde", 2); }, PERR_OK, L"abcd"},
        {"a view", L"ab", [](S s) { return s.cat(PLiteral(L"cd")); }, PERR_OK, L"abcd"},
        {"its own", L"abc", [](S s) { return s.cat(s.ptr() + 1, 2); }, PERR_OK, L"abcbc"},
        {"too many", L"ab", [](S s) { return s.cat(L"c", TOO_MANY); }, PERR_NO_MEMORY, L"ab"},
    });
}

TEST(StringCat, IsTheOperatorThatAppends) {
    PString text(L"a", 1);
    EXPECT_TEXT(L"ab", text += L"b");
    EXPECT_TEXT(L"abab", text += text);
}

TEST(StringOfBytes, CountsBytesWhereTheyAreAppendedOrSetAndCharactersWhereItIsMade) {
    setlocale(LC_CTYPE, "C.UTF-8");
    EXPECT_TEXT(L"\u00e9", PString("\u00e9", P_WHOLE_STRING));
    EXPECT_TEXT(L"", PString("\xff", P_WHOLE_STRING)) << "cannot be converted";
    _expectEdits({
        {"cat", L"a", [](S s) { return s.cat("\u00e9", 2); }, PERR_OK, L"a\u00e9\0"sv},
        {"cat that reads on", L"a", [](S s) { return s.cat("\u00e9z", 2); }, PERR_OK, L"a\u00e9z"},
        {"cat, unreadable", L"a", [](S s) { return s.cat("\xff", 1); }, PERR_NO_MEMORY, L"a"},
        {"set", L"a", [](S s) { return s.set("\u00e9", 2); }, PERR_OK, L"\u00e9\0"sv},
    });
    setlocale(LC_CTYPE, "C");
}

TEST(StringInsert, PutsCharactersInFrontOfAPosition) {
    static PLiteral const xyz(L"xyz");
    _expectEdits({
        {"at the end", L"abc", [](S s) { return s.insert(3, L"x", 1); }, PERR_OK, L"abcx"},
        {"behind", L"a", [](S s) { return s.insert(2, L"x", 1); }, PERR_INVALID_ARGUMENT, L"a"},
        {"its own", L"abc", [](S s) { return s.insert(1, s.ptr() + 1, 2); }, PERR_OK, L"abcbc"},
        {"a view", L"a", [](S s) { return s.insert(0, xyz, P_WHOLE_STRING); }, PERR_OK, L"xyza"},
    });
}

TEST(StringErase, TakesARangeOutAndRefusesOneThatEndsBehindTheText) {
    _expectEdits({
        {"in the middle", L"abcd", [](S s) { return s.erase(1, 2); }, PERR_OK, L"ad"},
        {"up to the end", L"abcd", [](S s) { return s.erase(2, 2); }, PERR_OK, L"ab"},
        {"one too many", L"ab", [](S s) { return s.erase(1, 2); }, PERR_INVALID_ARGUMENT, L"ab"},
        {"behind", L"ab", [](S s) { return s.erase(3, 0); }, PERR_INVALID_ARGUMENT, L"ab"},
    });
}

TEST(StringTrim, TakesWhiteSpaceOffBothEnds) {
    auto const trim = [](S s) { return s.trim(); };
    _expectEdits({
        {"both ends", L"\t ab\r\n", trim, PERR_OK, L"ab"},
        {"other white space", L"\v ab\f", trim, PERR_OK, L"\v ab\f"},
        {"white space alone", L"    ", trim, PERR_OK, L""},
        {"what moves, up to its first zero", L" a\0b"sv, trim, PERR_OK, L"a"},
        {"what stays, with its zeros", L"a\0b "sv, trim, PERR_OK, L"a\0b"sv},
    });
}

TEST(String, LosesAllWhiteSpaceByStripping) {
    PString text(L" a b\tc\r\n\vd", P_WHOLE_STRING);
    EXPECT_CODE(PERR_OK, text.stripall());
    EXPECT_TEXT(L"abc\vd", text);
}

TEST(String, ChangesEachOfACharacterByReplacing) {
    PString text(L"a/b//\0/", 7);
    EXPECT_CODE(PERR_OK, text.replace(L'/', L'x'));
    EXPECT_TEXT(L"axbxx\0x"sv, text);
}

TEST(StringFill, NeverShortensTheLength) {
    _expectEdits({
        {"fewer", L"abcd", [](S s) { return s.fill(L'x', 2); }, PERR_OK, L"xx\0d"sv},
        {"more", L"abcd", [](S s) { return s.fill(L'x', 5); }, PERR_OK, L"xxxxx"},
    });
}

TEST(StringCopy, IsANewArrayWithItsLengthOrNull) {
    unsigned long length = 77;
    EXPECT_EQ(nullptr, PString::dupPtr(L"abc", TOO_MANY, length));
    EXPECT_EQ(77U, length) << "without memory";
    std::unique_ptr<wchar_t[]> copy(PString::dupPtr(L"abc", 2, length));
    EXPECT_STREQ(L"ab", copy.get());
    EXPECT_EQ(2U, length);
    EXPECT_EQ(nullptr, PString::dupPtr(L"abc", 0, length));
    EXPECT_EQ(0U, length);
}
