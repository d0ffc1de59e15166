#include <climits>
#include <clocale>
#include <cstdarg>
#include <memory>
#include <utility>

#include <text/models.h>

using namespace std::string_literals;

namespace {

std::wstring _upper(std::wstring text) {
    for (wchar_t& c : text) c = PLiteral::toupper(c);
    return text;
}

/// A string without a buffer differs from one that is empty.
std::wstring _shown(PLiteral const& s) {
    return s.ptr() == nullptr ? L"none" : std::wstring(s.ptr(), s.len());
}

int _format(PString* out, PLiteral const* format, ...) {
    va_list args;
    va_start(args, format);
    int const code = PUtils::vformatString(*out, *format, args);
    va_end(args);
    return code;
}

}  // namespace

TEST(Literal, FindsWhatTheStandardLibraryFinds) {
    setlocale(LC_CTYPE, "C.UTF-8");
    for (int i = 0; i < 60000; ++i) {
        std::wstring const letters =
            i % 4 == 0 ? L"abAB\u00e9\u00c9\u0434\U00010428\u00e1" : L"abA";
        std::wstring const text = pick(letters, i % 5 == 0 ? 90 : 12);
        std::wstring const part = text.substr(dice() % (text.size() + 1), dice() % 80);
        std::wstring const what = i % 3 == 0 ? part : i % 3 == 1 ? _upper(part) : pick(letters, 3);
        bool const fold = dice() % 2 == 0, fromEnd = dice() % 2 == 0;
        std::wstring const a = fold ? _upper(text) : text, b = fold ? _upper(what) : what;
        bool const never = b.empty() && !a.empty();  // nothing is found in nothing only
        size_t const first = never ? a.npos : a.find(b), last = never ? a.npos : a.rfind(b);

        PLiteral const literal(text.c_str()), sought(what.c_str());
        unsigned long pos = a.npos, n = i % 7 == 0 ? 1 : what.size();
        int const code = what.size() == 1 && i % 2 == 0 ? literal.chr(what[0], pos, fromEnd, fold)
                                                        : literal.str(sought, pos, fromEnd, fold);
        ASSERT_EQ(pos, fromEnd ? last : first) << what << " in " << text;
        ASSERT_EQ(code, pos == a.npos ? PERR_NOT_FOUND : PERR_OK) << what << " in " << text;
        ASSERT_EQ(literal.startsWith(what.c_str(), 1, fold), first == 0) << what << " in " << text;
        ASSERT_EQ(literal.endsWith(what.c_str(), n, fold), last != a.npos && last + n == a.size())
            << what << " in " << text;
    }
    setlocale(LC_CTYPE, "C");
}

TEST(Literal, ComparesByLengthBeforeCharacters) {
    wchar_t const* const ascending[] = {nullptr, L"b", L"aa", L"abc", L"abd", L"abcd"};
    for (int i = 0; i < 36; ++i) {
        PLiteral const a(ascending[i / 6]), b(ascending[i % 6]);
        EXPECT_EQ(compared(a, b), compared(i / 6, i % 6)) << i;
        EXPECT_EQ(compared(a, ascending[i % 6]), compared(i / 6, i % 6)) << i;
    }
    EXPECT_EQ(PLiteral(L"zz").cmp(L"aaa", P_WHOLE_STRING), -1);
}

TEST(Literal, AssigningTheSamePointerKeepsTheOldLength) {
    wchar_t buffer[] = L"abc";
    PLiteral literal;
    literal = PLiteral(buffer);
    buffer[1] = L'\0';
    literal = buffer;
    EXPECT_EQ(literal.len(), 3U);
}

