#include "stream_bytes.h"

static_assert(sizeof(PDataFormater) == 16 && sizeof(PDataReader) == 24 &&
              sizeof(PDataWriter) == 24);
static_assert(std::has_virtual_destructor_v<PDataFormater>);

namespace {

template <typename Integer>
void expectBothWays(char const* written, Integer value, void (PDataWriter::*append)(Integer),
                    int (PDataReader::*get)(Integer&)) {
    SCOPED_TRACE(written);
    Bytes data = bytes("AA");
    PDataWriter writer(data);
    (writer.*append)(value);
    EXPECT_EQ(hex(data), std::string("AA ") + written);

    PDataReader reader(data);
    Integer read = 42;
    for (unsigned long const cut : {data.size(), 2UL, 0UL - 1, 0UL - sizeof value}) {
        reader.setOffset(cut);
        EXPECT_EQ((reader.*get)(read), PERR_DATA_SHORT) << cut;
        EXPECT_TRUE(read == 42 && reader.getOffset() == cut) << cut;
    }
    reader.setOffset(1);
    EXPECT_EQ((reader.*get)(read), PERR_OK);
    EXPECT_TRUE(read == value && reader.getOffset() == data.size());
}

}  // namespace

TEST(Integers, TravelMostSignificantByteFirstAndAreReadOnlyWhole) {
    using W = PDataWriter;
    using R = PDataReader;
    expectBothWays<short>("80 01", -32767, &W::appendShort, &R::getShort);
    expectBothWays<unsigned short>("80 01", 32769, &W::appendWord, &R::getWord);
    expectBothWays<int>("FF FF FF FE", -2, &W::appendInt, &R::getInt);
    expectBothWays<unsigned int>("FF FF FF FE", 4294967294, &W::appendDword, &R::getDword);
    expectBothWays<long long>("FF FF FF FF FF FF FF FE", -2, &W::appendLong, &R::getLong);
    expectBothWays<unsigned long long>("01 02 03 04 05 06 07 08", 0x0102030405060708,
                                       &W::appendQword, &R::getQword);
    EXPECT_EQ(getEndianness(), 1);
}

TEST(Integers, ReaderFollowsTheVectorThroughErasingAndGrowth) {
    Bytes data;
    PDataWriter writer(data);
    PDataReader reader(data);
    writer.setOffset(7);
    writer.appendByte(0xAB);
    unsigned short value = 0;
    EXPECT_EQ(reader.getWord(value), PERR_DATA_SHORT);
    writer.appendByte(0xCD);
    EXPECT_EQ(reader.getWord(value), PERR_OK);
    EXPECT_EQ(value, 0xABCD);
    writer.eraseData();
    reader.setOffset(0);
    EXPECT_EQ(reader.getWord(value), PERR_DATA_SHORT);
    EXPECT_GE(data.capacity(), 2U) << "erasing keeps the memory";
    EXPECT_EQ(writer.getOffset(), 7U);
}
