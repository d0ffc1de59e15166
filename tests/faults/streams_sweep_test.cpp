#include <clocale>

#include <data/bytes.h>
#include <faults/sweep.h>
#include <portinglayer/data_streams.h>

namespace {

/// Texts, records and their streams, whole.
struct StreamsSweep : testing::Test {
    StreamsSweep() {
        setlocale(LC_CTYPE, "C.UTF-8");
        PDataWriter strings(stringStream), records(recordStream);
        EXPECT_CODE(PERR_OK, strings.writeStrings(texts));
        EXPECT_CODE(PERR_OK, PDataFormaterUtils::writePTargetInfoArray(records, infos));
    }

    std::vector<PString> const texts{PLiteral(L"abc"), PLiteral(L"\u00e9xx"), PLiteral(L"")};
    std::vector<PTargetInfo> const infos{{{texts[0], 1}, {texts[1], texts[0]}},
                                         {{texts[1], 2}, {texts[0], texts[0]}}};
    Bytes stringStream, recordStream;
};

bool startsWith(Bytes const& whole, Bytes const& part) {
    return part.size() <= whole.size() && std::equal(part.begin(), part.end(), whole.begin());
}

}  // namespace

TEST_F(StreamsSweep, AWrittenTextIsThereWholeOrNotAtAll) {
    Bytes data;
    auto const fresh = [&] { data = Bytes{0x55}; };
    auto const item = [&] { return PDataWriter(data).writeString(texts[1]); };
    auto const added = [&](int code) {
        EXPECT_EQ(code == PERR_OK ? "55 09 85 00 00 00 03 C3 A9 78" : "55", hex(data));
    };
    sweep({"writeString", {PERR_NO_MEMORY}, item, fresh, added});
}

TEST_F(StreamsSweep, AWrittenListEndsWhereMemoryDid) {
    Bytes data;
    auto const fresh = [&] { data = Bytes(); };
    auto const strings = [&] { return PDataWriter(data).writeStrings(texts); };
    auto const startOf = [&](int code) {
        EXPECT_TRUE(startsWith(stringStream, data)) << hex(data);
        EXPECT_EQ(code == PERR_OK, data == stringStream);
    };
    sweep({"writeStrings", {PERR_NO_MEMORY}, strings, fresh, startOf});
}

TEST_F(StreamsSweep, AReadTextIsKeptOrEmptyWhereMemoryRanOut) {
    Bytes const data = bytes("09 85 00 00 00 03 C3 A9 78");
    PDataReader reader(data);
    PString text;
    auto const read = [&] { return reader.readString(text); };
    auto const fresh = [&] {
        text = L"kept";
        reader.setOffset(0);
    };
    auto const look = [&](int code) {
        bool const unread = view(text) == L"kept" || view(text).empty();
        EXPECT_TRUE(code == PERR_OK ? view(text) == L"\u00e9x" : unread);
        EXPECT_EQ(9U, reader.getOffset()) << "behind the payload";
    };
    sweep({"readString", {PERR_NO_MEMORY}, read, fresh, look});
}

TEST_F(StreamsSweep, AReadListHoldsWhatWasReadBeforeMemoryRanOut) {
    std::vector<PTargetInfo> found;
    auto const records = [&] {
        PDataReader reader(recordStream);
        return PDataFormaterUtils::readPTargetInfoArray(reader, found);
    };
    auto const fresh = [&] {
        found = {};
        found.shrink_to_fit();
    };
    auto const begun = [&](int code) {
        EXPECT_EQ(code == PERR_OK, found.size() == infos.size());
        for (PTargetInfo const& info : found) EXPECT_TEXT(L"abc", info.address.secondary);
    };
    sweep({"readPTargetInfoArray", {PERR_NO_MEMORY}, records, fresh, begun});
}
