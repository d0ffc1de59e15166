#include <data/bytes.h>
#include <portinglayer/data_streams.h>
#include <support/expect.h>
#include <support/locales.h>

TEST(StringItem, IsWrittenWithOneByteForEachCharacterOrNotAtAll) {
    setlocale(LC_CTYPE, "C.UTF-8");
    Bytes data;
    PDataWriter writer(data);
    EXPECT_CODE(PERR_OK, writer.writeString(PLiteral(L"\u20acxyz")));
    EXPECT_EQ("09 85 00 00 00 04 E2 82 AC 78", hex(data));
    EXPECT_CODE(PERR_DATA_ENCODE, writer.writeString(PLiteral(L"\u00e9"))) << "nothing fits";
    EXPECT_CODE(PERR_DATA_ENCODE, writer.writeString(PLiteral(L"ab\xd800"))) << "no character";
    EXPECT_EQ("09 85 00 00 00 04 E2 82 AC 78", hex(data));
    writer.eraseData();
    EXPECT_CODE(PERR_OK, writer.writeString(PString(L"abcdefgh\0j", 10)));
    EXPECT_EQ("09 85 00 00 00 0A 61 62 63 64 65 66 67 68 00 00", hex(data));
}

TEST(StringList, IsWrittenAsItsCountAndItsTextBlocksUpToTheOneThatFails) {
    Bytes data;
    PDataWriter writer(data);
    EXPECT_CODE(PERR_OK, writer.writeStrings({PString(L"a\0b", 3), PLiteral()}));
    EXPECT_EQ("89 00 00 00 02 85 00 00 00 03 61 00 00 85 00 00 00 00", hex(data));
    writer.eraseData();
    std::vector<PString> const list{PLiteral(L"a"), PLiteral(L"\xd800"), PLiteral(L"b")};
    EXPECT_CODE(PERR_DATA_ENCODE, writer.writeStrings(list));
    EXPECT_EQ("89 00 00 00 03 85 00 00 00 01 61", hex(data));
}

TEST(StringConversion, UsesNothingOfItsObjectAndRefusesWhatIsEmpty) {
    setlocale(LC_CTYPE, "C.UTF-8");
    Bytes own{1}, made{2};
    PDataWriter writer(own);
    PDataReader reader(own);
    PString read;
    EXPECT_CODE(PERR_OK, writer.decodeUtf8(PLiteral(L"a\u00e9"), made));
    EXPECT_CODE(PERR_DATA_ENCODE, writer.decodeUtf8(PString(), made));
    EXPECT_EQ("02 61 00", hex(made));
    EXPECT_CODE(PERR_OK, reader.encodeUtf8({0xC3, 0xA9}, read));
    EXPECT_CODE(PERR_DATA_DECODE, reader.encodeUtf8({}, read));
    EXPECT_TEXT(L"\u00e9", read);
    EXPECT_CODE(PERR_OK, reader.encodeUtf8({0x61, 0x62}, read));
    EXPECT_STREQ(L"ab", read.ptr()) << "it is terminated";
    EXPECT_EQ("01", hex(own));
}

TEST(StringConversion, LeavesZerosWhereACharacterDoesNotFitAndFollowsTheAsciiOfTheCodeset) {
    Bytes made;
    PString read;
    MadeLocale const japanese("SHIFT_JIS");
    EXPECT_CODE(PERR_OK, PDataWriter(made).decodeUtf8(PLiteral(L"a\u00a2"), made));
    EXPECT_EQ("61 00", hex(made));
    EXPECT_CODE(PERR_OK, PDataReader(made).encodeUtf8({0x61, 0x5C}, read));
    EXPECT_TEXT(L"a\u00a5", read);
    MadeLocale const chinese("GB_1988-80");
    EXPECT_CODE(PERR_DATA_ENCODE, PDataWriter(made).decodeUtf8(PLiteral(L"a$"), made));
}
