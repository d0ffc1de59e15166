#include <climits>
#include <cwchar>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <portinglayer/strings.h>

namespace {

std::mt19937_64 _random(20240);  // seeded: every run is the same

std::wstring _pick(std::wstring const& letters, size_t most) {
    std::wstring text(_random() % (most + 1), L' ');
    for (auto& c : text) c = letters[_random() % letters.size()];
    return text;
}

template <typename T>
void _compare(int (*read)(PLiteral const&, T&), wchar_t const* format, std::wstring const& text) {
    T expected = 77;
    T out = 77;
    int const code = swscanf(text.c_str(), format, &expected) == 1 ? PERR_OK : PERR_BAD_FORMAT;
    ASSERT_EQ(read(text.c_str(), out), code) << text << " by " << format;
    ASSERT_EQ(out, expected) << text << " by " << format;
}

template <typename T>
void _compare(int (*write)(T, PString&), wchar_t const* format, T value) {
    wchar_t expected[32];
    swprintf(expected, 32, format, value);
    PString out;
    ASSERT_EQ(write(value, out), PERR_OK);
    ASSERT_STREQ(out.ptr(), expected);
}

/// What strToBinary does, on a text that is really taken apart item by item.
bool _naiveBinary(PString rest, std::string& bytes) {
    if (rest.len() == 0) return false;
    while (rest.trim() == PERR_OK && rest.len() > 0) {
        if (!rest.startsWith(L"0x", false)) return false;
        unsigned long comma = 0;
        bool const last = rest.chr(L',', comma, false, false) != PERR_OK;
        PString const item(rest.ptr() + 2, (last ? rest.len() : comma) - 2);
        rest.erase(0, last ? rest.len() : comma + 1);
        bytes.push_back('\0');
        if (PUtils::hexToByte(item, bytes.back()) != PERR_OK) return false;
    }
    return true;
}

}  // namespace

TEST(Numbers, AreReadAsTheCLibraryReadsThem) {
    std::vector<std::wstring> texts{L"9223372036854775807",  L"9223372036854775808",
                                    L"-9223372036854775808", L"18446744073709551615",
                                    L"18446744073709551616", L"\x665"};
    for (int i = 0; i < 20000; ++i) texts.push_back(_pick(L"0123456789", 22));
    for (int i = 0; i < 20000; ++i) texts.push_back(_pick(L"0019 -+x\v", 6));
    for (auto const& text : texts) {
        _compare<int>(PUtils::strToInt32, L"%d", text);
        _compare<unsigned int>(PUtils::strToUint32, L"%u", text);
        _compare<long long>(PUtils::strToInt64, L"%lld", text);
        _compare<unsigned long long>(PUtils::strToUint64, L"%llu", text);
    }
}

TEST(Numbers, AreWrittenAsTheCLibraryWritesThem) {
    for (int i = 0; i < 20000; ++i) {
        auto const value = i < 64 ? 1ULL << i : i == 64 ? ULLONG_MAX : _random() >> _random() % 64;
        _compare<int>(PUtils::int32ToStr, L"%d", static_cast<int>(value));
        _compare<unsigned int>(PUtils::uint32ToStr, L"%u", static_cast<unsigned int>(value));
        _compare<long long>(PUtils::int64ToStr, L"%lld", static_cast<long long>(value));
        _compare<unsigned long long>(PUtils::uint64ToStr, L"%llu", value);
    }
}

TEST(Words, OnlyTrueAndFalseAreBooleans) {
    for (bool const value : {true, false}) {
        PString word;
        bool read = !value;
        EXPECT_EQ(PUtils::boolToStr(value, word) + PUtils::strToBool(word, read), PERR_OK);
        EXPECT_STREQ(word.ptr(), value ? L"true" : L"false");
        for (auto other : {L"True", L" true", L"false ", L"1", L""})
            EXPECT_EQ(PUtils::strToBool(other, read), PERR_BAD_FORMAT) << other;
        EXPECT_EQ(read, value);
    }
}

TEST(Digits, AreTestedOneByOne) {
    std::wstring const hex = L"0123456789abcdefABCDEF", dec = hex.substr(0, 10);
    for (int i = 0; i < 5000; ++i) {
        std::wstring const text = _pick(hex + L"+-gGx/:@`", 3);
        auto const end = text.npos, n = i % 2 == 0 ? text.size() : P_WHOLE_STRING;
        size_t const sign = text.find_first_of(L"+-") == 0 ? 1 : 0;
        ASSERT_EQ(PUtils::isDec(text.c_str(), n, false), text.find_first_not_of(dec) == end);
        ASSERT_EQ(PUtils::isDec(text.c_str(), n, true), text.find_first_not_of(dec, sign) == end);
        ASSERT_EQ(PUtils::isHex(text.c_str(), n), text.find_first_not_of(hex) == end);
        char value = 77;
        size_t const digit = hex.find(PLiteral::tolower(text[0]));
        ASSERT_EQ(PUtils::hexToDec(text[0], value) == PERR_OK, digit < 16);
        ASSERT_EQ(static_cast<size_t>(value), digit < 16 ? digit : 77);
    }
    for (auto n : {0UL, 1UL, P_WHOLE_STRING})
        EXPECT_TRUE(PUtils::isDec(nullptr, n, true) == (n == 0) &&
                    PUtils::isHex(nullptr, n) == (n == 0));
}

TEST(Bytes, OneOrTwoCharactersAreReadAsTheCLibraryReadsThem) {
    for (int i = 0; i < 20000; ++i) {
        std::wstring const text = _pick(L"0019afAFxXgG -+\xff", 3);
        unsigned int expected = 77;
        bool const good = text.size() < 3 && swscanf(text.c_str(), L"%x", &expected) == 1;
        char byte = 77;
        ASSERT_EQ(PUtils::hexToByte(text.c_str(), byte), good ? PERR_OK : PERR_BAD_FORMAT) << text;
        ASSERT_EQ(byte, static_cast<char>(expected)) << text;
    }
}

TEST(Bytes, ManyAreReadAsIfItemsWereTakenOffOneByOne) {
    std::wstring const letters = std::wstring(L"00xx1,, \t") + L'\0';
    for (int i = 0; i < 200000; ++i) {
        std::wstring const text = _pick(letters, 11);
        PString const whole(text.data(), text.size());
        std::string expected;
        bool const good = _naiveBinary(whole, expected);
        unsigned char* out = nullptr;
        unsigned long count = 77;
        ASSERT_EQ(PUtils::strToBinary(whole, out, count), good ? PERR_OK : PERR_BAD_FORMAT) << text;
        std::unique_ptr<unsigned char[]> const owner(out);
        ASSERT_TRUE(good ? std::string(out, out + count) == expected : !out && count == 77) << text;
    }
}

TEST(Bytes, AreWrittenAsItems) {
    unsigned char const data[] = {0x00, 0x7F, 0xA0};
    PString text;
    EXPECT_EQ(PUtils::binaryToStr(data, 3, text), PERR_OK);
    EXPECT_EQ(PUtils::binaryToStr(data, 0, text), PERR_INVALID_ARGUMENT);
    EXPECT_EQ(PUtils::binaryToStr(data, ULONG_MAX / 4, text), PERR_NO_MEMORY);
    EXPECT_STREQ(text.ptr(), L"0x00, 0x7F, 0xA0");
}
