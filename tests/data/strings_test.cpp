#include <data/bytes.h>
#include <portinglayer/data_streams.h>
#include <support/expect.h>
#include <support/locales.h>

namespace {

/// Texts beyond ASCII are converted in a locale of UTF-8.
struct Utf8 : testing::Test {
    Utf8() { EXPECT_NE(nullptr, setlocale(LC_CTYPE, "C.UTF-8")); }
};
using StringItem = Utf8;
using StringList = Utf8;
using Conversion = Utf8;

PString text(std::wstring const& characters) {
    return {characters.data(), characters.size()};
}

}  // namespace

TEST_F(StringItem, IsWrittenWithOneByteForEachCharacterOrNotAtAll) {
    Bytes data;
    PDataWriter writer(data);
    EXPECT_CODE(PERR_OK, writer.writeString(text(L"\u20acxyz")));
    EXPECT_EQ("09 85 00 00 00 04 E2 82 AC 78", hex(data));
    EXPECT_CODE(PERR_DATA_ENCODE, writer.writeString(text(L"\u00e9"))) << "nothing fits";
    EXPECT_CODE(PERR_DATA_ENCODE, writer.writeString(text(L"ab\xd800"))) << "no character";
    EXPECT_EQ("09 85 00 00 00 04 E2 82 AC 78", hex(data));
}

TEST_F(StringItem, IsReadUpToItsFirstZeroAndFailsWhereItStops) {
    Bytes const data = bytes("09 85 00 00 00 03 61 00 62 09 85 00 00 00 05 61");
    PDataReader reader(data);
    PString read;
    EXPECT_CODE(PERR_OK, reader.readString(read));
    EXPECT_TEXT(L"a", read);
    EXPECT_CODE(PERR_DATA_SHORT, reader.readString(read));
    EXPECT_TEXT(L"a", read);
    EXPECT_EQ(15U, reader.getOffset()) << "in front of the payload that is cut";
}

TEST_F(StringList, IsWrittenAsItsCountAndItsTextBlocksAndNothingIsTakenBack) {
    Bytes data;
    PDataWriter writer(data);
    EXPECT_CODE(PERR_OK, writer.writeStrings({text(L"a"), text(L"")}));
    EXPECT_EQ("89 00 00 00 02 85 00 00 00 01 61 85 00 00 00 00", hex(data));
    writer.eraseData();
    EXPECT_CODE(PERR_DATA_ENCODE, writer.writeStrings({text(L"a"), text(L"\u00e9"), text(L"b")}));
    EXPECT_EQ("89 00 00 00 03 85 00 00 00 01 61", hex(data)) << "up to the one that fails";
}

TEST_F(StringList, IsReadBehindWhatTheListHoldsAndTriesEveryElement) {
    // The first is cut, and the second is found in it.
    Bytes const data = bytes("89 00 00 00 02 85 00 00 00 09 85 00 00 00 01 62");
    PDataReader reader(data);
    std::vector<PString> list{text(L"kept")};
    EXPECT_CODE(PERR_OK, reader.readStrings(list));
    ASSERT_EQ(2U, list.size());
    EXPECT_TEXT(L"kept", list[0]);
    EXPECT_TEXT(L"b", list[1]);
}

TEST_F(Conversion, UsesNothingOfItsObjectAndRefusesWhatIsEmpty) {
    Bytes own = bytes("01"), made = bytes("02");
    PDataWriter writer(own);
    PDataReader reader(own);
    PString read;
    EXPECT_CODE(PERR_OK, writer.decodeUtf8(text(L"a\u00e9"), made));
    EXPECT_CODE(PERR_DATA_ENCODE, writer.decodeUtf8(PString(), made));
    EXPECT_EQ("02 61 00", hex(made));
    EXPECT_CODE(PERR_OK, reader.encodeUtf8(bytes("C3 A9"), read));
    EXPECT_CODE(PERR_DATA_DECODE, reader.encodeUtf8({}, read));
    EXPECT_TEXT(L"\u00e9", read);
    EXPECT_CODE(PERR_OK, reader.encodeUtf8(bytes("61 62"), read));
    EXPECT_STREQ(L"ab", read.ptr()) << "it is terminated";
    EXPECT_EQ("01", hex(own));
    EXPECT_EQ(0U, reader.getOffset());
}

TEST(ConversionInOtherCodesets, LeavesZerosWhereACharacterDoesNotFit) {
    Bytes made;
    MadeLocale const japanese("SHIFT_JIS");
    EXPECT_CODE(PERR_OK, PDataWriter(made).decodeUtf8(text(L"a\u00a2"), made));
    EXPECT_EQ("61 00", hex(made));
}

TEST(ConversionInOtherCodesets, RefusesTheAsciiThatTheyLack) {
    Bytes made;
    MadeLocale const chinese("GB_1988-80");
    EXPECT_CODE(PERR_DATA_ENCODE, PDataWriter(made).decodeUtf8(text(L"a$"), made));
}
