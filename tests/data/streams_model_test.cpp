#include <algorithm>
#include <random>

#include <data/bytes.h>
#include <gtest/gtest.h>
#include <support/locales.h>

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* input, std::size_t size);

/// What picks the locale and the operations, then items of streams, most of them whole and some cut.
static Bytes arbitraryItems(std::mt19937& random) {
    static char const* const record =
        "\x09\x85zzz\x01p\x07zzz\x03\x09\x85zzz\x01q\x09\x85zzz\x02rs";
    static char const* const parts[] = {
        record,    "\x07zzz\x01", "\x89zzz\x02", "\x89zzzz", "\x89\xFF\xFF\xFF\xFF",
        "\x85zzz", "\x09\x85zzz", "\x85zz\x01z", "\xC3\xA9", "\x82\xA0"};
    Bytes made(9);
    std::ranges::generate(made, std::ref(random));
    while (random() % 8 != 0) {
        std::string const part = parts[random() % std::size(parts)];
        made.insert(made.end(), part.begin(), part.end());
        made.insert(made.end(), random() % 2, static_cast<unsigned char>(random()));
        if (random() % 16 == 0) made.insert(made.end(), 260, 'a');
    }
    std::ranges::replace(made, 'z', '\0');  // no zero byte in a literal
    return made;
}

TEST(Streams, AgreeWithAPlainModelOnArbitraryBytesInThreeLocales) {
    MadeLocale const japanese("SHIFT_JIS");  // found by its name, as C and C.UTF-8 are
    std::mt19937 random(20240);
    for (int round = 0; round < 30000; ++round) {
        Bytes const input = arbitraryItems(random);
        ASSERT_NO_THROW(LLVMFuzzerTestOneInput(input.data(), input.size())) << hex(input);
    }
}
