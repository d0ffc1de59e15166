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

TEST(FaultSweep, Processes) {
    unsigned int const self = PProcess::getCurrentPID(), parent = getppid();
    Codes const codes{PERR_NOT_FOUND, PERR_NO_MEMORY, PERR_NO_PROCESS, PERR_IO,  PERR_SYSTEM,
                      PERR_OPEN,      PERR_READ,      PERR_SEEK,       PERR_KILL};
    unsigned long long memory = 0;
    unsigned int number = 0;
    int value = 0;
    std::vector<unsigned int> ids, parents;
    PString text, first;
    std::vector<PString> environment, added(1, PString(L"A=B", 3));
    std::optional<ChildRun> child;
    auto const forget = [&] {  // no room is kept either
        for (auto* const list : {&ids, &parents}) std::vector<unsigned int>().swap(*list);
        environment = std::vector<PString>();
    };
    _sweep("PProcess facts", codes,
           STEPS(PProcess::getName(self, text), PProcess::getPath(self, text),
                 PProcess::getWorkingDir(self, text), PProcess::getCmdLine(self, text),
                 PProcess::getPriority(self, value), PProcess::getFreeMemory(memory),
                 PProcess::getMemoryUsage(self, memory), PProcess::getParentPID(self, number),
                 PProcess::getUserName(self, text), PProcess::getCurrentEnvironment(environment),
                 PProcess::getCPUUsage(number), PProcess::getSpecCPUUsage(0, number)),
           forget);
    auto const run = [&] {
        PProcess process(L"/usr/bin/test", L"0", L"/", added);
        return firstFailure({process.start(), process.kill(), process.start(),
                             process.waitExitCode(value), value == 1});  // that of no argument
    };
    _sweep("PProcess::start, waitExitCode", codes, run, [] {
        while (waitpid(-1, nullptr, 0) > 0) continue;
    });
    // What walks over all processes is swept at its beginning only: more of the same follows.
    EXPECT_EQ(PProcess::getName(1, first), PERR_OK);
    auto const find = [&] {
        int const code = PProcess::find(first, ids, parents);
        return ids.size() == parents.size() ? code : -1;
    };
    auto const start = [&] { child.emplace(pause); };
    _sweep("PProcess::listPIDs", codes, STEPS(PProcess::listPIDs(ids)), forget, 100);
    _sweep("PProcess::find", codes, find, forget, 100);
    _sweep("PProcess::getChildPID", codes, STEPS(PProcess::getChildPID(parent, ids)), forget, 100);
    _sweep("PProcess::killTree", codes, STEPS(PProcess::killTree(child->pid)), start, 40);
}
