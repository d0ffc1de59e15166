#include <clocale>
#include <cstring>
#include <fstream>
#include <memory>
#include <random>

#include <portinglayer/files.h>
#include <support/expect.h>
#include <support/locales.h>

namespace {

constexpr std::size_t SPARE = 8;  // zeros behind what a conversion may write

/// Mostly ASCII, as far as runs of it matter, with characters of the locale and of none.
std::wstring _randomText(std::mt19937_64& random) {
    static constexpr wchar_t RARE[] = L"\x80\xa4\xe9\x7ff\x800\x3042\xd800\xffff\x10000\x110000";
    std::wstring text(random() % 50, L' ');
    std::size_t const rarity = 2 + random() % 60;
    for (wchar_t& c : text)
        c = random() % rarity == 0 ? RARE[random() % 10] : L"\x1\taA0\\~\x7f"[random() % 8];
    return text;
}

/// Bytes of the locale, often with one that does not belong or without their end.
std::string _randomBytes(std::mt19937_64& random) {
    std::wstring const text = _randomText(random);
    std::string bytes(4 * text.size() + 1, '\0');
    (void)wcstombs(bytes.data(), text.c_str(), bytes.size());
    bytes.resize(strlen(bytes.c_str()));
    if (random() % 3 == 0) bytes.insert(random() % (bytes.size() + 1), 1, char(random() | 1U));
    if (random() % 3 == 0) bytes.resize(random() % (bytes.size() + 1));
    return bytes;
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

void _expectConversionsOfTheCLibrary() {
    std::mt19937_64 random(20240);
    for (int round = 0; round < 30'000 && !testing::Test::HasFailure(); ++round) {
        std::wstring const text = _randomText(random);
        std::string const bytes = _randomBytes(random);
        _expectAsTheCLibrary(wcstombs, PLiteral::pwchar2pchar, text, random() % 200);
        _expectAsTheCLibrary(mbstowcs, PLiteral::pchar2pwchar, bytes, random() % 60);
    }
}

}  // namespace

TEST(Conversion, GivesWhatTheCLibraryGives) {
    _expectConversionsOfTheCLibrary();
    setlocale(LC_CTYPE, "C.UTF-8");
    _expectConversionsOfTheCLibrary();
    MadeLocale const japanese("EUC-JP");
    _expectConversionsOfTheCLibrary();
}

TEST(Conversion, IsTheSameOfNamesAndTextsInANationalCodeset) {
    MadeLocale const german("DIN_66003");
    Scratch const scratch;
    for (wchar_t const c : {L'a', L'[', L'~', L'\u00e4'}) {
        std::wstring const name = scratch.wpath("name-") + c;
        std::unique_ptr<char[]> const bytes(PLiteral(name.c_str()).ascii());
        std::ofstream(bytes != nullptr ? bytes.get() : scratch.path("name-") + char(c));
        EXPECT_EQ(bytes != nullptr, PFile::exists(name.c_str())) << "character " << int(c);
    }
}

TEST(Conversion, OfALiteralIsANewArrayThatEndsBeforeTheCharacterThatDoesNotFit) {
    setlocale(LC_CTYPE, "C.UTF-8");
    PLiteral const text(L"a\u00e9");
    std::unique_ptr<char[]> const one(text.ascii()), other(static_cast<char*>(text));
    EXPECT_STREQ("a", one.get());
    EXPECT_STREQ("a", other.get());
    setlocale(LC_CTYPE, "C");
}

TEST(Conversion, IsNullOfANullPointerAndWithoutMemory) {
    EXPECT_EQ(nullptr, PLiteral::pwchar2pchar(nullptr, 5));
    EXPECT_EQ(nullptr, PLiteral::pchar2pwchar(nullptr, 5));
    EXPECT_EQ(nullptr, PLiteral::pwchar2pchar(L"a", ~0UL));
}
