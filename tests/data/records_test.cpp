#include <data/bytes.h>
#include <portinglayer/data_streams.h>
#include <support/expect.h>

static std::string const NAME_NUMBER = "09 85 00 00 00 02 61 62 07 00 00 01 02";  // ab, 258
static std::string const ADDRESS = "09 85 00 00 00 01 70 09 85 00 00 00 01 71";   // p, q
static PTargetInfo const RECORD{{PLiteral(L"ab"), 258}, {PLiteral(L"p"), PLiteral(L"q")}};

TEST(RecordList, IsWrittenMemberByMemberUpToTheTextThatFails) {
    Bytes data;
    PDataWriter writer(data);
    EXPECT_CODE(PERR_OK, PDataFormaterUtils::writePTargetInfoArray(writer, {RECORD}));
    EXPECT_EQ("07 00 00 00 01 " + NAME_NUMBER + " " + ADDRESS, hex(data));
    writer.eraseData();
    PTargetInfo bad = RECORD;
    bad.address.primary = L"\xd800";
    EXPECT_CODE(PERR_DATA_ENCODE,
                PDataFormaterUtils::writePTargetInfoArray(writer, {RECORD, bad, RECORD}));
    EXPECT_EQ("07 00 00 00 03 " + NAME_NUMBER + " " + ADDRESS + " " + NAME_NUMBER, hex(data));
}
