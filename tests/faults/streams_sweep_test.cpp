#include <clocale>

#include <data/bytes.h>
#include <faults/sweep.h>
#include <portinglayer/data_streams.h>

namespace {

/// In a locale of UTF-8.
struct StreamsSweep : testing::Test {
    StreamsSweep() { setlocale(LC_CTYPE, "C.UTF-8"); }

    PString const abc{L"abc", 3}, eAcute{L"\u00e9", 1}, padded{L"\u00e9x", 2};
    std::string const textItem = "09 85 00 00 00 02 C3 A9";
    std::string const listItem = "89 00 00 00 02 85 00 00 00 03 61 62 63 85 00 00 00 02 C3 A9";
    Bytes data;
    std::function<void()> const fresh = [this] { data = Bytes(); };
};

}  // namespace

TEST_F(StreamsSweep, AWrittenTextIsThereWholeOrNotAtAll) {
    auto const write = [&] { return PDataWriter(data).writeString(padded); };
    auto const look = [&](int code) { EXPECT_EQ(code == PERR_OK ? textItem : "", hex(data)); };
    sweep({"writeString", {PERR_NO_MEMORY}, write, fresh, look});
}

TEST_F(StreamsSweep, AWrittenListEndsWhereMemoryDid) {
    std::vector<PString> const texts{abc, padded};
    auto const write = [&] { return PDataWriter(data).writeStrings(texts); };
    auto const look = [&](int code) {
        EXPECT_TRUE(listItem.starts_with(hex(data))) << hex(data);
        EXPECT_EQ(code == PERR_OK, hex(data) == listItem);
    };
    sweep({"writeStrings", {PERR_NO_MEMORY}, write, fresh, look});
}

TEST_F(StreamsSweep, AReadTextIsKeptOrEmptyWhereMemoryRanOut) {
    Bytes const stream = bytes(textItem);
    PDataReader reader(stream);
    PString text;
    auto const before = [&] {
        text = L"kept";
        reader.setOffset(0);
    };
    auto const read = [&] { return reader.readString(text); };
    auto const look = [&](int code) {
        EXPECT_TRUE(code == PERR_OK ? text == eAcute : text == L"kept" || text.len() == 0);
        EXPECT_EQ(stream.size(), reader.getOffset()) << "behind the payload";
    };
    sweep({"readString", {PERR_NO_MEMORY}, read, before, look});
}

TEST_F(StreamsSweep, AReadListHoldsWhatWasReadBeforeMemoryRanOut) {
    Bytes const stream = bytes(listItem);
    std::vector<PString> found;
    auto const before = [&] { std::vector<PString>().swap(found); };
    auto const read = [&] { return PDataReader(stream).readStrings(found); };
    auto const look = [&](int code) {
        EXPECT_EQ(code == PERR_OK, found.size() == 2);
        for (PString const& text : found) EXPECT_TRUE(text == abc || text == eAcute);
    };
    sweep({"readStrings", {PERR_NO_MEMORY}, read, before, look});
}

TEST_F(StreamsSweep, AnIntegerWithoutMemoryLeavesTheBytesThatFoundRoom) {
    data.reserve(2);
    auto const append = [&] {
        try {
            PDataWriter(data).appendInt(0x01020304);
        } catch (std::bad_alloc const&) {
            return int{PERR_NO_MEMORY};
        }
        return int{PERR_OK};
    };
    EXPECT_CODE(PERR_NO_MEMORY, runFailing(1, true, append));
    EXPECT_EQ("01 02", hex(data));
}
