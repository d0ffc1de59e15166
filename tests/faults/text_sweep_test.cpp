#include <utility>

#include <faults/sweep.h>
#include <portinglayer/strings.h>
#include <portinglayer/utf8.h>

namespace {

using S = PString&;

constexpr wchar_t FORMAT[] = L"%1000d";  // more than is formatted on the stack
std::wstring const LONG = std::wstring(999, L' ') + L"5";

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
    std::string bytes;
    auto const encode = [&] { return PUtf8::encode(L"more than a string itself holds", bytes); };
    auto const clear = [&] { std::string("former").swap(bytes); };  // the room goes, too
    auto const look = [&](int code) { EXPECT_EQ(code != PERR_OK, bytes == "former"); };
    sweep({"encode", {PERR_NO_MEMORY}, encode, clear, look});
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
