#include <clocale>

#include <data/bytes.h>
#include <faults/sweep.h>
#include <portinglayer/data_streams.h>

namespace {

using Codes = std::set<int>;

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
    auto const bytes = [&] { return PDataWriter(data).decodeUtf8(texts[1], data); };
    auto const added = [&](char const* whole) {
        return [&data, whole](int code) { EXPECT_EQ(code == PERR_OK ? whole : "55", hex(data)); };
    };
    sweep({"writeString", {PERR_NO_MEMORY}, item, fresh, added("55 09 85 00 00 00 03 C3 A9 78")});
    sweep({"decodeUtf8", {PERR_NO_MEMORY}, bytes, fresh, added("55 C3 A9 78")});
}

TEST_F(StreamsSweep, AWrittenListEndsWhereMemoryDid) {
    Bytes data;
    auto const fresh = [&] { data = Bytes(); };
    auto const strings = [&] { return PDataWriter(data).writeStrings(texts); };
    auto const records = [&] {
        PDataWriter writer(data);
        return PDataFormaterUtils::writePTargetInfoArray(writer, infos);
    };
    auto const startOf = [&](Bytes const& whole) {
        return [&](int code) {
            EXPECT_TRUE(startsWith(whole, data)) << hex(data);
            EXPECT_EQ(code == PERR_OK, data == whole);
        };
    };
    sweep({"writeStrings", {PERR_NO_MEMORY}, strings, fresh, startOf(stringStream)});
    sweep({"writePTargetInfoArray", {PERR_NO_MEMORY}, records, fresh, startOf(recordStream)});
}

TEST_F(StreamsSweep, AReadTextIsKeptOrEmptyWhereMemoryRanOut) {
    for (std::wstring const expected : {L"abc", L"\u00e9x"}) {
        Bytes const data =
            bytes(expected == L"abc" ? "09 85 00 00 00 03 61 62 63" : "09 85 00 00 00 03 C3 A9 78");
        PDataReader reader(data);
        PString text;
        auto const read = [&] { return reader.readString(text); };
        auto const fresh = [&] {
            text = L"kept";
            reader.setOffset(0);
        };
        auto const look = [&](int code) {
            bool const unread = view(text) == L"kept" || view(text).empty();
            EXPECT_TRUE(code == PERR_OK ? view(text) == expected : unread);
            EXPECT_EQ(9U, reader.getOffset()) << "behind the payload";
        };
        sweep({"readString", {PERR_NO_MEMORY}, read, fresh, look});
    }
}

TEST_F(StreamsSweep, AReadListHoldsWhatWasReadBeforeMemoryRanOut) {
    std::wstring const shown[] = {L"abc", L"\u00e9x", L""};
    std::vector<PString> read;
    std::vector<PTargetInfo> found;
    auto const strings = [&] { return PDataReader(stringStream).readStrings(read); };
    auto const records = [&] {
        PDataReader reader(recordStream);
        return PDataFormaterUtils::readPTargetInfoArray(reader, found);
    };
    auto const fresh = [&] {
        read = {};
        read.shrink_to_fit();
        found = {};
        found.shrink_to_fit();
    };
    auto const begun = [&](int code) {
        EXPECT_EQ(code == PERR_OK, read.size() == texts.size());
        for (std::size_t i = 0; i < read.size(); ++i) EXPECT_TEXT(shown[i], read[i]);
    };
    auto const begunRecords = [&](int code) {
        EXPECT_EQ(code == PERR_OK, found.size() == infos.size());
        for (PTargetInfo const& info : found) EXPECT_TEXT(L"abc", info.address.secondary);
    };
    sweep({"readStrings", {PERR_NO_MEMORY}, strings, fresh, begun});
    sweep({"readPTargetInfoArray", {PERR_NO_MEMORY}, records, fresh, begunRecords});
}

TEST_F(StreamsSweep, OfAnAppendedNumberTheBytesStayThatFindRoom) {
    Bytes full;
    full.reserve(3);
    auto const append = [&] {
        PDataWriter(full).appendDword(0x01020304);
        return PERR_OK;
    };
    EXPECT_THROW(runFailing(1, true, append), std::bad_alloc);
    stopFailing();
    EXPECT_EQ("01 02 03", hex(full));
}
