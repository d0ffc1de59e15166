#include <cerrno>
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
        std::wstring const letters = i % 4 == 0 ? L"abA\u00e9\u00c9\U00010428\u00e1" : L"abA";
        std::wstring const text = pick(letters, i % 5 == 0 ? 90 : 12);
        std::wstring const part = text.substr(dice() % (text.size() + 1), dice() % 80);
        std::wstring const what = i % 3 == 0 ? part : i % 3 == 1 ? _upper(part) : pick(letters, 3);
        SCOPED_TRACE(testing::Message() << what << " in " << text);
        bool const fold = dice() % 2 == 0, fromEnd = dice() % 2 == 0,
                   never = what.empty() && !text.empty();
        std::wstring const a = fold ? _upper(text) : text, b = fold ? _upper(what) : what;
        size_t const first = never ? a.npos : a.find(b), last = never ? a.npos : a.rfind(b);

        PLiteral const literal(text.c_str()), sought(what.c_str());
        unsigned long pos = a.npos, n = dice() % 8 == 0 ? 1 : what.size();
        int const code = n == 1 && what.size() == 1 && dice() % 2 == 0
                             ? literal.chr(what[0], pos, fromEnd, fold)
                             : literal.str(sought, pos, fromEnd, fold);
        ASSERT_EQ(pos, fromEnd ? last : first);
        ASSERT_EQ(code, pos == a.npos ? PERR_NOT_FOUND : PERR_OK);
        ASSERT_EQ(literal.startsWith(what.c_str(), 1, fold), first == 0);
        ASSERT_EQ(literal.endsWith(sought, fold), last != a.npos && last + b.size() == a.size());
        ASSERT_EQ(literal.endsWith(what.c_str(), n, fold), last != a.npos && last + n == a.size());
    }
}

TEST(Literal, ComparesByLengthBeforeCharactersAndMeasuresAPointerOnce) {
    wchar_t const* const ascending[] = {nullptr, L"b", L"aa", L"abc", L"abd", L"abcd"};
    for (int i = 0; i < 36; ++i) {
        PLiteral const a(ascending[i / 6]), b(ascending[i % 6]);
        EXPECT_EQ(compared(a, b), compared(i / 6, i % 6)) << i;
        EXPECT_EQ(compared(a, ascending[i % 6]), compared(i / 6, i % 6)) << i;
    }
    wchar_t buffer[] = L"abc";
    PLiteral literal;
    (literal = PLiteral(L"x")) = buffer;
    buffer[1] = L'\0';
    EXPECT_EQ((literal = buffer).cmp(L"ab", P_WHOLE_STRING), 1) << "the old length stays";
}

TEST(String, HoldsThisAfterEachEdit) {
    setlocale(LC_CTYPE, "C.UTF-8");
    PString s(L"\t a \vb\r\n", P_WHOLE_STRING);
    EXPECT_EQ(after(s.trim(), s), L"0 a \vb");
    EXPECT_EQ(after(s.stripall(), s), L"0 a\vb");
    EXPECT_EQ(after(s.insert(1, PLiteral(L"\t\r"), P_WHOLE_STRING), s), L"0 a\t\r\vb");
    EXPECT_EQ(after(s.erase(3, 2), s), L"0 a\t\r");
    EXPECT_EQ(after(s.fill(L' '), s), L"0    ");
    EXPECT_EQ(after(s.trim(), s), L"0 ") << "keeps the buffer";
    EXPECT_EQ(after(s.fill(L'x', 4), s), L"0 xxxx");
    EXPECT_EQ(after(s.fill(L'y', 2), s), L"0 yy\0x"s) << "keeps the length";
    EXPECT_EQ(after(s.erase(0, 4), s), L"0 none");
    EXPECT_EQ(after(0, s = L""), L"0 ");
    EXPECT_EQ(after(s.set("\u00e9", P_WHOLE_STRING), s), L"0 \u00e9\0"s) << "bytes are counted";
    EXPECT_EQ(after(s.cat("\u00e9", 2), s), L"0 \u00e9\0\u00e9\0"s);
    EXPECT_EQ(after(0, s = PString("\u00e9", 2)), L"0 \u00e9");
    EXPECT_EQ(after(PUtils::fixFileSeparator(s = L"a\\b/\\"), s), L"0 a/b//");

    // From its own buffer.
    EXPECT_EQ(after(s.cat(s.ptr() + 1, 2), s), L"0 a/b///b");
    EXPECT_EQ(after(s.insert(1, s.ptr() + 2, 2), s), L"0 ab//b///b");
    EXPECT_EQ(after(s.set(s.ptr() + 1, 4), s), L"0 b//b");
    EXPECT_EQ(after(0, s = s.ptr() + 1), L"0 //b");
    EXPECT_EQ(after(0, (s = std::as_const(s)) = static_cast<PLiteral&>(s)), L"0 //b");
    EXPECT_EQ(after(0, s = PString(std::move(s))), L"0 //b");
    EXPECT_EQ(after(PUtils::fixExecFileExtension((s += L"x") += PLiteral(L"y")), s), L"0 //bxy");
    EXPECT_EQ(after(s.erase(3, 2), s), L"0 //b");
    EXPECT_EQ(after(PUtils::pformatString(s, L"%d%ls", 42, s.ptr()), s), L"0 42//b");

    std::unique_ptr<char[]> const narrow(static_cast<char*>(s));
    EXPECT_STREQ(narrow.get(), "42//b");

    // Refused.
    EXPECT_EQ(after(s.insert(7, nullptr, 0), s), L"-502 42//b");
    EXPECT_EQ(after(s.erase(2, ULONG_MAX), s), L"-502 42//b");
    EXPECT_EQ(after(s.set(PLiteral(L"ab"), 3), s), L"-502 42//b");
    EXPECT_EQ(after(s.insert(1, L"x", ULONG_MAX - 3), s), L"-501 42//b") << "the sum wraps";
    EXPECT_EQ(after(s.fill(L'x', 1UL << 62U), s), L"-501 42//b");
    EXPECT_EQ(after(s.cat("\xff", 1), s), L"-501 42//b");
    EXPECT_EQ(after(s.set(s.ptr(), ULONG_MAX), s), L"-501 none");
    EXPECT_EQ(after((s = L"a").set("\xff", 1), s), L"-501 none");
    EXPECT_EQ(after(PUtils::parseLink(L"#/x", s = L"a", s), s), L"-502 none");
    EXPECT_EQ(after(_format(&s, &(s = L"a")), s), L"0 ") << "emptied before it is read";
}

