#include <clocale>
#include <cstring>
#include <memory>
#include <random>

#include <support/expect.h>
#include <support/locales.h>

namespace {

constexpr std::size_t SPARE = 8;  // zeros behind what a conversion may write

std::wstring const CHARACTERS[] = {L"\x80",   L"\xa4",   L"\xe9",   L"\x7ff",   L"\x800",
                                   L"\x3042", L"\xd800", L"\xffff", L"\x10000", L"\x110000"};
std::string const BYTES[] = {"\xc3\xa9", "\xe3\x81\x82", "\xf0\x90\x80\x80", "\xa4\xa2",
                             "\xff",     "\xe3\x81",     "\xed\xa0\x80"};

/// Mostly ASCII, as far as runs of it matter, with pieces that belong to a locale or to none.
template <typename C, std::size_t COUNT>
std::basic_string<C> _randomText(std::mt19937_64& random,
                                 std::basic_string<C> const (&pieces)[COUNT]) {
    std::basic_string<C> text;
    std::size_t const rarity = 2 + random() % 60;
    for (auto left = random() % 50; left > 0; --left) {
        text += C("\x01\taA0\\~\x7f"[random() % 8]);
        if (random() % rarity == 0) text += pieces[random() % COUNT];
    }
    return text;
}

/// What the C library converts stands in front of zeros; where it fails or gives nothing, there is
/// no array.
template <typename From, typename To>
void _expectAsTheCLibrary(std::size_t (*theirs)(To*, From const*, std::size_t),
                          To* (*ours)(From const*, unsigned long), std::basic_string<From> const& s,
                          std::size_t limit) {
    std::basic_string<To> expected(limit, To{});
    std::size_t const done = theirs(expected.data(), s.c_str(), limit);
    std::unique_ptr<To[]> const made(ours(s.c_str(), limit));

    SCOPED_TRACE(testing::Message() << testing::PrintToString(s) << " up to " << limit);
    bool const nothing = done == 0 || done == static_cast<std::size_t>(-1);
    ASSERT_EQ(nothing, made == nullptr);
    if (nothing) return;
    expected.resize(done);
    expected.resize(limit + SPARE);
    ASSERT_EQ(expected, std::basic_string<To>(made.get(), expected.size()));
}

}  // namespace

TEST(Conversion, GivesWhatTheCLibraryGives) {
    char const* const locales[] = {"C", "C.UTF-8", "EUC-JP"};
    MadeLocale const japanese("EUC-JP");
    std::mt19937_64 random(20240);
    for (int round = 0; round < 90'000 && !HasFailure(); ++round) {
        setlocale(LC_CTYPE, locales[round % 3]);
        std::wstring const text = _randomText(random, CHARACTERS);
        std::string const bytes = _randomText(random, BYTES);
        _expectAsTheCLibrary(wcstombs, PLiteral::pwchar2pchar, text, random() % 200);
        _expectAsTheCLibrary(mbstowcs, PLiteral::pchar2pwchar, bytes, random() % 60);
    }
}

TEST(Conversion, IsANewArrayThatEndsBeforeTheCharacterThatDoesNotFitOrNull) {
    setlocale(LC_CTYPE, "C.UTF-8");
    PLiteral const text(L"a\u00e9");
    std::unique_ptr<char[]> const one(text.ascii()), other(static_cast<char*>(text));
    EXPECT_STREQ("a", one.get());
    EXPECT_STREQ("a", other.get());
    EXPECT_EQ(nullptr, PLiteral::pwchar2pchar(L"a", ~0UL)) << "without memory";
}
