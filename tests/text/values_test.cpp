#include <climits>
#include <random>

#include <support/expect.h>

using namespace std::string_view_literals;

namespace {

/// Digits with what may stand around them, some of them about as long as the types can hold.
std::wstring _randomNumber(std::mt19937& random) {
    wchar_t const* const fronts[] = {L"", L"922337203685477580", L"1844674407370955161", L"-",
                                     L" "};
    std::wstring text = fronts[random() % 5];
    for (auto left = random() % 13; left > 0; --left)
        text += L"0123456789 -+x\v\x665"[random() % 16];
    return text;
}

template <typename T>
void _expectLikeScanning(int (*read)(PLiteral const&, T&), wchar_t const* format,
                         std::wstring const& text) {
    T ours = 77, scanned = 77;
    int const code = swscanf(text.c_str(), format, &scanned) == 1 ? PERR_OK : PERR_BAD_FORMAT;
    ASSERT_CODE(code, read(text.c_str(), ours)) << text << " as " << format;
    ASSERT_EQ(scanned, ours) << text << " as " << format;
}

template <typename T>
void _expectLikeStandard(int (*write)(T, PString&), T value) {
    PString text;
    EXPECT_CODE(PERR_OK, write(value, text));
    EXPECT_TEXT(std::to_wstring(value), text);
}

}  // namespace

TEST(TextToNumber, GivesWhatScanningGives) {
    std::mt19937 random(20240);
    for (int round = 0; round < 20'000 && !testing::Test::HasFailure(); ++round) {
        std::wstring const text = _randomNumber(random);
        _expectLikeScanning<int>(PUtils::strToInt32, L"%d", text);
        _expectLikeScanning<unsigned int>(PUtils::strToUint32, L"%u", text);
        _expectLikeScanning<long long>(PUtils::strToInt64, L"%lld", text);
        _expectLikeScanning<unsigned long long>(PUtils::strToUint64, L"%llu", text);
    }
}

TEST(NumberToText, WritesDecimalDigits) {
    for (int shift = 0; shift < 64; ++shift)
        for (unsigned long long const value : {1ULL << shift, 0 - (1ULL << shift)}) {
            _expectLikeStandard(PUtils::int32ToStr, static_cast<int>(value));
            _expectLikeStandard(PUtils::uint32ToStr, static_cast<unsigned int>(value));
            _expectLikeStandard(PUtils::int64ToStr, static_cast<long long>(value));
            _expectLikeStandard(PUtils::uint64ToStr, value);
        }
    for (int number = 0; number <= 110; ++number) _expectLikeStandard(PUtils::int32ToStr, number);
}

TEST(Truth, IsOneOfTwoWords) {
    PString word;
    bool read = false;
    EXPECT_CODE(PERR_OK, PUtils::boolToStr(true, word));
    EXPECT_TEXT(L"true", word);
    EXPECT_CODE(PERR_OK, PUtils::strToBool(word, read));
    EXPECT_CODE(PERR_BAD_FORMAT, PUtils::strToBool(L"false ", read));
    EXPECT_TRUE(read);
    EXPECT_CODE(PERR_OK, PUtils::boolToStr(false, word));
    EXPECT_CODE(PERR_OK, PUtils::strToBool(word, read));
    EXPECT_FALSE(read);
}

TEST(HexadecimalByte, IsOneOrTwoCharactersThatScanningAccepts) {
    char byte = 77;
    for (wchar_t const* const refused : {L"g", L"100", L""})
        EXPECT_CODE(PERR_BAD_FORMAT, PUtils::hexToByte(refused, byte)) << refused;
    EXPECT_EQ(77, byte);
    EXPECT_CODE(PERR_OK, PUtils::hexToByte(L"fA", byte));
    EXPECT_EQ('\xFA', byte);
    EXPECT_CODE(PERR_OK, PUtils::hexToByte(L"5x", byte));
    EXPECT_EQ(5, byte);
    EXPECT_CODE(PERR_OK, PUtils::hexToByte(L"-1", byte));
    EXPECT_EQ('\xFF', byte);
}

TEST(Digit, HasAValueAndIsLookedForUpToTheLength) {
    std::wstring const digits = L"0123456789abcdefABCDEF";
    for (wchar_t c = 0; c < 0x200; ++c) {
        SCOPED_TRACE(std::wstring(1, c));
        std::size_t const place = digits.find(c);
        bool const isDigit = place != digits.npos;
        char value = 77;
        ASSERT_CODE(isDigit ? PERR_OK : PERR_BAD_FORMAT, PUtils::hexToDec(c, value));
        ASSERT_EQ(isDigit ? place - (place > 15 ? 6 : 0) : 77, std::size_t(value));
        ASSERT_EQ(isDigit, PUtils::isHex(&c, 1));
        ASSERT_EQ(place < 10, PUtils::isDec(&c, 1, false));
    }
    EXPECT_TRUE(PUtils::isDec(L"12x", 2, false));
    EXPECT_FALSE(PUtils::isDec(L"12x", 3, false));
    EXPECT_TRUE(PUtils::isDec(L"12", P_WHOLE_STRING, false));
    EXPECT_TRUE(PUtils::isDec(L"+", P_WHOLE_STRING, true)) << "a sign alone";
    EXPECT_FALSE(PUtils::isDec(L"1-2", 3, true));
    EXPECT_FALSE(PUtils::isDec(nullptr, P_WHOLE_STRING, false));
    EXPECT_TRUE(PUtils::isHex(L"fAx", 2));
    EXPECT_TRUE(PUtils::isHex(L"fA", P_WHOLE_STRING));
}

TEST(BytesAndText, BecomeEachOtherInItemsOfTwoDigits) {
    unsigned char const data[] = {0x00, 0x7F, 0xA0};
    PString text(L"old", 3);
    EXPECT_CODE(PERR_OK, PUtils::binaryToStr(data, 3, text));
    EXPECT_CODE(PERR_INVALID_ARGUMENT, PUtils::binaryToStr(data, 0, text));
    EXPECT_CODE(PERR_INVALID_ARGUMENT, PUtils::binaryToStr(nullptr, 3, text));
    EXPECT_CODE(PERR_NO_MEMORY, PUtils::binaryToStr(data, ULONG_MAX / 4, text));
    EXPECT_TEXT(L"0x00, 0x7F, 0xA0", text);

    unsigned char* out = nullptr;
    unsigned long count = 77;
    for (wchar_t const* const bad : {L"0X1", L"00", L"0x,", L"0x123", L"0x12 ,", L"0x1;0x2", L""})
        EXPECT_CODE(PERR_BAD_FORMAT, PUtils::strToBinary(bad, out, count)) << bad;
    EXPECT_EQ(nullptr, out);
    EXPECT_EQ(77U, count);

    EXPECT_CODE(PERR_OK, PUtils::strToBinary(L"0x00, 0x7F,0xa0,\t", out, count));
    EXPECT_EQ("\x00\x7F\xA0"sv, std::string(out, out + count));
    delete[] out;
}
