#include <climits>
#include <clocale>
#include <memory>
#include <utility>

#include <support/expect.h>

using namespace std::string_view_literals;

namespace {

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
        EXPECT_EQ(L'\0', text.ptr()[text.len()]) << "the terminator";
    }
}

}  // namespace

TEST(String, OwnsACopyOfSoManyCharacters) {
    EXPECT_TEXT(L"abc", PString(L"abc", P_WHOLE_STRING));
    EXPECT_EQ(nullptr, PString(L"abc", 0).ptr());
    PString original(L"abcd", 3);
    PString const copy(original);
    EXPECT_CODE(PERR_OK, original.fill(L'x'));
    EXPECT_STREQ(L"abc", copy.ptr());
}

TEST(String, MovesItsBufferAndBecomesEmpty) {
    PString source(L"abc", 3), target(L"old", 3);
    wchar_t const* const buffer = source.ptr();
    PString made(std::move(source));
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
    EXPECT_EQ(nullptr, (target = PLiteral().ptr()).ptr());
    EXPECT_EQ(0U, target.len());
    EXPECT_NE(nullptr, (target = L"").ptr()) << "an empty text has a buffer";
    wchar_t const* const text = L"xyz";
    static_cast<PLiteral&>(target) = text;
    EXPECT_TEXT(L"xyz", target) << "assigned through its base";
    EXPECT_NE(text, target.ptr());
}

TEST(String, TakesCharactersByTheirCountFromOutsideAndFromItself) {
    static PLiteral const abc(L"abc");
    _expectEdits({
        {"set a part", L"old", [](S s) { return s.set(L"abc", 2); }, PERR_OK, L"ab"},
        {"set its own", L"abc", [](S s) { return s.set(s.ptr() + 1, 2); }, PERR_OK, L"bc"},
        {"too much", L"a", [](S s) { return s.set(abc, 4); }, PERR_INVALID_ARGUMENT, L"a"},
        {"set a view", L"", [](S s) { return s.set(abc, P_WHOLE_STRING); }, PERR_OK, L"abc"},
        {"cat a part", L"ab", [](S s) { return s.cat(L"cde", 2); }, PERR_OK, L"abcd"},
        {"cat its own", L"abc", [](S s) { return s.cat(s.ptr() + 1, 2); }, PERR_OK, L"abcbc"},
        {"insert at the end", L"ab", [](S s) { return s.insert(2, L"x", 1); }, PERR_OK, L"abx"},
        {"behind", L"a", [](S s) { return s.insert(2, L"x", 1); }, PERR_INVALID_ARGUMENT, L"a"},
        {"insert its own", L"ab", [](S s) { return s.insert(1, s.ptr() + 1, 1); }, PERR_OK, L"abb"},
        {"a view", L"x", [](S s) { return s.insert(0, abc, P_WHOLE_STRING); }, PERR_OK, L"abcx"},
    });
    PString text(L"a", 1);
    EXPECT_TEXT(L"ab", text += L"b");
    EXPECT_TEXT(L"abab", text += text);
}

TEST(String, LosesOrChangesCharactersInPlace) {
    _expectEdits({
        {"erase in the middle", L"abcd", [](S s) { return s.erase(1, 2); }, PERR_OK, L"ad"},
        {"erase to the end", L"abcd", [](S s) { return s.erase(2, 2); }, PERR_OK, L"ab"},
        {"one too many", L"ab", [](S s) { return s.erase(1, 2); }, PERR_INVALID_ARGUMENT, L"ab"},
        {"behind", L"ab", [](S s) { return s.erase(3, 0); }, PERR_INVALID_ARGUMENT, L"ab"},
        {"trim", L"\t ab\r\n", [](S s) { return s.trim(); }, PERR_OK, L"ab"},
        {"trim others", L"\v ab\f", [](S s) { return s.trim(); }, PERR_OK, L"\v ab\f"},
        {"trim to nothing", L"    ", [](S s) { return s.trim(); }, PERR_OK, L""},
        {"trim to a zero", L" a\0b"sv, [](S s) { return s.trim(); }, PERR_OK, L"a"},
        {"trim behind zeros", L"a\0b "sv, [](S s) { return s.trim(); }, PERR_OK, L"a\0b"sv},
        {"strip", L" a b\tc\r\n\vd", [](S s) { return s.stripall(); }, PERR_OK, L"abc\vd"},
        {"replace", L"a//\0/"sv, [](S s) { return s.replace(L'/', L'x'); }, PERR_OK, L"axx\0x"sv},
        {"fill fewer", L"abcd", [](S s) { return s.fill(L'x', 2); }, PERR_OK, L"xx\0d"sv},
        {"fill more", L"abcd", [](S s) { return s.fill(L'x', 5); }, PERR_OK, L"xxxxx"},
    });
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
}

TEST(StringCopy, IsANewArrayWithItsLengthOrNull) {
    unsigned long length = 77;
    EXPECT_EQ(nullptr, PString::dupPtr(L"abc", ULONG_MAX, length));
    EXPECT_EQ(77U, length) << "without memory";
    std::unique_ptr<wchar_t[]> copy(PString::dupPtr(L"abc", 2, length));
    EXPECT_STREQ(L"ab", copy.get());
    EXPECT_EQ(2U, length);
    EXPECT_EQ(nullptr, PString::dupPtr(L"abc", 0, length));
    EXPECT_EQ(0U, length);
}
