#include <algorithm>
#include <climits>
#include <memory>

#include <text/models.h>

using namespace std::string_literals;

namespace {

template <typename T>
void _writeAndRead(int (*write)(T, PString&), int (*read)(PLiteral const&, T&), T value) {
    PString text;
    ASSERT_EQ(after(write(value, text), text), L"0 " + std::to_wstring(value));
    T back = 0;
    ASSERT_EQ(text.insert(0, L"\t ", 2) + text.cat(L"x", 1) + read(text, back), PERR_OK);
    ASSERT_EQ(back, value) << text.ptr();
}

/// What strToBinary does, on a text that is really taken apart item by item.
std::string _naiveBinary(PString rest) {
    std::string bytes;
    bool good = rest.len() > 0;
    while (good && rest.trim() == PERR_OK && rest.len() > 0) {
        unsigned long comma = rest.len();
        (void)rest.chr(L',', comma, false, false);  // without one the item is all that is left
        bytes.push_back(0);
        good = rest.startsWith(L"0x", false) &&
               PUtils::hexToByte(PString(rest.ptr() + 2, comma - 2), bytes.back()) == PERR_OK;
        rest.erase(0, std::min(comma + 1, rest.len()));
    }
    return good ? bytes : "bad";
}

}  // namespace

// How they are read from any text is for a fuzz target, beside the C library.
TEST(Values, AreWrittenAsTheStandardLibraryWritesThem) {
    for (int i = 0; i < 20000; ++i) {
        unsigned long long const value = i < 64 ? 1ULL << i : dice() >> dice() % 64;
        _writeAndRead(PUtils::int32ToStr, PUtils::strToInt32, static_cast<int>(value));
        _writeAndRead(PUtils::uint32ToStr, PUtils::strToUint32, static_cast<unsigned int>(value));
        _writeAndRead(PUtils::int64ToStr, PUtils::strToInt64, static_cast<long long>(value));
        _writeAndRead(PUtils::uint64ToStr, PUtils::strToUint64, value);
    }
    for (bool const value : {true, false}) {
        PString word;
        bool read = !value;
        EXPECT_EQ(after(PUtils::boolToStr(value, word), word), value ? L"0 true" : L"0 false");
        EXPECT_TRUE(PUtils::strToBool(word, read) == PERR_OK && read == value) << value;
    }
}

TEST(Digits, AreReadOneByOneAndAsBytes) {
    std::wstring const hex = L"0123456789abcdefABCDEF", dec = hex.substr(0, 10);
    for (int i = 0; i < 40000; ++i) {
        std::wstring const text = pick(hex + L"00000+-++--xxxXgGx/:@` \xff", 3);
        SCOPED_TRACE(testing::PrintToString(text));
        auto const end = text.npos, n = i % 2 == 0 ? text.size() : P_WHOLE_STRING;
        size_t const sign = text.find_first_of(L"+-") == 0 ? 1 : 0;
        ASSERT_EQ(PUtils::isDec(text.c_str(), n, false), text.find_first_not_of(dec) == end);
        ASSERT_EQ(PUtils::isDec(text.c_str(), n, true), text.find_first_not_of(dec, sign) == end);
        ASSERT_EQ(PUtils::isHex(text.c_str(), n), text.find_first_not_of(hex) == end);
        char digit = 77, byte = 77, scanned = 77;
        size_t const place = hex.find(PLiteral::tolower(text[0]));
        ASSERT_EQ(PUtils::hexToDec(text[0], digit), place < 16 ? PERR_OK : PERR_BAD_FORMAT);
        ASSERT_EQ(static_cast<size_t>(digit), place < 16 ? place : 77);
        bool const good = text.size() < 3 && swscanf(text.c_str(), L"%hhx", &scanned) == 1;
        ASSERT_EQ(PUtils::hexToByte(text.c_str(), byte), good ? PERR_OK : PERR_BAD_FORMAT);
        ASSERT_EQ(byte, scanned);
    }
}

TEST(Bytes, AreWrittenAsItemsAndReadAsIfItemsWereTakenOffOneByOne) {
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
    unsigned char const data[] = {0x00, 0x7F, 0xA0};
    PString text;
    EXPECT_EQ(after(PUtils::binaryToStr(data, 3, text), text), L"0 0x00, 0x7F, 0xA0");
    EXPECT_EQ(PUtils::binaryToStr(data, 0, text), PERR_INVALID_ARGUMENT);
    EXPECT_EQ(PUtils::binaryToStr(data, ULONG_MAX / 4, text), PERR_NO_MEMORY);
}

TEST(ResultCodes, KeepTheirNumbers) {
    std::string edges;  // the first of each run of codes, and the first behind it
    for (int code = 1; code > -9999; --code)
        if (!perrorName(code) != !perrorName(code + 1)) edges += std::to_string(code) + " ";
    EXPECT_EQ(edges, "0 -1 -500 -513 -601 -602 -611 -616 -619 -629 -630 -631 -701 -706 -711 -718 "
                     "-721 -730 -731 -739 -742 -745 -9001 -9003 -9005 -9007 ");
}
