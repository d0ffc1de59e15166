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
constexpr wchar_t const* NO_TEXT = nullptr;
constexpr char const* NO_BYTES = nullptr;

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

class StringOfBytes : public testing::Test {
protected:
    void SetUp() override { ASSERT_NE(nullptr, setlocale(LC_CTYPE, "C.UTF-8")); }
    void TearDown() override { setlocale(LC_CTYPE, "C"); }
};

}  // namespace

TEST(String, CopiesSoManyCharacters) {
    EXPECT_TEXT(L"ab", PString(L"abc", 2));
    EXPECT_TEXT(L"abc", PString(L"abc", P_WHOLE_STRING));
    EXPECT_TEXT(L"a\0b"sv, PString(L"a\0b", 3));
    EXPECT_EQ(nullptr, PString(L"abc", 0).ptr());
    EXPECT_EQ(nullptr, PString(NO_TEXT, P_WHOLE_STRING).ptr());
    EXPECT_EQ(nullptr, PString().ptr());
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
    EXPECT_TEXT(L"", source);

    target = std::move(made);
    EXPECT_EQ(buffer, target.ptr());
    EXPECT_TEXT(L"abc", target);
    EXPECT_EQ(nullptr, made.ptr());
    EXPECT_TEXT(L"", made);

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
    EXPECT_EQ(nullptr, (target = NO_TEXT).ptr());
    EXPECT_TEXT(L"", target);
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

TEST(String, IsANullPointerWithoutLengthOnceCleared) {
    PString text(L"abc", 3);
    text.clear();
    EXPECT_EQ(nullptr, text.ptr());
    EXPECT_EQ(0U, text.len());
}

TEST(StringSet, TakesSoManyCharacters) {
    _expectEdits({
        {"a part", L"old", [](S s) { return s.set(L"abc", 2); }, PERR_OK, L"ab"},
        {"all", L"old", [](S s) { return s.set(L"abc", P_WHOLE_STRING); }, PERR_OK, L"abc"},
        {"its own", L"abc", [](S s) { return s.set(s.ptr() + 1, 2); }, PERR_OK, L"bc"},
        {"nothing", L"old", [](S s) { return s.set(NO_TEXT, P_WHOLE_STRING); }, PERR_OK, L""},
        {"too many", L"old", [](S s) { return s.set(L"a", TOO_MANY); }, PERR_NO_MEMORY, L""},
    });
}

TEST(StringSet, RefusesMoreOfAViewThanItHolds) {
    static PLiteral const abc(L"abc");
    _expectEdits({
        {"a part", L"old", [](S s) { return s.set(abc, 2); }, PERR_OK, L"ab"},
        {"just the length", L"old", [](S s) { return s.set(abc, 3); }, PERR_OK, L"abc"},
        {"one more", L"old", [](S s) { return s.set(abc, 4); }, PERR_INVALID_ARGUMENT, L"old"},
        {"all", L"old", [](S s) { return s.set(abc, P_WHOLE_STRING); }, PERR_OK, L"abc"},
        {"nothing", L"old", [](S s) { return s.set(abc, 0); }, PERR_OK, L""},
    });
}

TEST(StringCat, AppendsSoManyCharacters) {
    _expectEdits({
        {"a part", L"ab", [](S s) { return s.cat(L"cde", 2); }, PERR_OK, L"abcd"},
        {"all", L"ab", [](S s) { return s.cat(L"cde", P_WHOLE_STRING); }, PERR_OK, L"abcde"},
        {"a view", L"ab", [](S s) { return s.cat(PLiteral(L"cd")); }, PERR_OK, L"abcd"},
        {"its own", L"abc", [](S s) { return s.cat(s.ptr() + 1, 2); }, PERR_OK, L"abcbc"},
        {"none", L"ab", [](S s) { return s.cat(L"cde", 0); }, PERR_OK, L"ab"},
        {"nothing", L"ab", [](S s) { return s.cat(NO_TEXT, P_WHOLE_STRING); }, PERR_OK, L"ab"},
        {"to nothing", L"", [](S s) { return s.cat(L"c", 1); }, PERR_OK, L"c"},
        {"too many", L"ab", [](S s) { return s.cat(L"c", TOO_MANY); }, PERR_NO_MEMORY, L"ab"},
    });
}

TEST(StringCat, IsTheOperatorThatAppends) {
    PString text(L"a", 1);
    EXPECT_TEXT(L"abc", text += PLiteral(L"bc"));
    EXPECT_TEXT(L"abcd", text += L"d");
    EXPECT_TEXT(L"abcd", text += NO_TEXT);
    EXPECT_TEXT(L"abcdabcd", text += text);
}

TEST_F(StringOfBytes, HasTheLengthOfItsCharacters) {
    EXPECT_TEXT(L"\u00e9", PString("\u00e9", P_WHOLE_STRING));
    EXPECT_TEXT(L"ab", PString("abc", 2));
    EXPECT_TEXT(L"", PString("\xff", P_WHOLE_STRING)) << "cannot be converted";
    EXPECT_TEXT(L"", PString(NO_BYTES, 3));
}

TEST_F(StringOfBytes, CountsBytesWhereTheyAreAppendedOrSet) {
    _expectEdits({
        {"cat", L"a", [](S s) { return s.cat("\u00e9", 2); }, PERR_OK, L"a\u00e9\0"sv},
        {"cat to nothing", L"", [](S s) { return s.cat("\u00e9", 2); }, PERR_OK, L"\u00e9\0"sv},
        {"cat of all", L"a", [](S s) { return s.cat("bc", P_WHOLE_STRING); }, PERR_OK, L"abc"},
        {"cat that reads on", L"a", [](S s) { return s.cat("\u00e9z", 2); }, PERR_OK, L"a\u00e9z"},
        {"cat of none", L"a", [](S s) { return s.cat("x", 0); }, PERR_OK, L"a"},
        {"cat of nothing", L"a", [](S s) { return s.cat(NO_BYTES, 9); }, PERR_OK, L"a"},
        {"cat, unreadable", L"a", [](S s) { return s.cat("\xff", 1); }, PERR_NO_MEMORY, L"a"},
        {"set", L"a", [](S s) { return s.set("\u00e9", 2); }, PERR_OK, L"\u00e9\0"sv},
        {"set, unreadable", L"a", [](S s) { return s.set("\xff", 1); }, PERR_NO_MEMORY, L""},
    });
}

TEST(StringInsert, PutsCharactersInFrontOfAPosition) {
    static PLiteral const xyz(L"xyz");
    _expectEdits({
        {"at the front", L"abc", [](S s) { return s.insert(0, L"xyz", 2); }, PERR_OK, L"xyabc"},
        {"all", L"ab", [](S s) { return s.insert(1, L"xy", P_WHOLE_STRING); }, PERR_OK, L"axyb"},
        {"at the end", L"abc", [](S s) { return s.insert(3, L"x", 1); }, PERR_OK, L"abcx"},
        {"behind", L"a", [](S s) { return s.insert(2, L"x", 1); }, PERR_INVALID_ARGUMENT, L"a"},
        {"none behind", L"a", [](S s) { return s.insert(2, L"", 0); }, PERR_INVALID_ARGUMENT, L"a"},
        {"none", L"ab", [](S s) { return s.insert(1, L"x", 0); }, PERR_OK, L"ab"},
        {"nothing", L"ab", [](S s) { return s.insert(1, NO_TEXT, 9); }, PERR_OK, L"ab"},
        {"into nothing", L"", [](S s) { return s.insert(0, L"xyz", 2); }, PERR_OK, L"xy"},
        {"its own", L"abc", [](S s) { return s.insert(1, s.ptr() + 1, 2); }, PERR_OK, L"abcbc"},
        {"a view's part", L"ab", [](S s) { return s.insert(1, xyz, 2); }, PERR_OK, L"axyb"},
        {"a view", L"a", [](S s) { return s.insert(0, xyz, P_WHOLE_STRING); }, PERR_OK, L"xyza"},
        {"too many", L"a", [](S s) { return s.insert(0, L"x", TOO_MANY - 1); }, PERR_NO_MEMORY,
         L"a"},
    });
}

TEST(StringErase, TakesARangeOutAndRefusesOneThatEndsBehindTheText) {
    _expectEdits({
        {"in the middle", L"abcd", [](S s) { return s.erase(1, 2); }, PERR_OK, L"ad"},
        {"up to the end", L"abcd", [](S s) { return s.erase(2, 2); }, PERR_OK, L"ab"},
        {"none", L"abcd", [](S s) { return s.erase(4, 0); }, PERR_OK, L"abcd"},
        {"behind", L"ab", [](S s) { return s.erase(3, 0); }, PERR_INVALID_ARGUMENT, L"ab"},
        {"one too many", L"ab", [](S s) { return s.erase(1, 2); }, PERR_INVALID_ARGUMENT, L"ab"},
        {"too many", L"a", [](S s) { return s.erase(1, TOO_MANY); }, PERR_INVALID_ARGUMENT, L"a"},
        {"none of nothing", L"", [](S s) { return s.erase(0, 0); }, PERR_OK, L""},
        {"one of nothing", L"", [](S s) { return s.erase(0, 1); }, PERR_INVALID_ARGUMENT, L""},
    });
}

TEST(StringTrim, TakesWhiteSpaceOffBothEnds) {
    auto const trim = [](S s) { return s.trim(); };
    _expectEdits({
        {"both ends", L"\t ab\r\n", trim, PERR_OK, L"ab"},
        {"the front", L" ab", trim, PERR_OK, L"ab"},
        {"the end", L"a b ", trim, PERR_OK, L"a b"},
        {"other white space", L"\v ab\f", trim, PERR_OK, L"\v ab\f"},
        {"white space alone", L"    ", trim, PERR_OK, L""},
        {"what moves, up to its first zero", L" a\0b"sv, trim, PERR_OK, L"a"},
        {"what stays, with its zeros", L"a\0b "sv, trim, PERR_OK, L"a\0b"sv},
        {"no text", L"", trim, PERR_OK, L""},
    });
}

TEST(StringTrim, KeepsTheBufferAndErasingAllReleasesIt) {
    PString text(L"    ", 4), other(L"    ", 4);
    wchar_t const* const buffer = text.ptr();
    EXPECT_CODE(PERR_OK, text.trim());
    EXPECT_EQ(buffer, text.ptr());
    EXPECT_CODE(PERR_OK, other.erase(0, 4));
    EXPECT_EQ(nullptr, other.ptr());
}

TEST(StringStripall, TakesOutAllWhiteSpace) {
    auto const stripall = [](S s) { return s.stripall(); };
    _expectEdits({
        {"everywhere", L" a b\tc\r\n\vd", stripall, PERR_OK, L"abc\vd"},
        {"no text", L"", stripall, PERR_OK, L""},
    });
}

TEST(StringFill, NeverShortensTheLength) {
    _expectEdits({
        {"all", L"abcd", [](S s) { return s.fill(L'x'); }, PERR_OK, L"xxxx"},
        {"nothing", L"", [](S s) { return s.fill(L'x'); }, PERR_OK, L""},
        {"none", L"abcd", [](S s) { return s.fill(L'x', 0); }, PERR_OK, L"abcd"},
        {"fewer", L"abcd", [](S s) { return s.fill(L'x', 2); }, PERR_OK, L"xx\0d"sv},
        {"as many", L"abcd", [](S s) { return s.fill(L'x', 4); }, PERR_OK, L"xxxx"},
        {"more", L"abcd", [](S s) { return s.fill(L'x', 6); }, PERR_OK, L"xxxxxx"},
        {"too many", L"ab", [](S s) { return s.fill(L'x', TOO_MANY); }, PERR_NO_MEMORY, L"ab"},
    });
}

TEST(StringReplace, ChangesEachOfACharacterWithinTheLength) {
    _expectEdits({
        {"one", L"a/b//\0/"sv, [](S s) { return s.replace(L'/', L'x'); }, PERR_OK, L"axbxx\0x"sv},
        {"zeros", L"a\0b"sv, [](S s) { return s.replace(L'\0', L'x'); }, PERR_OK, L"axb"},
        {"in nothing", L"", [](S s) { return s.replace(L'a', L'b'); }, PERR_OK, L""},
    });
}

TEST(StringCopy, IsANewArrayWithItsLengthOrNull) {
    unsigned long length = 77;
    EXPECT_EQ(nullptr, PString::dupPtr(L"abc", TOO_MANY, length));
    EXPECT_EQ(77U, length) << "without memory";
    EXPECT_EQ(nullptr, PString::dupPtr(NO_TEXT, 3, length));
    EXPECT_EQ(0U, length);

    std::unique_ptr<wchar_t[]> copy(PString::dupPtr(L"abc", 2, length));
    EXPECT_STREQ(L"ab", copy.get());
    EXPECT_EQ(2U, length);
    EXPECT_EQ(nullptr, PString::dupPtr(L"abc", 0, length));
    EXPECT_EQ(0U, length);
    copy.reset(PString::dupPtr(L"", P_WHOLE_STRING, length));
    EXPECT_STREQ(L"", copy.get());
}
