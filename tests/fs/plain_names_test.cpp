#include <unistd.h>

#include <clocale>
#include <cstdlib>
#include <random>

#include <gtest/gtest.h>
#include <portinglayer/files.h>
#include <support/scratch.h>

namespace {

/// Makes and removes folders of random names through the library, and looks with the C library's
/// conversion, cut to as many bytes as characters, whether they are where they should be.
void _expectNamesAsConverted(char const* locale) {
    ASSERT_NE(nullptr, setlocale(LC_ALL, locale));
    Scratch const scratch;
    std::wstring const characters = L"ab~|}{ \\.'09AZ-\x7f\x1f\xe9\u6f22";
    std::mt19937 random(20);
    for (int i = 0; i < 300; ++i) {
        std::wstring name = scratch.wpath("n");
        for (auto left = random() % 40; left > 0; --left)
            name += characters[random() % (i % 3 == 0 ? characters.size() : 16)];
        std::string narrow(name.size() + 1, '\0');
        bool const expressible = wcstombs(narrow.data(), name.c_str(), name.size()) != SIZE_MAX;
        EXPECT_EQ(expressible, PDir::pcreate(name.c_str()) == PERR_OK) << narrow;
        if (!expressible) continue;
        EXPECT_EQ(0, access(narrow.c_str(), F_OK)) << narrow;
        EXPECT_EQ(0, PDir::pdelete(name.c_str())) << narrow;
        errno = 0;
    }
    setlocale(LC_ALL, "C.UTF-8");
}

TEST(PlainNames, ReachTheSystemAsTheConversionWouldHaveThem) {
    _expectNamesAsConverted("C.UTF-8");
    _expectNamesAsConverted("C");
}

}  // namespace
