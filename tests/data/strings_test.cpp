#include <chrono>
#include <random>

#include <fuzz/stream_model.h>

#include "stream_bytes.h"

namespace {

constexpr char const* C = "C";
constexpr char const* UTF8 = "C.UTF-8";

PString const KEPT(L"kept", 4);

/// A list that claims 4294967295 elements and holds 10,000 times this one.
std::string hugeListOf(std::string const& element) {
    std::string list = "89 FF FF FF FF";
    for (int i = 0; i < 10000; ++i) list += element;
    return list;
}

}  // namespace

TEST(Strings, AreWrittenWithOneByteForEachCharacterAndReadUpToTheFirstZero) {
    struct {
        char const* locale;
        wchar_t const* text;
        char const* block;  // null where the text cannot be written
        wchar_t const* readBack;
    } const rows[] = {
        {C, L"", " 85 00 00 00 00", L""},
        {C, L"abc", " 85 00 00 00 03 61 62 63", L"abc"},
        {C, L"a\u00e9", nullptr, nullptr},
        {UTF8, L"abc", " 85 00 00 00 03 61 62 63", L"abc"},
        {UTF8, L"a\u00e9", " 85 00 00 00 02 61 00", L"a"},
        {UTF8, L"\u00e9z", " 85 00 00 00 02 C3 A9", L"\u00e9"},
        {UTF8, L"\u20acxyz", " 85 00 00 00 04 E2 82 AC 78", L"\u20acx"},
        {UTF8, L"\u00e9", nullptr, nullptr},
        {UTF8, L"ab\xd800", nullptr, nullptr},
    };
    for (auto const& row : rows) {
        LocaleGuard const locale(row.locale);
        SCOPED_TRACE(std::string(row.locale) + (row.block ? row.block : " refused"));
        int const code = row.block == nullptr ? PERR_DATA_ENCODE : PERR_OK;
        std::string const block = row.block ? row.block : "";
        Bytes item;
        Bytes list;
        EXPECT_EQ(PDataWriter(item).writeString(PLiteral(row.text)), code);
        EXPECT_EQ(PDataWriter(list).writeStrings({PLiteral(L"x"), PLiteral(row.text)}), code);
        EXPECT_EQ(hex(item), row.block ? "09" + block : "");
        EXPECT_EQ(hex(list), "89 00 00 00 02 85 00 00 00 01 78" + block);
        if (row.block == nullptr) continue;

        PDataReader reader(item);
        PString read(KEPT);
        EXPECT_EQ(reader.readString(read), PERR_OK);
        EXPECT_TRUE(read == row.readBack && reader.getOffset() == item.size());
        std::vector<PString> texts{KEPT};
        EXPECT_EQ(PDataReader(list).readStrings(texts), PERR_OK);
        EXPECT_TRUE(texts == (std::vector<PString>{KEPT, PLiteral(L"x"), PLiteral(row.readBack)}));
    }
}

TEST(Strings, ConversionsUseNothingOfTheirStream) {
    Bytes data = bytes("09");
    Bytes out = bytes("AA");
    EXPECT_EQ(PDataWriter(data).decodeUtf8(PLiteral(L"bc"), out), PERR_OK);
    EXPECT_EQ(PDataWriter(data).decodeUtf8(PString(), out), PERR_DATA_ENCODE);
    EXPECT_EQ(hex(out) + " | " + hex(data), "AA 62 63 | 09");
    PString text(KEPT);
    EXPECT_EQ(PDataReader(data).encodeUtf8({}, text), PERR_DATA_DECODE);
    EXPECT_TRUE(text == KEPT);
    EXPECT_EQ(PDataReader(data).encodeUtf8(bytes("61 00 62"), text), PERR_OK);
    EXPECT_TRUE(text == L"a");
}

TEST(Strings, OfAnyLengthAreReadBack) {
    for (std::size_t const length : {254, 255, 256, 257, 100000}) {
        std::wstring const text(length, L'x');
        Bytes data;
        PString read(KEPT);
        EXPECT_EQ(PDataWriter(data).writeString(PLiteral(text.c_str())), PERR_OK) << length;
        EXPECT_EQ(PDataReader(data).readString(read), PERR_OK) << length;
        EXPECT_TRUE(read == text.c_str()) << length;
    }
}

