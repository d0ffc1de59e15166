#include <clocale>

#include <data/bytes.h>
#include <faults/sweep.h>
#include <portinglayer/data_streams.h>

namespace {

std::string const LIST = "89 00 00 00 02 85 00 00 00 03 61 62 63 85 00 00 00 02 C3 A9";
PString const ABC{L"abc", 3}, E_ACUTE{L"\u00e9", 1}, PADDED{L"\u00e9x", 2};

}  // namespace

TEST(StreamsSweep, AWrittenListEndsWhereMemoryDid) {
    ASSERT_NE(nullptr, setlocale(LC_CTYPE, "C.UTF-8"));
    std::vector<PString> const texts{ABC, PADDED};
    Bytes data;
    auto const fresh = [&] { data = Bytes(); };
    auto const write = [&] { return PDataWriter(data).writeStrings(texts); };
    auto const look = [&](int code) {
        EXPECT_TRUE(LIST.starts_with(hex(data))) << hex(data);
        EXPECT_EQ(code == PERR_OK, hex(data) == LIST);
    };
    sweep({"writeStrings", {PERR_NO_MEMORY}, write, fresh, look});
}

TEST(StreamsSweep, AReadListHoldsWhatWasReadBeforeMemoryRanOut) {
    ASSERT_NE(nullptr, setlocale(LC_CTYPE, "C.UTF-8"));
    Bytes const stream = bytes(LIST);
    std::vector<PString> found;
    auto const before = [&] { std::vector<PString>().swap(found); };
    auto const read = [&] { return PDataReader(stream).readStrings(found); };
    auto const look = [&](int code) {
        EXPECT_EQ(code == PERR_OK, found.size() == 2);
        for (PString const& text : found) EXPECT_TRUE(text == ABC || text == E_ACUTE);
    };
    sweep({"readStrings", {PERR_NO_MEMORY}, read, before, look});
}

TEST(StreamsSweep, AnIntegerWithoutMemoryLeavesTheBytesThatFoundRoom) {
    Bytes data;
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
