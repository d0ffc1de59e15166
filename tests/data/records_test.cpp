#include "stream_bytes.h"

static_assert(sizeof(PAddress) == 48 && sizeof(PTargetID) == 32 && sizeof(PTargetInfo) == 80);
static_assert(sizeof(PDataFormaterUtils) == 8 && std::has_virtual_destructor_v<PDataFormaterUtils>);

namespace {

using U = PDataFormaterUtils;

std::string const FIRST = " 09 85 00 00 00 02 61 62 07 00 00 01 02"
                          " 09 85 00 00 00 01 70 09 85 00 00 00 00";
std::string const SECOND = " 09 85 00 00 00 00 07 FF FF FF FF"
                           " 09 85 00 00 00 00 09 85 00 00 00 01 73";

PTargetInfo record(wchar_t const* name, unsigned int id, wchar_t const* primary,
                   wchar_t const* secondary) {
    return {{PLiteral(name), id}, {PLiteral(primary), PLiteral(secondary)}};
}

}  // namespace

TEST(Records, ListsAreReadAndWrittenByteForByteUpToTheRecordThatFails) {
    std::vector<PTargetInfo> list{record(L"ab", 258, L"p", L""),
                                  record(L"", 4294967295, L"", L"s")};
    Bytes data;
    PDataWriter writer(data);
    EXPECT_EQ(U::writePTargetInfoArray(writer, list), PERR_OK);
    EXPECT_EQ(hex(data), "07 00 00 00 02" + FIRST + SECOND);

    PDataReader reader(data);
    EXPECT_EQ(U::readPTargetInfoArray(reader, list), PERR_OK);
    EXPECT_EQ(reader.getOffset(), data.size());
    ASSERT_EQ(list.size(), 4U) << "the list is appended to";
    list[3].address.secondary = L"\u00e9";
    writer.eraseData();
    EXPECT_EQ(U::writePTargetInfoArray(writer, list), PERR_DATA_ENCODE);
    EXPECT_EQ(hex(data) + " 09 85 00 00 00 01 73",
              "07 00 00 00 04" + FIRST + SECOND + FIRST + SECOND);
}

TEST(Records, FailedReadsKeepTheRecordsAndMembersBefore) {
    struct {
        std::string data;
        int code;
        unsigned long offset;
        unsigned long records;
    } const rows[] = {
        {"07 00 00 00 00", PERR_OK, 5, 0},
        {"07 00 00 00", PERR_DATA_SHORT, 0, 0},
        {"08 00 00 00 00", PERR_DATA_MARKER, 0, 0},
        {"07 00 00 00 02" + FIRST + " 09 85 00 00 00 00 07 00", PERR_DATA_SHORT, 37, 1},
        {"07 FF FF FF FF" + FIRST + " 0A", PERR_DATA_MARKER, 32, 1},
    };
    for (auto const& row : rows) {
        Bytes const data = bytes(row.data);
        PDataReader reader(data);
        std::vector<PTargetInfo> list;
        EXPECT_EQ(U::readPTargetInfoArray(reader, list), row.code) << row.data;
        EXPECT_EQ(reader.getOffset(), row.offset) << row.data;
        EXPECT_EQ(list.size(), row.records) << row.data;
    }
    Bytes const data = bytes("09 85 00 00 00 01 61 08 00 00 00 01");
    PDataReader reader(data);
    PTargetInfo info = record(L"old", 7, L"", L"");
    EXPECT_EQ(U::readPTargetInfo(reader, info), PERR_DATA_MARKER);
    EXPECT_TRUE(info.targetId.name == L"a" && info.targetId.id == 7 && reader.getOffset() == 7);
}
