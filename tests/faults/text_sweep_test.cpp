#include <data/bytes.h>
#include <faults/sweep.h>
#include <portinglayer/data_streams.h>
#include <portinglayer/strings.h>
#include <portinglayer/utf8.h>

namespace {

constexpr wchar_t FORMAT[] = L"%1000d";  // more than is formatted on the stack
std::wstring const LONG = std::wstring(999, L' ') + L"5";

}  // namespace

TEST(TextSweep, TextWithoutMemoryIsLeftAloneOrEmptiedAsItIsPromised) {
    auto const expect = [](std::wstring const& failed, std::wstring const& done, auto const& edit) {
        PString text;
        auto const before = [&] { text = L" ab"; };
        auto const look = [&](int code) { EXPECT_TEXT(code == PERR_OK ? done : failed, text); };
        sweep({"an edited text", {PERR_NO_MEMORY}, [&] { return edit(text); }, before, look});
    };
    expect(L"", L"xy", [](PString& s) { return s.set(L"xyz", 2); });
    expect(L"", L"xy", [](PString& s) { return s.set("xyz", 2); });
    expect(L" ab", L" abxy", [](PString& s) { return s.cat(L"xyz", 2); });
    expect(L" ab", L" abxy", [](PString& s) { return s.cat("xyz", 2); });
    expect(L" ab", L" xyab", [](PString& s) { return s.insert(1, L"xyz", 2); });
    expect(L" ab", L"ab", [](PString& s) { return s.stripall(); });
    expect(L" ab", L"xxxxx", [](PString& s) { return s.fill(L'x', 5); });
    expect(L"", L"-5", [](PString& s) { return PUtils::int32ToStr(-5, s); });
    expect(L"", LONG, [](PString& s) { return PUtils::pformatString(s, FORMAT, 5); });
    expect(L" ab", L"xy", [](PString& s) { return PUtf8::decode("xyz", 2, s); });
    expect(L" ab", L"\xE9x", [](PString& s) { return PUtf8::padded(L"\xE9", s); });
}

TEST(TextSweep, ASearchThatCannotBePreparedFindsTheSame) {
    std::wstring const many(5000, L'a'), more(9000, L'a');
    auto const expect = [](int code, unsigned long place, std::wstring const& text,
                           std::wstring const& sought, bool fromEnd) {
        unsigned long pos = 77;
        auto const seek = [&] {
            return PLiteral(text.c_str()).str(sought.c_str(), pos, fromEnd, false);
        };
        EXPECT_CODE(code, runFailing(1, true, seek));
        EXPECT_TRUE(memoryRanOut());
        EXPECT_EQ(place, pos);
    };
    expect(PERR_OK, 4000, more + L"b" + many, many + L"b" + many, false);
    expect(PERR_OK, 0, many + L"b" + more, many + L"b" + many, true);
    expect(PERR_NOT_FOUND, 77, more + L"b" + more, many + L"c" + many, false);
}

TEST(TextSweep, BytesAreKeptWithoutMemory) {
    std::string bytes = "former";
    auto const encode = [&] { return PUtf8::encode(L"more than a string itself holds", bytes); };
    EXPECT_CODE(PERR_NO_MEMORY, runFailing(1, true, encode));
    EXPECT_EQ("former", bytes);
}

TEST(TextSweep, ATokenThatCannotBeCopiedStaysInItsText) {
    PString source, token;
    auto const before = [&] { source = L"a b"; };
    auto const take = [&] { return PLiteral::getNextToken(source, token, L' '); };
    auto const look = [&](int code) {
        EXPECT_TEXT(code == PERR_OK ? L"a" : L"", token);
        EXPECT_TEXT(code == PERR_OK ? L"b" : L"a b", source);
    };
    sweep({"getNextToken", {PERR_TOKEN}, take, before, look});
}

TEST(TextSweep, ArgumentsAreAllThereOrNone) {
    char program[] = "p", option[] = "a=1";
    char* arguments[] = {program, option, nullptr};
    PString* list = nullptr;
    unsigned long count = 0;
    auto const convert = [&] { return PUtils::convertArgs(2, arguments, list, count, L'='); };
    auto const look = [&](int code) {
        EXPECT_EQ(code == PERR_OK, list != nullptr);
        EXPECT_TRUE(list == nullptr || list[1] == L"a=1");
        delete[] std::exchange(list, nullptr);
    };
    sweep({"convertArgs", {PERR_NO_MEMORY}, convert, [] {}, look});
}

TEST(StreamsSweep, AReadListHoldsWhatWasReadBeforeMemoryRanOut) {
    Bytes const stream{0x89, 0, 0, 0, 2, 0x85, 0, 0, 0, 1, 'a', 0x85, 0, 0, 0, 1, 'b'};
    std::vector<PString> found;
    auto const before = [&] { std::vector<PString>().swap(found); };
    auto const read = [&] { return PDataReader(stream).readStrings(found); };
    auto const look = [&](int code) {
        EXPECT_EQ(code == PERR_OK, found.size() == 2);
        for (PString const& text : found) EXPECT_TRUE(text == L"a" || text == L"b");
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
