#include <algorithm>
#include <memory>
#include <vector>

#include <text/models.h>

using namespace std::string_literals;

namespace {

template <typename T>
std::pair<int, T> _scanned(std::wstring const& text, wchar_t const* format) {
    T value = 77;
    int const code = swscanf(text.c_str(), format, &value) == 1 ? PERR_OK : PERR_BAD_FORMAT;
    return {code, value};
}

template <typename T>
std::pair<int, T> _read(auto read, auto text) {
    T value = 77;
    int const code = read(text, value);
    return {code, value};
}

template <typename T>
void _compare(int (*read)(PLiteral const&, T&), int (*write)(T, PString&), wchar_t const* format,
              std::wstring const& text) {
    auto const expected = _scanned<T>(text, format);
    ASSERT_EQ(_read<T>(read, text.c_str()), expected) << text << " by " << format;
    PString written, digits;
    ASSERT_EQ(write(expected.second, written),
              PUtils::pformatString(digits, format, expected.second));
    ASSERT_STREQ(written.ptr(), digits.ptr());
}

/// What strToBinary does, on a text that is really taken apart item by item.
std::string _naiveBinary(PString rest) {
    if (rest.len() == 0) return "bad";
    std::string bytes;
    while (rest.trim() == PERR_OK && rest.len() > 0) {
        unsigned long comma = rest.len();
        (void)rest.chr(L',', comma, false, false);  // without one the item is all that is left
        if (!rest.startsWith(L"0x", false)) return "bad";
        bytes.push_back('\0');
        if (PUtils::hexToByte(PString(rest.ptr() + 2, comma - 2), bytes.back()) < 0) return "bad";
        rest.erase(0, std::min(comma + 1, rest.len()));
    }
    return bytes;
}

}  // namespace

TEST(Numbers, AreReadAndWrittenAsTheCLibraryDoes) {
    std::vector<std::wstring> texts{L"9223372036854775807",  L"9223372036854775808",
                                    L"-9223372036854775808", L"18446744073709551615",
                                    L"18446744073709551616", L"-2147483648"};
    for (int i = 0; i < 20000; ++i) texts.push_back(pick(L"0123456789", 22));
    for (int i = 0; i < 20000; ++i) texts.push_back(pick(L"0019 -+x\v\x665", 6));
    for (auto const& text : texts) {
        _compare<int>(PUtils::strToInt32, PUtils::int32ToStr, L"%d", text);
        _compare<unsigned int>(PUtils::strToUint32, PUtils::uint32ToStr, L"%u", text);
        _compare<long long>(PUtils::strToInt64, PUtils::int64ToStr, L"%lld", text);
        _compare<unsigned long long>(PUtils::strToUint64, PUtils::uint64ToStr, L"%llu", text);
    }
}

TEST(Digits, AreReadOneByOneAndAsBytes) {
    std::wstring const dec = L"0123456789", hex = dec + L"abcdefABCDEF";
    for (int i = 0; i < 40000; ++i) {
        std::wstring const text = pick(hex + L"00000+-++--xxxXgGx/:@` \xff", 3);
        auto const end = text.npos, n = i % 2 == 0 ? text.size() : P_WHOLE_STRING;
        size_t const sign = text.find_first_of(L"+-") == 0 ? 1 : 0;
        auto const byte = _scanned<unsigned int>(text.size() < 3 ? text : L"", L"%x");
        auto const digit = _scanned<unsigned int>(text.substr(0, 1), L"%x");
        ASSERT_EQ(PUtils::isDec(text.c_str(), n, false), text.find_first_not_of(dec) == end)
            << text;
        ASSERT_EQ(PUtils::isDec(text.c_str(), n, true), text.find_first_not_of(dec, sign) == end);
        ASSERT_EQ(PUtils::isHex(text.c_str(), n), text.find_first_not_of(hex) == end) << text;
        ASSERT_EQ(_read<char>(PUtils::hexToDec, text[0]), (std::pair<int, char>(digit))) << text;
        ASSERT_EQ(_read<char>(PUtils::hexToByte, text.c_str()), (std::pair<int, char>(byte)));
    }
}

TEST(Bytes, AreReadAsIfItemsWereTakenOffOneByOne) {
    for (int i = 0; i < 200000; ++i) {
        std::wstring const text = pick(L"00xx1,, \t\0"s, 11);
        PString const whole(text.data(), text.size());
        unsigned char* out = nullptr;
        unsigned long count = 77;
        bool const good = PUtils::strToBinary(whole, out, count) == PERR_OK;
        std::unique_ptr<unsigned char[]> const owner(out);
        ASSERT_EQ(good ? std::string(out, out + count) : "bad", _naiveBinary(whole)) << text;
        ASSERT_TRUE(good || (out == nullptr && count == 77)) << text;
    }
}

TEST(ResultCodes, KeepTheirNumbers) {
    std::string runs;
    for (int code = 1; code > -9999; --code) {
        bool const before = perrorName(code + 1) != nullptr, named = perrorName(code) != nullptr;
        if (named && !before) runs += std::to_string(code);
        if (before && !named) runs += ".." + std::to_string(code + 1) + " ";
    }
    EXPECT_EQ(runs,
              "0..0 -500..-512 -601..-601 -611..-615 -619..-628 -630..-630 -701..-705 -711..-717 "
              "-721..-729 -731..-738 -742..-744 -9001..-9002 -9005..-9006 ");
    EXPECT_STREQ(perrorName(PERR_LOCKED), "PERR_LOCKED");
}
