#include <algorithm>
#include <clocale>
#include <random>

#include <gtest/gtest.h>

#include <portinglayer/data_streams.h>

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* input, std::size_t size);

using Bytes = std::vector<unsigned char>;

static std::string hex(Bytes const& bytes) {
    std::string result;
    for (unsigned char const byte : bytes)
        result += {' ', "0123456789ABCDEF"[byte / 16], "0123456789ABCDEF"[byte % 16]};
    return result;
}

TEST(Streams, AreWrittenByteForByteAndNothingIsTakenBack) {
    Bytes data;
    PDataWriter writer(data);
    writer.appendByte(0xAB);
    writer.appendShort(-32767);
    writer.appendWord(32769);
    writer.appendInt(-2);
    writer.appendDword(0x01020304);
    writer.appendLong(-2);
    writer.appendQword(0x0102030405060708);
    EXPECT_EQ(hex(data), " AB 80 01 80 01 FF FF FF FE 01 02 03 04"
                         " FF FF FF FF FF FF FF FE 01 02 03 04 05 06 07 08");
    EXPECT_EQ(getEndianness(), 1);

    std::vector<PTargetInfo> records{{{PLiteral(L"ab"), 258}, {PLiteral(L"p"), {}}},
                                     {{{}, 7}, {{}, PLiteral(L"\u00e9")}}};
    writer.eraseData();
    EXPECT_EQ(PDataFormaterUtils::writePTargetInfoArray(writer, records), PERR_DATA_ENCODE);
    EXPECT_EQ(hex(data),
              " 07 00 00 00 02 09 85 00 00 00 02 61 62 07 00 00 01 02 09 85 00 00"
              " 00 01 70 09 85 00 00 00 00 09 85 00 00 00 00 07 00 00 00 07 09 85 00 00 00 00");
    PDataReader reader(data);
    EXPECT_EQ(PDataFormaterUtils::readPTargetInfoArray(reader, records), PERR_DATA_SHORT);
    EXPECT_EQ(records.size(), 3U) << "the list is appended to";
}

TEST(Streams, CarryOneByteForEachCharacter) {
    ASSERT_NE(setlocale(LC_CTYPE, "C.UTF-8"), nullptr);
    std::pair<wchar_t const*, std::string> const rows[] = {
        {L"a\u00e9", " 85 00 00 00 02 61 00"},
        {L"\u20acxyz", " 85 00 00 00 04 E2 82 AC 78"},
        {L"\u00e9", ""},
        {L"ab\xd800", ""},
    };
    for (auto const& [text, block] : rows) {
        SCOPED_TRACE(testing::PrintToString(text));
        int const code = block.empty() ? PERR_DATA_ENCODE : PERR_OK;
        Bytes bytes, item, list;
        EXPECT_EQ(PDataWriter(item).decodeUtf8(PLiteral(text), bytes), code);
        EXPECT_EQ(hex(bytes), block.empty() ? "" : block.substr(15));
        EXPECT_EQ(PDataWriter(item).writeString(PLiteral(text)), code);
        EXPECT_EQ(hex(item), block.empty() ? "" : " 09" + block);
        EXPECT_EQ(PDataWriter(list).writeStrings({PLiteral(L"x"), PLiteral(text)}), code);
        EXPECT_EQ(hex(list), " 89 00 00 00 02 85 00 00 00 01 78" + block) << "no rollback";
    }
    PString text;
    EXPECT_EQ(PDataReader(Bytes{'x'}).encodeUtf8({'a', 0, 'b'}, text), PERR_OK);
    EXPECT_EQ(PDataReader(Bytes{'x'}).encodeUtf8({}, text), PERR_DATA_DECODE);
    EXPECT_TRUE(text == L"a");
}

TEST(Streams, AgreeWithAPlainModelOnArbitraryBytes) {
    std::mt19937 random(std::random_device{}());
    auto const* const record = "\x09\x85zzz\x01p\x07zzz\x03\x09\x85zzz\x01q\x09\x85zzz\x02rs";
    char const* const parts[] = {
        record,    "\x07zzz\x01", "\x89zzz\x02", "\x89zzzz", "\x89\xFF\xFF\xFF\xFF",
        "\x85zzz", "\x09\x85zzz", "\x85zz\x01z", "\xC3\xA9", "\xE2\x82",
        "u",       "\x09",        "z",           "\x01",     "\xFF"};
    for (int round = 0; round < 30000; ++round) {
        Bytes input(9);  // the locale and the operations
        std::ranges::generate(input, [&] { return static_cast<unsigned char>(random()); });
        while (random() % 8 != 0) {
            std::string const part = parts[random() % std::size(parts)];
            input.insert(input.end(), part.begin(), part.end());
            if (random() % 16 == 0) input.insert(input.end(), 260, 'a');
        }
        std::ranges::replace(input, 'z', '\0');  // no zero byte in a literal
        ASSERT_NO_THROW(LLVMFuzzerTestOneInput(input.data(), input.size())) << hex(input);
    }
}
