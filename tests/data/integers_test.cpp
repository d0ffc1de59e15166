#include <data/bytes.h>
#include <portinglayer/data_streams.h>
#include <support/expect.h>

template <typename Integer>
static void expectCarried(Integer value, std::string const& carried,
                          void (PDataWriter::*append)(Integer), int (PDataReader::*get)(Integer&)) {
    Bytes data{0x55};
    PDataWriter writer(data);
    (writer.*append)(value);
    EXPECT_EQ("55 " + carried, hex(data));

    PDataReader reader(data);
    reader.setOffset(1);
    Integer read = 0;
    EXPECT_CODE(PERR_OK, (reader.*get)(read));
    EXPECT_EQ(value, read);
    EXPECT_EQ(data.size(), reader.getOffset());
    reader.setOffset(2);
    EXPECT_CODE(PERR_DATA_SHORT, (reader.*get)(read));
    EXPECT_EQ(value, read);
    EXPECT_EQ(2U, reader.getOffset());
}

TEST(Integer, IsCarriedWithItsMostSignificantByteFirstAndReadWholeOrNotAtAll) {
    using In = PDataReader;
    using Out = PDataWriter;
    expectCarried<short>(-32767, "80 01", &Out::appendShort, &In::getShort);
    expectCarried<unsigned short>(0x8002, "80 02", &Out::appendWord, &In::getWord);
    expectCarried(-2, "FF FF FF FE", &Out::appendInt, &In::getInt);
    expectCarried(0x81020304U, "81 02 03 04", &Out::appendDword, &In::getDword);
    expectCarried(-2LL, "FF FF FF FF FF FF FF FE", &Out::appendLong, &In::getLong);
    expectCarried(0x8102030405060708ULL, "81 02 03 04 05 06 07 08", &Out::appendQword,
                  &In::getQword);
    EXPECT_EQ(1, getEndianness());
}

TEST(DataWriter, AppendsWhateverItsPositionAndKeepsItWhenErased) {
    Bytes data;
    PDataWriter writer(data);
    writer.appendByte(1);
    writer.setOffset(7);
    writer.appendByte(2);
    EXPECT_EQ("01 02", hex(data));
    writer.eraseData();
    EXPECT_EQ("", hex(data));
    EXPECT_EQ(7U, writer.getOffset());
}
