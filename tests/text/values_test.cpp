#include <climits>
#include <memory>
#include <random>
#include <utility>

#include <support/expect.h>

using namespace std::string_view_literals;

namespace {

constexpr unsigned SEED = 20240;

std::wstring _randomText(std::mt19937& random, std::wstring_view letters, std::size_t most) {
    std::wstring text(random() % (most + 1), L' ');
    for (wchar_t& c : text) c = letters[random() % letters.size()];
    return text;
}

/// Digits with what may stand around them, half of them about as long as the types can hold.
std::wstring _randomNumber(std::mt19937& random) {
    wchar_t const* const fronts[] = {
        L"922337203685477580", L"-922337203685477580", L"1844674407370955161", L"-", L"+", L" "};
    std::wstring const front =
        random() % 2 == 0 ? _randomText(random, L"0123456789", 20) : fronts[random() % 6];
    return front + _randomText(random, L"00156789 -+x\v\x665", 6);
}

/// Takes the items off one by one, on a text that is really shortened and trimmed each time.
int _readNaively(PString rest, std::string& bytes) {
    if (rest.len() == 0) return PERR_BAD_FORMAT;
    while (rest.trim() == PERR_OK && rest.len() > 0) {
        if (!rest.startsWith(L"0x", false)) return PERR_BAD_FORMAT;
        unsigned long comma = rest.len();
        (void)rest.chr(L',', comma, false, false);  // without one the item is all that is left
        char byte = 0;
        int const code = PUtils::hexToByte(PString(rest.ptr() + 2, comma - 2), byte);
        if (code != PERR_OK) return code;
        bytes.push_back(byte);
        (void)rest.erase(0, std::min(comma + 1, rest.len()));
    }
    return PERR_OK;
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

TEST(TextToNumber, StopsBehindTheDigits) {
    int number = 77;
    EXPECT_CODE(PERR_BAD_FORMAT, PUtils::strToInt32(L"x42", number));
    EXPECT_CODE(PERR_BAD_FORMAT, PUtils::strToInt32(L"", number));
    EXPECT_CODE(PERR_BAD_FORMAT, PUtils::strToInt32(PLiteral(), number));
    EXPECT_EQ(77, number);
    EXPECT_CODE(PERR_OK, PUtils::strToInt32(L" -42 x", number));
    EXPECT_EQ(-42, number);
}

TEST(TextToNumber, GivesWhatScanningGives) {
    std::mt19937 random(SEED);
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
        for (unsigned long long const value :
             {1ULL << shift, ~0ULL >> shift, 0 - (1ULL << shift)}) {
            _expectLikeStandard(PUtils::int32ToStr, static_cast<int>(value));
            _expectLikeStandard(PUtils::uint32ToStr, static_cast<unsigned int>(value));
            _expectLikeStandard(PUtils::int64ToStr, static_cast<long long>(value));
            _expectLikeStandard(PUtils::uint64ToStr, value);
        }
    for (int number = -1000; number <= 1000; ++number)
        _expectLikeStandard(PUtils::int32ToStr, number);
}

TEST(Truth, IsOneOfTwoWords) {
    PString word;
    for (bool const truth : {true, false}) {
        EXPECT_CODE(PERR_OK, PUtils::boolToStr(truth, word));
        EXPECT_TEXT(truth ? L"true" : L"false", word);
        bool read = !truth;
        EXPECT_CODE(PERR_OK, PUtils::strToBool(word, read));
        EXPECT_EQ(truth, read);
        for (wchar_t const* const other : {L"True", L"true ", L"falsE", L"1", L""}) {
            EXPECT_CODE(PERR_BAD_FORMAT, PUtils::strToBool(other, read)) << other;
            EXPECT_EQ(truth, read) << other;
        }
    }
}

TEST(HexadecimalByte, IsOneOrTwoCharactersThatScanningAccepts) {
    struct {
        wchar_t const* text;
        int code;
        unsigned char byte;
    } const rows[] = {
        {L"ff", PERR_OK, 0xFF},         {L"A0", PERR_OK, 0xA0},        {L"7", PERR_OK, 0x07},
        {L" 5", PERR_OK, 0x05},         {L"-1", PERR_OK, 0xFF},        {L"5x", PERR_OK, 0x05},
        {L"g", PERR_BAD_FORMAT, 77},    {L"100", PERR_BAD_FORMAT, 77}, {L"", PERR_BAD_FORMAT, 77},
        {nullptr, PERR_BAD_FORMAT, 77},
    };
    for (auto const& row : rows) {
        SCOPED_TRACE(testing::PrintToString(row.text));
        char byte = 77;
        EXPECT_CODE(row.code, PUtils::hexToByte(row.text, byte));
        EXPECT_EQ(row.byte, static_cast<unsigned char>(byte));
    }
}

TEST(HexadecimalByte, IsScannedToTheTerminatorNotToTheLength) {
    wchar_t room[] = L"12\0005";
    PLiteral const view(room);
    room[2] = L'3';
    char byte = 0;
    EXPECT_CODE(PERR_OK, PUtils::hexToByte(view, byte));
    EXPECT_EQ(0x35, byte) << "of 1235";
}

TEST(HexadecimalDigit, HasAValueAndPassesTheTest) {
    std::wstring const digits = L"0123456789abcdefABCDEF";
    for (wchar_t c = 0; c < 0x200; ++c) {
        SCOPED_TRACE(testing::Message() << "character " << int(c));
        std::size_t const place = digits.find(c);
        bool const isDigit = place != digits.npos;
        char value = 77;
        ASSERT_CODE(isDigit ? PERR_OK : PERR_BAD_FORMAT, PUtils::hexToDec(c, value));
        ASSERT_EQ(isDigit ? place - (place > 15 ? 6 : 0) : 77, static_cast<std::size_t>(value));
        ASSERT_EQ(isDigit, PUtils::isHex(&c, 1));
        ASSERT_EQ(place < 10, PUtils::isDec(&c, 1, false));
        ASSERT_EQ(place < 10 || c == L'+' || c == L'-', PUtils::isDec(&c, 1, true));
    }
}

TEST(Digits, AreTestedUpToTheLength) {
    struct {
        char const* what;
        wchar_t const* text;
        unsigned long n;
        bool decimal, withSign, hexadecimal;
    } const rows[] = {
        {"digits", L"120", 3, true, true, true},
        {"digits before others", L"12x", 2, true, true, true},
        {"digits to the terminator", L"12", P_WHOLE_STRING, true, true, true},
        {"others behind digits", L"12x", P_WHOLE_STRING, false, false, false},
        {"a prefix", L"0x1", 3, false, false, false},
        {"a sign alone", L"+", P_WHOLE_STRING, false, true, false},
        {"a sign within", L"1-2", 3, false, false, false},
        {"an empty text", L"", P_WHOLE_STRING, true, true, true},
        {"none of nothing", nullptr, 0, true, true, true},
        {"all of nothing", nullptr, P_WHOLE_STRING, false, false, false},
    };
    for (auto const& row : rows) {
        SCOPED_TRACE(row.what);
        EXPECT_EQ(row.decimal, PUtils::isDec(row.text, row.n, false));
        EXPECT_EQ(row.withSign, PUtils::isDec(row.text, row.n, true));
        EXPECT_EQ(row.hexadecimal, PUtils::isHex(row.text, row.n));
    }
}

TEST(BytesToText, AreItemsOfTwoDigits) {
    unsigned char const data[] = {0x00, 0x7F, 0xA0};
    PString text(L"old", 3);
    EXPECT_CODE(PERR_OK, PUtils::binaryToStr(data, 3, text));
    EXPECT_TEXT(L"0x00, 0x7F, 0xA0", text);
    EXPECT_CODE(PERR_OK, PUtils::binaryToStr(data + 2, 1, text));
    EXPECT_TEXT(L"0xA0", text);
    EXPECT_CODE(PERR_INVALID_ARGUMENT, PUtils::binaryToStr(data, 0, text));
    EXPECT_CODE(PERR_INVALID_ARGUMENT, PUtils::binaryToStr(nullptr, 3, text));
    EXPECT_CODE(PERR_NO_MEMORY, PUtils::binaryToStr(data, ULONG_MAX / 4, text));
    EXPECT_TEXT(L"0xA0", text) << "as it was";
}

TEST(TextToBytes, AreANewArrayWithItsLength) {
    unsigned char* out = nullptr;
    unsigned long count = 77;
    for (wchar_t const* const text : {L"0X1", L"00", L"0x,", L"0x123", L"0x12 ,", L"0x1;0x2", L""})
        EXPECT_CODE(PERR_BAD_FORMAT, PUtils::strToBinary(text, out, count)) << text;
    EXPECT_EQ(nullptr, out);
    EXPECT_EQ(77U, count);

    EXPECT_CODE(PERR_OK, PUtils::strToBinary(L"0x00, 0x7F,0xa0,\t", out, count));
    EXPECT_EQ("\x00\x7F\xA0"sv, std::string(out, out + count));
    delete[] std::exchange(out, nullptr);
    EXPECT_CODE(PERR_OK, PUtils::strToBinary(L" ", out, count));
    EXPECT_EQ(0U, count);
    EXPECT_NE(nullptr, out);
    delete[] out;
}

TEST(TextToBytes, AreThoseOfItemsTakenOffOneByOne) {
    std::mt19937 random(SEED);
    for (int round = 0; round < 200'000; ++round) {
        std::wstring const text = _randomText(random, L"00xx1,, \t\0"sv, 11);
        PString const whole(text.data(), text.size());
        std::string expected;
        int const code = _readNaively(whole, expected);
        unsigned char* out = nullptr;
        unsigned long count = 0;
        ASSERT_CODE(code, PUtils::strToBinary(whole, out, count)) << testing::PrintToString(text);
        std::unique_ptr<unsigned char[]> const owner(out);
        if (code != PERR_OK) continue;
        ASSERT_EQ(expected, std::string(out, out + count)) << testing::PrintToString(text);
    }
}
