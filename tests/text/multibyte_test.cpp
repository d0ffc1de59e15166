#include <sys/mman.h>

#include <algorithm>
#include <clocale>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <memory>
#include <random>
#include <string>

#include <gtest/gtest.h>
#include <support/scratch.h>

#include <portinglayer/strings.h>

namespace {

constexpr size_t PAGE = 4096;
constexpr size_t SPARE = 8;  // zero characters behind what a conversion may write

/// Puts `count` characters at the end of a page with none behind it: reading further is fatal.
template <typename Character>
Character const* _atPageEnd(std::basic_string<Character> const& s, size_t count) {
    static char* const page = static_cast<char*>(
        mmap(nullptr, 2 * PAGE, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
    mprotect(page + PAGE, PAGE, PROT_NONE);
    size_t const bytes = count * sizeof(Character);
    return static_cast<Character*>(memcpy(page + PAGE - bytes, s.c_str(), bytes));
}

wchar_t _character(std::mt19937& random) {
    auto const at = static_cast<unsigned>(random());
    switch (random() % 6) {
    case 0: return static_cast<wchar_t>(0xA0 + at % 0x60);
    case 1: return static_cast<wchar_t>(0x7F + at % 0x790);
    case 2: return static_cast<wchar_t>(0x7F0 + at % 0xF900);
    case 3: return static_cast<wchar_t>(0xFFF0 + at % 0x100020);
    case 4:
        return static_cast<wchar_t>(at % 8 == 0 ? at | 1U
                                                : (at % 8 < 4 ? 0xD7FE : 0xDFFE) + at / 8 % 4);
    default: return L'\u20ac';
    }
}

/// Runs of ASCII between other characters, about as long as a few vectors.
std::wstring _text(std::mt19937& random) {
    std::wstring text(random() % 50, L'a');
    size_t const rarity = 2 + random() % 60;
    for (wchar_t& c : text)
        c = random() % rarity == 0 ? _character(random) : static_cast<wchar_t>(1 + random() % 127);
    return text;
}

/// What a conversion must give: the same buffer, zeros included; nothing for failures and nothings.
template <typename Character>
void _expect(std::basic_string<Character> const& expected, size_t result, Character* made) {
    std::unique_ptr<Character[]> const owned(made);
    bool const nothing = result == 0 || result == static_cast<size_t>(-1);
    ASSERT_EQ(made == nullptr, nothing) << "the library's result is " << result;
    if (made != nullptr) {
        ASSERT_EQ(std::basic_string<Character>(made, expected.size()), expected);
    }
}

void _compareOnce(std::mt19937& random) {
    std::wstring const text = _text(random);
    size_t const limit = random() % (random() % 2 == 0 ? 4 * text.size() + 3 : text.size() + 2);
    std::string bytes(limit + SPARE, '\0');
    size_t const count = wcstombs(bytes.data(), text.c_str(), limit);
    wchar_t const* const wide = _atPageEnd(text, std::min(limit, text.size() + 1));
    _expect(bytes, count, PLiteral::pwchar2pchar(wide, limit));

    bytes = count == static_cast<size_t>(-1) ? "\x80" : bytes.c_str();
    if (random() % 3 == 0)
        bytes.insert(random() % (bytes.size() + 1), 1, static_cast<char>(random() | 1U));
    if (random() % 3 == 0) bytes.resize(random() % (bytes.size() + 1));
    size_t const room = random() % (bytes.size() + 2);
    bool const ascii = std::all_of(bytes.begin(), bytes.end(), [](char c) { return c > 0; });
    size_t const readable = ascii ? std::min(room, bytes.size() + 1) : bytes.size() + 1;
    std::wstring characters(room + SPARE, L'\0');
    size_t const done = mbstowcs(characters.data(), bytes.c_str(), room);
    _expect(characters, done, PLiteral::pchar2pwchar(_atPageEnd(bytes, readable), room));
}

void _compareIn(char const* locale) {
    ASSERT_NE(setlocale(LC_CTYPE, locale), nullptr) << locale;
    for (unsigned seed = 0; seed < 30000 && !testing::Test::HasFatalFailure(); ++seed) {
        SCOPED_TRACE(seed);
        std::mt19937 random(seed);
        _compareOnce(random);
    }
    setlocale(LC_CTYPE, "C");
}

}  // namespace

TEST(Conversion, AgreesWithTheLibraryInC) {
    _compareIn("C");
}

TEST(Conversion, AgreesWithTheLibraryInUtf8) {
    _compareIn("C.UTF-8");
}

TEST(Conversion, AgreesWithTheLibraryInAnEightBitLocale) {
    Scratch const scratch;
    std::string const make = "localedef -c -f ISO-8859-15 -i de_DE '" + scratch.path("l9") + "'";
    (void)system((make + " >/dev/null 2>&1").c_str());  // warns by its result; what it made counts
    if (scratch.names().empty()) GTEST_SKIP() << "no localedef, or no sources of locales, here";
    setenv("LOCPATH", scratch.dir().c_str(), 1);
    _compareIn("l9");
    unsetenv("LOCPATH");
}