TEST(Parts, StandBeforeAndBehindTheFirstSeparatorTrimmed) {
    for (int i = 0; i < 20000; ++i) {
        std::wstring const text = pick(L"ab =\t\r\n=\v\u00a0\0"s, 12);
        wchar_t const separator = i % 9 == 0 ? L'\0' : L'=';
        wchar_t const* const mark = wcschr(text.c_str(), separator);  // up to a zero character
        size_t const at = mark == nullptr ? text.size() : static_cast<size_t>(mark - text.c_str());
        bool const found = at < text.size();
        PString const whole(text.data(), text.size()), old(L"old", 3);
        PString left(text.data(), at), right(text.data() + at + found, text.size() - at - found);
        PString source(whole), token, key(whole), value(old);
        ASSERT_EQ(after(PLiteral::getNextToken(source, token, separator), source),
                  after(text.empty() ? PERR_TOKEN : PERR_OK, right));
        ASSERT_EQ(after(PERR_OK, token), after(left.trim(), left)) << text;
        ASSERT_EQ(after(PUtils::getKeyValue(key, key, value, separator), key),
                  after(found ? PERR_OK : PERR_NOT_FOUND, found ? left : whole));
        ASSERT_EQ(after(PERR_OK, value), after(right.trim(), found ? right : old)) << text;
    }
}

TEST(Arguments, FirstBecomesAPairUnlessItIsOne) {
    char program[] = "/bin/x", pair[] = "p=q", bad[] = "\xff", *all[] = {program, pair, bad};
    std::wstring const expected[] = {L"0 process.name=/bin/x1 p=q2 none", L"0 p=q1 none",
                                     L"0 process.name=", L""};
    for (int first = 0; first <= 3; ++first) {
        PString* out = nullptr;
        unsigned long count = 7;
        ASSERT_EQ(PUtils::convertArgs(3 - first, all + first, out, count, L'='), PERR_OK);
        std::wstring shown = out == nullptr ? L"no list" : L"";
        for (unsigned long i = 0; i < count; ++i) shown += after(static_cast<int>(i), out[i]);
        EXPECT_EQ(shown, expected[first]);
        delete[] out;
    }
}

// Around the room on the stack and the limit of all room, and where a conversion fails.
TEST(Formatting, GivesWhatOnePassWithFixedRoomGives) {
    PLiteral const format(L"%m%ls%s|");
    for (size_t length : {0UL, 254UL, 255UL, 256UL, 2052UL, 2053UL, 2054UL, 9000UL})
        for (char const* bytes : {"", "x", "\xff"}) {
            std::wstring const text(length, L'x');
            std::wstring room(format.len() + 2049, L'\0');
            errno = ENOENT;
            (void)swprintf(room.data(), room.size() - 1, format, text.c_str(), bytes);
            PString out(L"old", 3);
            errno = ENOENT;
            ASSERT_EQ(_format(&out, &format, text.c_str(), bytes), PERR_OK);
            ASSERT_STREQ(out.ptr(), room.c_str()) << length << bytes;
        }
    std::wstring const writable = L"%2$d%3$n";
    PLiteral const unusual(writable.c_str());
    PString out;
    int count = 0;
    EXPECT_EQ(_format(&out, &unusual, 1, 2, &count), PERR_OK);
    EXPECT_TRUE(out == L"2" && count == 1) << "as without checks of formats";
}
