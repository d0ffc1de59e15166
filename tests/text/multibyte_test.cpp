#include <algorithm>
#include <clocale>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <vector>

#include <support/scratch.h>
#include <text/models.h>

namespace {

constexpr size_t SPARE = 8;  // zero characters behind what a conversion may write

/// A character of any size, half of them where encodings change their ways.
wchar_t _character() {
    static constexpr wchar_t EDGES[] = L"\x7f\xa4\x7fe\x20ab\xd7fe\xdffe\xfffe\x10fffe";
    auto const any = static_cast<std::uint32_t>(dice());
    if (any % 2 == 0) return EDGES[any / 2 % 8] + static_cast<wchar_t>(any / 16 % 4);
    return static_cast<wchar_t>(any >> any / 2 % 32);
}

/// Converts a text that may be read up to `readable` characters by both; gives the C library's
/// buffer. A conversion gives the same, zeros included, or nothing for failures and nothings.
template <typename From, typename To>
std::basic_string<To> _converted(size_t (*theirs)(To*, From const*, size_t),
                                 To* (*ours)(From const*, unsigned long),
                                 std::basic_string<From> const& s, size_t limit, size_t readable) {
    std::basic_string<To> expected(limit + SPARE, To{});
    size_t const result = theirs(expected.data(), s.c_str(), limit);
    std::vector<From> const exact(s.c_str(), s.c_str() + readable);  // a sanitizer sees its end
    std::unique_ptr<To[]> const made(ours(exact.data(), limit));
    EXPECT_EQ(made == nullptr, result + 1 <= 1) << testing::PrintToString(s) << limit;
    EXPECT_TRUE(!made || std::equal(expected.begin(), expected.end(), made.get()))
        << testing::PrintToString(s) << limit;
    return expected;
}

}  // namespace

class Conversion : public testing::TestWithParam<char const*> {};

TEST_P(Conversion, AgreesWithTheCLibrary) {
    Scratch const scratch;
    std::string const make = "localedef -c -f ISO-8859-15 -i de_DE '" + scratch.path("l9") + "'";
    (void)system((make + " >/dev/null 2>&1").c_str());  // warns by its result; what it made counts
    setenv("LOCPATH", (scratch.dir() + ":/usr/lib/locale").c_str(), 1);
    bool const there = setlocale(LC_CTYPE, GetParam()) != nullptr;
    unsetenv("LOCPATH");
    if (!there) GTEST_SKIP() << "no locale " << GetParam() << " here, and none can be made";
    for (int round = 0; round < 30000 && !HasFailure(); ++round) {
        std::wstring text = pick(L"\x1\taA0\\~\x7f", 49);
        size_t const rarity = 2 + dice() % 60;
        for (wchar_t& c : text) c = dice() % rarity == 0 ? _character() : c;
        size_t const limit = dice() % (4 * text.size() + 3);
        size_t const readable = std::min(limit, text.size() + 1);
        auto bytes = _converted(wcstombs, PLiteral::pwchar2pchar, text, limit, readable);
        bytes.resize(strlen(bytes.c_str()));
        if (dice() % 8 == 0) bytes = char(dice() | 0xC0U) + std::string("\x80\x80\x80");
        if (dice() % 3 == 0) bytes.insert(dice() % (bytes.size() + 1), 1, char(dice() | 1U));
        if (dice() % 3 == 0) bytes.resize(dice() % (bytes.size() + 1));
        size_t const room = dice() % (bytes.size() + 2);
        bool const ascii = std::all_of(bytes.begin(), bytes.end(), [](char c) { return c > 0; });
        _converted(mbstowcs, PLiteral::pchar2pwchar, bytes, room,
                   ascii ? std::min(room, bytes.size() + 1) : bytes.size() + 1);
    }
    setlocale(LC_CTYPE, "C");
}

INSTANTIATE_TEST_SUITE_P(, Conversion, testing::Values("C", "C.UTF-8", "l9"));
