#include <algorithm>
#include <random>
#include <vector>

#include <gtest/gtest.h>
#include <support/locales.h>

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* input, std::size_t size);

/// What picks the locale, the text and its part, then letters of few kinds; one text in twenty is
/// long.
static std::vector<std::uint8_t> _arbitrarySearch(std::mt19937& random) {
    std::vector<std::uint8_t> input(8 + random() % 6);
    std::ranges::generate(input, std::ref(random));
    if (random() % 20 != 0) input[2] %= 4;
    auto const first = random(), kinds = 1 + random() % 4;
    for (std::size_t i = 6; i < input.size(); ++i)
        input[i] = static_cast<std::uint8_t>(first + input[i] % kinds);
    return input;
}

TEST(SearchModel, AgreesOnShortTextsAndOnLongOnesInWhichMuchMatchesInVain) {
    MadeLocale const turkish("UTF-8", "tr_TR");  // found by its name, as C and C.UTF-8 are
    std::mt19937 random(20240);
    for (int round = 0; round < 60'000; ++round) {
        auto const input = _arbitrarySearch(random);
        ASSERT_NO_THROW(LLVMFuzzerTestOneInput(input.data(), input.size()))
            << testing::PrintToString(input);
    }
}
