#include <data/bytes.h>
#include <portinglayer/data_streams.h>
#include <support/expect.h>

namespace {

using Records = PDataFormaterUtils;

PTargetInfo record(wchar_t const* name, unsigned int id, wchar_t const* primary,
                   wchar_t const* secondary) {
    return {{PLiteral(name), id}, {PLiteral(primary), PLiteral(secondary)}};
}

std::string const AB = "09 85 00 00 00 02 61 62 07 00 00 01 02";      // name ab, number 258
std::string const P_Q = "09 85 00 00 00 01 70 09 85 00 00 00 01 71";  // address p and q

}  // namespace

TEST(Record, IsCarriedMemberByMember) {
    Bytes data;
    PDataWriter writer(data);
    EXPECT_CODE(PERR_OK, Records::writePTargetInfo(writer, record(L"ab", 258, L"p", L"q")));
    EXPECT_EQ(AB + " " + P_Q, hex(data));

    PDataReader reader(data);
    PTargetInfo info{};
    EXPECT_CODE(PERR_OK, Records::readPTargetInfo(reader, info));
    EXPECT_TEXT(L"ab", info.targetId.name);
    EXPECT_EQ(258U, info.targetId.id);
    EXPECT_TEXT(L"p", info.address.primary);
    EXPECT_TEXT(L"q", info.address.secondary);
    EXPECT_EQ(data.size(), reader.getOffset());
}

TEST(RecordList, IsWrittenUpToTheTextThatFailsAndNothingIsTakenBack) {
    Bytes data;
    PDataWriter writer(data);
    PTargetInfo const good = record(L"ab", 258, L"p", L"q");
    PTargetInfo const bad = record(L"ab", 258, L"\xd800", L"q");
    EXPECT_CODE(PERR_DATA_ENCODE, Records::writePTargetInfoArray(writer, {good, bad, good}));
    EXPECT_EQ("07 00 00 00 03 " + AB + " " + P_Q + " " + AB, hex(data));
}

TEST(RecordList, IsReadBehindWhatTheListHoldsUpToTheRecordThatFails) {
    Bytes const data = bytes("07 00 00 00 03 " + AB + " " + P_Q + " 85");
    PDataReader reader(data);
    std::vector<PTargetInfo> list{record(L"kept", 1, L"", L"")};
    EXPECT_CODE(PERR_DATA_MARKER, Records::readPTargetInfoArray(reader, list));
    ASSERT_EQ(2U, list.size());
    EXPECT_TEXT(L"kept", list[0].targetId.name);
    EXPECT_TEXT(L"ab", list[1].targetId.name);
}
