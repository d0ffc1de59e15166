#include <clocale>

#include <data/bytes.h>
#include <faults/sweep.h>
#include <portinglayer/data_streams.h>
#include <portinglayer/strings.h>
#include <portinglayer/utf8.h>

namespace {

using S = PString&;

constexpr wchar_t FORMAT[] = L"%1000d";  // more than is formatted on the stack
std::wstring const LONG = std::wstring(999, L' ') + L"5";
std::string const LIST = "89 00 00 00 02 85 00 00 00 03 61 62 63 85 00 00 00 02 C3 A9";
PString const ABC{L"abc", 3}, E_ACUTE{L"\u00e9", 1}, PADDED{L"\u00e9x", 2};

}  // namespace

TEST(TextSweep, TextWithoutMemoryIsLeftAloneOrEmptiedAsItIsPromised) {
    struct {
        char const* name;
        int (*edit)(PString&);
        std::wstring done, failed;
    } const rows[] = {
        {"set", [](S s) { return s.set(L"xyz", 2); }, L"xy", L""},
        {"set of bytes", [](S s) { return s.set("xyz", 2); }, L"xy", L""},
        {"cat", [](S s) { return s.cat(L"xyz", 2); }, L" abxy", L" ab"},
        {"cat of bytes", [](S s) { return s.cat("xyz", 2); }, L" abxy", L" ab"},
        {"insert", [](S s) { return s.insert(1, L"xyz", 2); }, L" xyab", L" ab"},
        {"stripall", [](S s) { return s.stripall(); }, L"ab", L" ab"},
        {"fill", [](S s) { return s.fill(L'x', 5); }, L"xxxxx", L" ab"},
        {"int32ToStr", [](S s) { return PUtils::int32ToStr(-5, s); }, L"-5", L""},
        {"pformatString", [](S s) { return PUtils::pformatString(s, FORMAT, 5); }, LONG, L""},
        {"decode", [](S s) { return PUtf8::decode("xyz", 2, s); }, L"xy", L" ab"},
        {"padded", [](S s) { return PUtf8::padded(L"\xE9", s); }, L"\xE9x", L" ab"},
    };
    for (auto const& row : rows) {
        PString text;
        auto const edit = [&] { return row.edit(text); };
        auto const before = [&] { text = L" ab"; };
        auto const look = [&](int code) { EXPECT_TEXT(code ? row.failed : row.done, text); };
        sweep({row.name, {PERR_NO_MEMORY}, edit, before, look});
    }
}

TEST(TextSweep, BytesAreKeptWithoutMemory) {
    std::string bytes = "former";
    auto const encode = [&] { return PUtf8::encode(L"more than a string itself holds", bytes); };
    EXPECT_CODE(PERR_NO_MEMORY, runFailing(1, true, encode));
    EXPECT_EQ("former", bytes);
}

TEST(TextSweep, ASearchWithoutMemoryToPrepareItFindsTheSame) {
    std::wstring const many(5000, L'a'), text = many + many + L"b" + many, sought = L"b" + many;
    unsigned long pos = 0;
    auto const search = [&] {
        return PLiteral(text.c_str()).str(sought.c_str(), pos, false, false);
    };
    EXPECT_CODE(PERR_OK, runFailing(1, true, search));
    EXPECT_EQ(10'000U, pos);
}

TEST(TextSweep, AKeyWithoutItsValueIsTold) {
    PString key, value;
    auto const split = [&] { return PUtils::getKeyValue(L"k = v", key, value, L'='); };
    sweep({"getKeyValue", {PERR_NO_MEMORY}, split});
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
        ASSERT_EQ(code == PERR_OK, list != nullptr);
        if (list == nullptr) return;
        EXPECT_TEXT(L"process.name=p", list[0]);
        delete[] std::exchange(list, nullptr);
    };
    sweep({"convertArgs", {PERR_NO_MEMORY}, convert, [] {}, look});
}

TEST(StreamsSweep, AWrittenListEndsWhereMemoryDid) {
    ASSERT_NE(nullptr, setlocale(LC_CTYPE, "C.UTF-8"));
    std::vector<PString> const texts{ABC, PADDED};
    Bytes data;
    auto const fresh = [&] { data = Bytes(); };
    auto const write = [&] { return PDataWriter(data).writeStrings(texts); };
    auto const look = [&](int code) {
        EXPECT_TRUE(code == PERR_OK ? hex(data) == LIST : LIST.starts_with(hex(data)));
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