TEST(Strings, FailedReadsStopInTimeAndLeaveThePositionThere) {
    struct {
        std::string data;
        int code;
        unsigned long offset;
        unsigned long elements;  // of a list
    } const rows[] = {
        {"", PERR_DATA_SHORT, 0, 0},
        {"0A 09", PERR_DATA_MARKER, 1, 0},
        {"09 84 00 00 00", PERR_DATA_SHORT, 1, 0},
        {"09 84 00 00 00 00", PERR_DATA_MARKER, 1, 0},
        {"09 85 00 00 00 05 61 62", PERR_DATA_SHORT, 6, 0},
        {"09 85 FF FF FF FF 61 62", PERR_DATA_SHORT, 6, 0},
        {"09 85 00 00 00 02 C3 28", PERR_DATA_DECODE, 8, 0},
        {"09 85 00 00 00 01 C3 A9", PERR_DATA_DECODE, 7, 0},  // cut by the payload's end
        {"09 85 00 00 00 01 00", PERR_DATA_DECODE, 7, 0},
        {"89 00 00", PERR_DATA_SHORT, 1, 0},
        {"89 00 00 00 00", PERR_DATA_SHORT, 5, 0},
        {"89 00 00 00 00 AA", PERR_OK, 5, 0},
        {"89 00 00 00 02 84 00 00 00 00 85", PERR_DATA_MARKER, 5, 0},
        {"89 00 00 00 02 84 00 00 00", PERR_DATA_SHORT, 5, 0},
        {"89 00 00 00 02 85 00 00 00 09 85 00 00 00 01 61", PERR_OK, 16, 1},
        {"89 00 00 00 03 85 00 00 00 01 61 85 00 00 00 01 00", PERR_DATA_DECODE, 17, 1},
        {hugeListOf(" 85 00 00 00 00"), PERR_DATA_SHORT, 50005, 10000},
        {hugeListOf(" 85 FF FF FF FF"), PERR_DATA_SHORT, 50005, 0},
        {hugeListOf(" 84 00 00 00 00"), PERR_DATA_MARKER, 5, 0},
    };
    LocaleGuard const locale(UTF8);
    for (auto const& row : rows) {
        Bytes const data = bytes(row.data);
        PDataReader reader(data);
        PString text(KEPT);
        std::vector<PString> list;
        auto const start = std::chrono::steady_clock::now();
        bool const isList = !data.empty() && data[0] == 0x89;
        EXPECT_EQ(isList ? reader.readStrings(list) : reader.readString(text), row.code)
            << row.data;
        EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(1)) << row.data;
        EXPECT_EQ(reader.getOffset(), row.offset) << row.data;
        EXPECT_EQ(list.size(), row.elements) << row.data;
        EXPECT_TRUE(text == KEPT) << row.data;
    }
}

TEST(Streams, AgreeWithAPlainModelOnArbitraryBytes) {
    unsigned int const seed = std::random_device()();
    std::mt19937 random(seed);
    auto const below = [&](unsigned long limit) { return random() % limit; };
    char const* const parts[] = {"09", "85", "89 00 00 00", "07 00 00 00", "00 00 00 01", "00",
                                 "02", "61", "C3 A9",       "FF FF FF FF", "85 00 00 00", "E2 82"};
    for (int round = 0; round < 20000; ++round) {
        LocaleGuard const locale(round % 2 == 0 ? C : UTF8);
        Bytes data;
        Bytes script;
        for (unsigned long i = below(40); i > 0; --i) {
            Bytes const part = bytes(parts[below(std::size(parts))]);
            data.insert(data.end(), part.begin(), part.end());
        }
        for (unsigned long i = below(12); i > 0; --i)
            script.push_back(static_cast<unsigned char>(below(256)));
        ASSERT_EQ(differenceFromModel(script, data), "")
            << "seed " << seed << ", data " << hex(data) << ", script " << hex(script);
    }
}
