#include <clocale>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <memory>
#include <random>
#include <vector>

#include <portinglayer/files.h>
#include <support/expect.h>
#include <support/scratch.h>

namespace {

constexpr unsigned SEED = 20240;
constexpr std::size_t SPARE = 8;  // zeros behind what a conversion may write

/// A character of any size, half of them where encodings change their ways.
wchar_t _randomCharacter(std::mt19937_64& random) {
    static constexpr wchar_t EDGES[] = L"\x7f\xa4\x7fe\x20ab\xd7fe\xdffe\xfffe\x10fffe";
    if (random() % 2 == 0) return EDGES[random() % 8] + static_cast<wchar_t>(random() % 4);
    return static_cast<wchar_t>(static_cast<std::uint32_t>(random()) >> random() % 32);
}

/// Mostly ASCII, as far as runs of it matter, with characters of the locale and of none.
std::wstring _randomText(std::mt19937_64& random) {
    std::wstring text(random() % 50, L' ');
    std::size_t const rarity = 2 + random() % 60;
    for (wchar_t& c : text)
        c = random() % rarity == 0 ? _randomCharacter(random) : L"\x1\taA0\\~\x7f"[random() % 8];
    return text;
}

/// Bytes of the locale, often with one that does not belong or without their end.
std::string _randomBytes(std::mt19937_64& random) {
    std::wstring const text = _randomText(random);
    std::string bytes(4 * text.size() + 1, '\0');
    (void)wcstombs(bytes.data(), text.c_str(), bytes.size());
    bytes.resize(strlen(bytes.c_str()));
    if (random() % 8 == 0) bytes = char(random() | 0xC0U) + std::string("\x80\x80\x80");
    if (random() % 3 == 0) bytes.insert(random() % (bytes.size() + 1), 1, char(random() | 1U));
    if (random() % 3 == 0) bytes.resize(random() % (bytes.size() + 1));
    return bytes;
}

/// Converts a text that may be read up to `readable` characters. What the C library converts stands
/// in front of zeros; where it fails or gives nothing, there is no array.
template <typename From, typename To>
void _expectAsTheCLibrary(std::size_t (*theirs)(To*, From const*, std::size_t),
                          To* (*ours)(From const*, unsigned long), std::basic_string<From> const& s,
                          std::size_t limit, std::size_t readable) {
    std::basic_string<To> expected(limit, To{});
    std::size_t const done = theirs(expected.data(), s.c_str(), limit);
    std::vector<From> const exact(s.c_str(), s.c_str() + readable);  // a sanitizer sees its end
    std::unique_ptr<To[]> const made(ours(exact.data(), limit));

    SCOPED_TRACE(testing::Message() << testing::PrintToString(s) << " up to " << limit);
    bool const nothing = done == 0 || done == static_cast<std::size_t>(-1);
    ASSERT_EQ(nothing, made == nullptr);
    if (nothing) return;
    expected.resize(done);
    expected.resize(limit + SPARE);
    ASSERT_EQ(expected, std::basic_string<To>(made.get(), expected.size()));
}

/// "C" and "C.UTF-8" come with the C library, others are made for the test.
class InLocale : public testing::TestWithParam<char const*> {
protected:
    void SetUp() override {
        std::string const name = GetParam();
        if (name[0] != 'C') _make(name);
        if (setlocale(LC_CTYPE, GetParam()) == nullptr)
            GTEST_SKIP() << "no locale " << name << " here, and none can be made";
    }
    void TearDown() override {
        setlocale(LC_CTYPE, "C");
        unsetenv("LOCPATH");
    }

    void _make(std::string const& name) const {
        std::string const place = "'" + scratch.path(name) + "'";
        std::string const make = "localedef -c -f " + name + " -i de_DE " + place;
        (void)system((make + " >/dev/null 2>&1").c_str());  // warns by its result
        setenv("LOCPATH", scratch.dir().c_str(), 1);
    }

    Scratch const scratch;
    std::mt19937_64 random{SEED};
};

using NamesInLocale = InLocale;

INSTANTIATE_TEST_SUITE_P(Conversion, InLocale,
                         testing::Values("C", "C.UTF-8", "ISO-8859-15", "EUC-JP"));
INSTANTIATE_TEST_SUITE_P(Conversion, NamesInLocale, testing::Values("DIN_66003"));

}  // namespace

