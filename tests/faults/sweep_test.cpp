#include <cstring>
#include <optional>

#include <faults/sweep.h>
#include <portinglayer/portinglayer.h>
#include <support/child_run.h>
#include <support/scratch.h>

namespace {

using Codes = std::set<int>;

void _sweep(
    char const* name, Codes const& codes, std::function<int()> const& operation,
    std::function<void()> const& before = [] {}, int most = 10'000) {
    sweep({.name = name, .codes = codes, .operation = operation, .before = before, .most = most});
}

}  // namespace

#define STEPS(...) [&] { return firstFailure({__VA_ARGS__}); }

TEST(FaultSweep, Text) {
    PString s, out, value, source;
    _sweep("PString", {PERR_NO_MEMORY},
           STEPS(s.set(L" a b ", 5), s.cat(L"abc", 3), s.insert(1, L"abc", 3), s.stripall(),
                 s.fill(L'x', 99), s.cat("abc", 3), s.set("x", 1)));
    _sweep("PUtils, getNextToken", {PERR_NO_MEMORY, PERR_TOKEN}, [&] {
        PString* list = nullptr;
        char program[] = "p", option[] = "a=1", *arguments[] = {program, option, nullptr};
        unsigned char* read = nullptr;
        unsigned long count = 0;
        int const code =
            firstFailure({PUtils::int32ToStr(-5, out), PUtils::uint64ToStr(7, out),
                          PUtils::strToBinary(L"0x00, 0xA0", read, count),
                          PUtils::binaryToStr(reinterpret_cast<unsigned char*>(option), 2, out),
                          PUtils::pformatString(out, L"%500d of %ls", 1, L"x"),
                          PUtils::getKeyValue(L"k = v", out, value, L'='),
                          PUtils::convertArgs(2, arguments, list, count, L'='),
                          source.set(L"a b", 3), PLiteral::getNextToken(source, out, L' ')});
        delete[] read;
        delete[] list;
        return code;
    });
    int const known = PUtils::getHostAddress(out);  // a failure where there is no network at all
    _sweep("PUtils::getHostAddress", {PERR_SYSTEM - known},
           STEPS(PUtils::getHostAddress(out) - known));
}
