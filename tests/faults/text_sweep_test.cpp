#include <utility>

#include <faults/sweep.h>
#include <portinglayer/strings.h>

namespace {

using Texts = std::set<std::wstring>;

/// More than is formatted on the stack.
constexpr wchar_t LONG[] = L"................................................................"
                           L"................................................................"
                           L"................................................................"
                           L"................................................................";

void _expectOneOf(Texts const& promised, PString const& text) {
    EXPECT_TRUE(promised.contains(std::wstring(view(text)))) << testing::PrintToString(text);
}

}  // namespace

TEST(TextSweep, AnEditWithoutMemoryLeavesTheTextAloneOrEmpty) {
    struct {
        char const* name;
        int (*edit)(PString&);
        wchar_t const *done, *failed;
    } const rows[] = {
        {"set", [](PString& s) { return s.set(L"xyz", 2); }, L"xy", L""},
        {"set of bytes", [](PString& s) { return s.set("xyz", 2); }, L"xy", L""},
        {"cat", [](PString& s) { return s.cat(L"xyz", 2); }, L" abxy", L" ab"},
        {"cat of bytes", [](PString& s) { return s.cat("xyz", 2); }, L" abxy", L" ab"},
        {"insert", [](PString& s) { return s.insert(1, L"xyz", 2); }, L" xyab", L" ab"},
        {"stripall", [](PString& s) { return s.stripall(); }, L"ab", L" ab"},
        {"fill", [](PString& s) { return s.fill(L'x', 5); }, L"xxxxx", L" ab"},
    };
    for (auto const& row : rows) {
        PString text;
        auto const look = [&](int code) {
            EXPECT_TEXT(code == PERR_OK ? row.done : row.failed, text);
        };
        sweep({.name = row.name,
               .codes = {PERR_NO_MEMORY},
               .operation = [&] { return row.edit(text); },
               .before = [&] { text = L" ab"; },
               .after = look});
    }
}

TEST(TextSweep, WhatHasNoCodeMakesAnEmptyTextWithoutMemory) {
    PString const abc(L"abc", 3);
    PString text;
    struct {
        char const* name;
        std::function<void()> run;
        Texts left;
    } const rows[] = {
        {"copy", [&] { text = PString(abc); }, {L"abc", L""}},
        {"copy of bytes", [&] { text = PString("abc", 3); }, {L"abc", L""}},
        {"assignment", [&] { text = abc; }, {L"abc", L""}},
        {"assignment of a pointer", [&] { text = L"abc"; }, {L"abc", L""}},
        {"appending operator", [&] { text += abc; }, {L"oldabc", L"old"}},
        {"boolToStr", [&] { (void)PUtils::boolToStr(true, text); }, {L"true", L""}},
    };
    for (auto const& row : rows)
        sweep({.name = row.name,
               .codes = {},
               .operation = [&] { return row.run(), PERR_OK; },
               .before = [&] { text = L"old"; },
               .after = [&](int) { _expectOneOf(row.left, text); }});
}

TEST(TextSweep, TextMadeFromAValueIsThereWithThePromisedCode) {
    unsigned char const bytes[] = {1};
    PString text;
    struct {
        char const* name;
        std::function<int()> write;
        wchar_t const* done;
        Texts failed;
    } const rows[] = {
        {"int32ToStr", [&] { return PUtils::int32ToStr(-5, text); }, L"-5", {L""}},
        {"uint32ToStr", [&] { return PUtils::uint32ToStr(5, text); }, L"5", {L""}},
        {"int64ToStr", [&] { return PUtils::int64ToStr(-5, text); }, L"-5", {L""}},
        {"uint64ToStr", [&] { return PUtils::uint64ToStr(5, text); }, L"5", {L""}},
        {"binaryToStr",
         [&] { return PUtils::binaryToStr(bytes, 1, text); },
         L"0x01",
         {L"old", L""}},
        {"pformatString", [&] { return PUtils::pformatString(text, L"%d", 5); }, L"5", {L""}},
        {"pformatString, long", [&] { return PUtils::pformatString(text, LONG); }, LONG, {L""}},
    };
    for (auto const& row : rows) {
        auto const look = [&](int code) {
            _expectOneOf(code == PERR_OK ? Texts{row.done} : row.failed, text);
        };
        sweep({.name = row.name,
               .codes = {PERR_NO_MEMORY},
               .operation = row.write,
               .before = [&] { text = L"old"; },
               .after = look});
    }
}