TEST(String, BecomesThis) {
    setlocale(LC_CTYPE, "C.UTF-8");
    struct {
        std::wstring expected;
        int code;
        int (*edit)(PString& abcd);
    } const rows[] = {
        // what stands in its own buffer
        {L"abcdbc", PERR_OK, [](PString& s) { return s.cat(s.ptr() + 1, 2); }},
        {L"acdbcd", PERR_OK, [](PString& s) { return s.insert(1, s.ptr() + 2, 2); }},
        {L"bc", PERR_OK, [](PString& s) { return s.set(s.ptr() + 1, 2); }},
        {L"cd", PERR_OK, [](PString& s) { return (s = s.ptr() + 2).trim(); }},
        {L"abcd", PERR_OK, [](PString& s) { return (s = static_cast<PLiteral&>(s)).trim(); }},
        {L"42/abcd", PERR_OK,
         [](PString& s) { return PUtils::pformatString(s, L"%d/%ls", 42, s.ptr()); }},
        {L"", PERR_OK, [](PString& s) { return _format(&s, &s); }},
        // what is refused
        {L"abcd", PERR_INVALID_ARGUMENT, [](PString& s) { return s.insert(5, nullptr, 0); }},
        {L"abcd", PERR_INVALID_ARGUMENT, [](PString& s) { return s.erase(2, ULONG_MAX); }},
        {L"abcd", PERR_INVALID_ARGUMENT, [](PString& s) { return s.set(PLiteral(L"ab"), 3); }},
        {L"none", PERR_INVALID_ARGUMENT,
         [](PString& s) { return PUtils::parseLink(L"#/x", s, s); }},
        // what no memory holds
        {L"abcd", PERR_NO_MEMORY, [](PString& s) { return s.cat(L"x", ULONG_MAX); }},
        {L"abcd", PERR_NO_MEMORY, [](PString& s) { return s.insert(1, L"x", ULONG_MAX - 3); }},
        {L"abcd", PERR_NO_MEMORY, [](PString& s) { return s.fill(L'x', 1UL << 62U); }},
        {L"abcd", PERR_NO_MEMORY, [](PString& s) { return s.cat("x", ULONG_MAX - 7); }},
        {L"none", PERR_NO_MEMORY, [](PString& s) { return s.set(L"x", ULONG_MAX); }},
        // what the locale does not know
        {L"abcd", PERR_NO_MEMORY, [](PString& s) { return s.cat("\xff", 1); }},
        {L"none", PERR_NO_MEMORY, [](PString& s) { return s.set("\xff", 1); }},
        // what counts its bytes
        {L"abcd\u00e9\0"s, PERR_OK, [](PString& s) { return s.cat("\u00e9", P_WHOLE_STRING); }},
        {L"\u00e9\0"s, PERR_OK, [](PString& s) { return s.set("\u00e9", 2); }},
        {L"\u00e9", PERR_OK, [](PString& s) { return (s = PString("\u00e9", 2)).trim(); }},
        // white space
        {L"a \vb", PERR_OK, [](PString& s) { return (s = L"\t a \vb\r\n").trim(); }},
        {L"a\vb", PERR_OK, [](PString& s) { return (s = L"\t a \vb\r\n").stripall(); }},
        {L"", PERR_OK, [](PString& s) { return (s = L" \t\r\n").trim(); }},
        {L"", PERR_OK, [](PString& s) { return (s = L"").trim(); }},
        // the rest
        {L"abcd", PERR_OK, [](PString& s) { return (s = PString(std::move(s))).trim(); }},
        {L"none", PERR_OK, [](PString& s) { return s.erase(0, 4); }},
        {L"ad", PERR_OK, [](PString& s) { return s.erase(1, 2); }},
        {L"xx\0d"s, PERR_OK, [](PString& s) { return s.fill(L'x', 2); }},
        {L"xxxxx", PERR_OK, [](PString& s) { return s.fill(L'x', 5); }},
        {L"xxxx", PERR_OK, [](PString& s) { return s.fill(L'x'); }},
        {L"abxcd", PERR_OK, [](PString& s) { return s.insert(2, PLiteral(L"x"), P_WHOLE_STRING); }},
        {L"a/b/", PERR_OK, [](PString& s) { return PUtils::fixFileSeparator(s = L"a\\b/"); }},
    };
    for (auto const& [expected, code, edit] : rows) {
        PString text(L"abcd", 4);
        EXPECT_EQ(edit(text), code) << expected;
        EXPECT_EQ(_shown(text), expected);
        EXPECT_TRUE(text.ptr() == nullptr || text.ptr()[text.len()] == L'\0') << expected;
    }
    setlocale(LC_CTYPE, "C");
}

TEST(Parts, StandBeforeAndBehindTheFirstSeparatorTrimmed) {
    for (int i = 0; i < 20000; ++i) {
        std::wstring const text = pick(L"ab =\t\r\n=\v\u00a0\0"s, 12);
        wchar_t const separator = i % 9 == 0 ? L'\0' : L'=';
        wchar_t const* const mark = wcschr(text.c_str(), separator);  // up to a zero character
        size_t const at = mark == nullptr ? text.size() : static_cast<size_t>(mark - text.c_str());
        bool const found = at < text.size();
        PString left(text.data(), at), right(text.data() + at + found, text.size() - at - found);
        PString source(text.data(), text.size()), token, key(source), value(L"old", 3);
        bool const taken = PLiteral::getNextToken(source, token, separator) == PERR_OK;
        ASSERT_EQ(taken, !text.empty());
        ASSERT_EQ(_shown(source), _shown(right)) << text;
        ASSERT_EQ(left.trim() + right.trim(), PERR_OK);
        ASSERT_EQ(_shown(token), _shown(left)) << text;
        ASSERT_EQ(PUtils::getKeyValue(key, key, value, separator),
                  found ? PERR_OK : PERR_NOT_FOUND);
        ASSERT_EQ(_shown(key), found || text.empty() ? _shown(left) : text);
        ASSERT_EQ(_shown(value), found ? _shown(right) : L"old") << text;
    }
}

TEST(Arguments, FirstBecomesAPairUnlessItIsOne) {
    char program[] = "/bin/x", pair[] = "p=q", bad[] = "\xff", *all[] = {program, pair, bad};
    wchar_t const* const expected[] = {L"process.name=/bin/x|p=q|none|", L"p=q|none|",
                                       L"process.name=|", L""};
    for (int first = 0; first <= 3; ++first) {
        PString* out = nullptr;
        unsigned long count = 7;
        ASSERT_EQ(PUtils::convertArgs(3 - first, all + first, out, count, L'='), PERR_OK);
        std::unique_ptr<PString[]> const owner(out);
        std::wstring shown;
        for (unsigned long i = 0; i < count; ++i) shown += _shown(out[i]) + L"|";
        EXPECT_EQ(shown, expected[first]);
        EXPECT_NE(out, nullptr) << first;
    }
}

// Around the room on the stack and the limit of all room, and where a conversion fails.
TEST(Formatting, GivesWhatOnePassWithFixedRoomGives) {
    PLiteral const format(L"%ls%s|");
    for (size_t length : {0UL, 254UL, 255UL, 256UL, 2052UL, 2053UL, 2054UL, 9000UL})
        for (char const* bytes : {"", "x", "\xff"}) {
            std::wstring const text(length, L'x');
            std::wstring room(format.len() + 2049, L'\0');
            (void)swprintf(room.data(), room.size() - 1, format, text.c_str(), bytes);
            PString out(L"old", 3);
            ASSERT_EQ(_format(&out, &format, text.c_str(), bytes), PERR_OK);
            ASSERT_STREQ(out.ptr(), room.c_str()) << length << bytes;
        }
}
