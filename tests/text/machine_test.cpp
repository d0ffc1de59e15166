#include <algorithm>
#include <clocale>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <random>
#include <vector>

#include <gtest/gtest.h>
#include <netdb.h>
#include <portinglayer/strings.h>
#include <support/scratch.h>

namespace {

std::mt19937_64 dice(20240);  // seeded: every run is the same

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
    bool const same = made && std::equal(expected.begin(), expected.end(), made.get());
    EXPECT_TRUE(result + 1 > 1 ? same : !made) << testing::PrintToString(s) << limit;
    return expected;
}

// Numbers are names that the real resolver always knows, so the address tells which name was asked.
struct Machine {
    char const* variable;  // null: not set
    char const* host;      // null: gethostname fails
    char const* entry[5];  // official name, aliases, null; "none": gethostbyname finds nothing
    int expected;
    wchar_t const* address;
} machine;

}  // namespace

extern "C" int gethostname(char* name, size_t size) noexcept {
    if (machine.host != nullptr) strncpy(name, machine.host, size);
    return machine.host != nullptr ? 0 : -1;
}

extern "C" hostent* gethostbyname(char const* /*name*/) {
    static hostent entry;
    entry.h_name = const_cast<char*>(machine.entry[0]);
    entry.h_aliases = const_cast<char**>(machine.entry + 1);
    return entry.h_name == nullptr ? nullptr : &entry;
}

class Conversion : public testing::TestWithParam<char const*> {};

TEST_P(Conversion, AgreesWithTheCLibrary) {
    Scratch const scratch;
    std::string const make = "localedef -c -f ISO-8859-15 -i de_DE '" + scratch.path("l9") + "'";
    (void)system((make + " >/dev/null 2>&1").c_str());  // warns by its result; what it made counts
    setenv("LOCPATH", (scratch.dir() + ":/usr/lib/locale").c_str(), 1);
    if (setlocale(LC_CTYPE, GetParam()) == nullptr)
        GTEST_SKIP() << "no locale " << GetParam() << " here, and none can be made";
    for (int round = 0; round < 30000 && !HasFailure(); ++round) {
        std::wstring text(dice() % 50, L' ');
        size_t const rarity = 2 + dice() % 60;
        for (wchar_t& c : text)
            c = dice() % rarity == 0 ? _character() : L"\x1\taA0\\~\x7f"[dice() % 8];
        size_t const limit = dice() % (4 * text.size() + 3);
        auto bytes = _converted(wcstombs, PLiteral::pwchar2pchar, text, limit,
                                std::min(limit, text.size() + 1));
        bytes.resize(strlen(bytes.c_str()));
        if (dice() % 8 == 0) bytes = char(dice() | 0xC0U) + std::string("\x80\x80\x80");
        if (dice() % 3 == 0) bytes.insert(dice() % (bytes.size() + 1), 1, char(dice() | 1U));
        if (dice() % 3 == 0) bytes.resize(dice() % (bytes.size() + 1));
        size_t const room = dice() % (bytes.size() + 2);
        bool const ascii = std::all_of(bytes.begin(), bytes.end(), [](char c) { return c > 0; });
        _converted(mbstowcs, PLiteral::pchar2pwchar, bytes, room,
                   ascii ? std::min(room, bytes.size() + 1) : bytes.size() + 1);
    }
}

INSTANTIATE_TEST_SUITE_P(, Conversion, testing::Values("C", "C.UTF-8", "l9"));

TEST(HostAddress, IsTheVariableElseThatOfTheNameThatTheResolverCompletes) {
    Machine const machines[] = {
        {"no address", nullptr, {}, 0, L"no address"},
        {"", nullptr, {}, 0, nullptr},
        {nullptr, nullptr, {}, -500, L"old"},  // no name to be had
        {nullptr, "10.0.0.1", {}, 0, L"10.0.0.1"},
        {nullptr, "1", {}, -500, L"old"},  // no entry
        {nullptr, "1", {"10.0.0.2", "10.0.0.2.x"}, 0, L"10.0.0.2"},
        {nullptr, "1", {"0xA", "0xA.3", "0Xa.4", "0xAB"}, 0, L"10.0.0.4"},
        {nullptr, "7", {"8", "9.0.0.5"}, 0, L"0.0.0.7"},  // nothing fuller
        {nullptr, "", {"8", "9.0.0.5"}, -504, L"old"},
        {nullptr, "::10.0.0.1", {}, -500, L"old"},  // no address of version 4
    };
    for (auto const& row : machines) {
        machine = row;
        (void)(row.variable ? setenv("TALV_HOST_IP", row.variable, 1) : unsetenv("TALV_HOST_IP"));
        PString out(L"old", 3);
        EXPECT_EQ(PUtils::getHostAddress(out), row.expected) << "row " << &row - machines;
        EXPECT_STREQ(out.ptr(), row.address) << "row " << &row - machines;
    }
}