TEST_P(InLocale, WideTextBecomesTheBytesOfTheCLibrary) {
    for (int round = 0; round < 30'000 && !HasFailure(); ++round) {
        std::wstring const text = _randomText(random);
        std::size_t const limit = random() % (4 * text.size() + 3);
        _expectAsTheCLibrary(wcstombs, PLiteral::pwchar2pchar, text, limit,
                             std::min(limit, text.size() + 1));
    }
}

TEST_P(InLocale, BytesBecomeTheWideTextOfTheCLibrary) {
    for (int round = 0; round < 30'000 && !HasFailure(); ++round) {
        std::string const bytes = _randomBytes(random);
        std::size_t const limit = random() % (bytes.size() + 2);
        bool const ascii =
            std::all_of(bytes.begin(), bytes.end(), [](signed char c) { return c > 0; });
        std::size_t const all = bytes.size() + 1;
        bool const exact = ascii && GetParam()[0] == 'C';  // only then are as many bytes read
        _expectAsTheCLibrary(mbstowcs, PLiteral::pchar2pwchar, bytes, limit,
                             exact ? std::min(limit, all) : all);
    }
}

TEST_P(NamesInLocale, ConvertAsTextsDo) {
    for (wchar_t c = L' '; c < 0x7F; ++c) {
        std::wstring const name = scratch.wpath("name-") + c;
        std::unique_ptr<char[]> const bytes(PLiteral(name.c_str()).ascii());
        if (c == L'/' || c == L'\\') continue;  // separators
        std::ofstream(bytes != nullptr ? bytes.get() : scratch.path("name-") + char(c));
        ASSERT_EQ(bytes != nullptr, PFile::exists(name.c_str())) << "character " << int(c);
    }
}

TEST(Conversion, EndsBeforeTheCharacterThatDoesNotFit) {
    struct {
        char const* what;
        wchar_t const* text;
        unsigned long n;
        char const* bytes;
    } const rows[] = {
        {"a part", L"abc", 2, "ab"},
        {"all", L"abc", P_WHOLE_STRING, "abc"},
        {"more than there is", L"abc", 9, "abc"},
        {"a character of two bytes at the end", L"a\u00e9", P_WHOLE_STRING, "a"},
        {"a character of two bytes", L"\u00e9", 1, nullptr},
        {"none of a text", L"abc", 0, nullptr},
        {"nothing", nullptr, 5, nullptr},
        {"an empty text", L"", P_WHOLE_STRING, nullptr},
        {"a text too long for memory", L"a", ~0UL, nullptr},
    };
    ASSERT_NE(nullptr, setlocale(LC_CTYPE, "C.UTF-8"));
    for (auto const& row : rows) {
        std::unique_ptr<char[]> const bytes(PLiteral::pwchar2pchar(row.text, row.n));
        EXPECT_STREQ(row.bytes, bytes.get()) << row.what;
    }
    setlocale(LC_CTYPE, "C");
}

TEST(Conversion, OfBytesMakesSoManyCharacters) {
    char const* const nothing = nullptr;
    EXPECT_EQ(nullptr, PLiteral::pchar2pwchar(nothing, 5));
    EXPECT_EQ(nullptr, PLiteral::pchar2pwchar("abc", 0));
    EXPECT_EQ(nullptr, PLiteral::pchar2pwchar("", P_WHOLE_STRING));
    EXPECT_EQ(nullptr, PLiteral::pchar2pwchar("a", ~0UL / 2));
    std::unique_ptr<wchar_t[]> text(PLiteral::pchar2pwchar("abc", 2));
    EXPECT_STREQ(L"ab", text.get());
    text.reset(PLiteral::pchar2pwchar("abc", P_WHOLE_STRING));
    EXPECT_STREQ(L"abc", text.get());
}

TEST(Conversion, OfALiteralIsANewArrayEachTime) {
    PLiteral const text(L"abc");
    std::unique_ptr<char[]> const one(text.ascii()), other(static_cast<char*>(text));
    EXPECT_STREQ("abc", one.get());
    EXPECT_STREQ("abc", other.get());
    EXPECT_NE(one.get(), other.get());
    EXPECT_EQ(nullptr, PLiteral().ascii());
}