TEST(TextSweep, BytesReadFromTextAreANewArrayOrNone) {
    unsigned char* bytes = nullptr;
    unsigned long count = 0;
    auto const look = [&](int code) {
        EXPECT_EQ(code == PERR_OK, bytes != nullptr);
        EXPECT_EQ(code == PERR_OK ? 2U : 77U, count);
        delete[] std::exchange(bytes, nullptr);
    };
    sweep({.name = "strToBinary",
           .codes = {PERR_NO_MEMORY},
           .operation = [&] { return PUtils::strToBinary(L"0x00, 0xA0", bytes, count); },
           .before = [&] { count = 77; },
           .after = look});
}

TEST(TextSweep, AKeyWithoutItsValueIsTold) {
    PString key, value;
    auto const look = [&](int code) {
        std::wstring const made = std::wstring(view(key)) + L"=" + std::wstring(view(value));
        Texts const promised = code == PERR_OK ? Texts{L"k=v"} : Texts{L"=old", L"k="};
        EXPECT_TRUE(promised.contains(made)) << testing::PrintToString(made);
    };
    sweep({.name = "getKeyValue",
           .codes = {PERR_NO_MEMORY},
           .operation = [&] { return PUtils::getKeyValue(L"k = v", key, value, L'='); },
           .before = [&] { key = value = L"old"; },
           .after = look});
}

TEST(TextSweep, ATokenThatCannotBeCopiedStaysInItsText) {
    PString source, token;
    auto const look = [&](int code) {
        EXPECT_TEXT(code == PERR_OK ? L"a" : L"", token);
        EXPECT_TEXT(code == PERR_OK ? L"b" : L"a b", source);
    };
    sweep({.name = "getNextToken",
           .codes = {PERR_TOKEN},
           .operation = [&] { return PLiteral::getNextToken(source, token, L' '); },
           .before = [&] { token = L"old", source = L"a b"; },
           .after = look});
}

TEST(TextSweep, ArgumentsAreAllThereOrNone) {
    char program[] = "p", option[] = "a=1";
    char* arguments[] = {program, option, nullptr};
    PString* list = nullptr;
    unsigned long count = 0;
    auto const look = [&](int code) {
        EXPECT_EQ(code == PERR_OK ? 2U : 77U, count);
        EXPECT_EQ(code == PERR_OK, list != nullptr);
        if (list == nullptr) return;
        EXPECT_TEXT(L"process.name=p", list[0]);
        EXPECT_TEXT(L"a=1", list[1]);
        delete[] std::exchange(list, nullptr);
    };
    sweep({.name = "convertArgs",
           .codes = {PERR_NO_MEMORY},
           .operation = [&] { return PUtils::convertArgs(2, arguments, list, count, L'='); },
           .before = [&] { count = 77; },
           .after = look});
}

TEST(TextSweep, AHostAddressIsLeftAloneByFailures) {
    PString address;
    int const known =
        PUtils::getHostAddress(address);  // a failure where there is no network at all
    std::wstring const expected = known == PERR_OK ? std::wstring(view(address)) : L"old";
    auto const look = [&](int code) {
        // Without memory for the text it is empty.
        _expectOneOf(code == PERR_OK - known ? Texts{expected, L""} : Texts{L"old"}, address);
    };
    sweep({.name = "getHostAddress",
           .codes = {PERR_SYSTEM - known},
           .operation = [&] { return PUtils::getHostAddress(address) - known; },
           .before = [&] { address = L"old"; },
           .after = look});
}
