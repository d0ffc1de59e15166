#include <algorithm>
#include <climits>
#include <memory>

#include <text/models.h>

using namespace std::string_literals;

namespace {

template <typename T>
void _compare(int (*read)(PLiteral const&, T&), int (*write)(T, PString&), wchar_t const* format,
              std::wstring const& text) {
    T ours = 77, scanned = 77;
    int const code = swscanf(text.c_str(), format, &scanned) == 1 ? PERR_OK : PERR_BAD_FORMAT;
    ASSERT_EQ(read(text.c_str(), ours), code) << text << format;
    ASSERT_EQ(ours, scanned) << text << format;
    PString written;
    ASSERT_EQ(after(write(ours, written), written), L"0 " + std::to_wstring(ours));
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

TEST(Values, AreReadAndWrittenAsTheCLibraryDoes) {
    wchar_t const* const fronts[] = {L"922337203685477580", L"-922337203685477580",
                                     L"1844674407370955161", L"-", L""};
    for (int i = 0; i < 40000; ++i) {
        std::wstring const front = i % 2 == 0 ? pick(L"0123456789", 20) : fronts[dice() % 5];
        std::wstring const text = front + pick(L"00156789 -+x\v\x665", 6);
        _compare<int>(PUtils::strToInt32, PUtils::int32ToStr, L"%d", text);
        _compare<unsigned int>(PUtils::strToUint32, PUtils::uint32ToStr, L"%u", text);
        _compare<long long>(PUtils::strToInt64, PUtils::int64ToStr, L"%lld", text);
        _compare<unsigned long long>(PUtils::strToUint64, PUtils::uint64ToStr, L"%llu", text);
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
    wchar_t room[] = L"12\0"
                     L"45";
    PLiteral const edited(room);
    room[2] = L'3';
    char byte = 0;
    EXPECT_TRUE(PUtils::hexToByte(edited, byte) == PERR_OK && byte == 0x45) << "to the terminator";
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
