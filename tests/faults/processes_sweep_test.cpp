#include <faults/sweep.h>
#include <process/children.h>

namespace {

unsigned int const self = PProcess::getCurrentPID();

void _collectAll() {
    while (waitpid(-1, nullptr, 0) > 0) continue;
}

}  // namespace

TEST(ProcessesSweep, ATextIsWholeOrCleared) {
    PString whole, text;
    ASSERT_CODE(PERR_OK, PProcess::getName(self, whole));
    auto const ask = [&] { return PProcess::getName(self, text); };
    auto const before = [&] { text = L"kept"; };
    auto const look = [&](int code) { EXPECT_TEXT(code == PERR_OK ? view(whole) : L"", text); };
    sweep({"getName", {PERR_NOT_FOUND, PERR_NO_MEMORY}, ask, before, look, 100, true});
}

TEST(ProcessesSweep, AStartedProgramGetsAllThatIsMeantForItOrNeverRuns) {
    Scratch const scratch;
    Texts const added{owned("PLT_ADDED=a-value-that-takes-memory")};
    std::string const script = scratch.write("script", "echo $# $PLT_ADDED >$0.out");
    PString const arguments = owned(script + " a b");
    auto const run = [&] {
        int exitCode = 0;
        PProcess process(L"/bin/sh", arguments, L"/", added);
        int const code = firstFailure({process.start(), process.waitExitCode(exitCode)});
        // The child makes its calls behind the fork: with as many here each gets its turn.
        for (int i = 0; i < 40; ++i) (void)access("/", F_OK);
        return code;
    };
    auto const look = [&](int) {
        _collectAll();
        std::string const said = scratch.read("script.out");
        EXPECT_TRUE(said.empty() || said == "2 a-value-that-takes-memory\n") << said;
        scratch.write("script.out", "");
    };
    std::set<int> const codes{PERR_NO_PROCESS, PERR_SYSTEM, PERR_NO_MEMORY, PERR_NOT_FOUND};
    sweep({"start, waitExitCode", codes, run, [] {}, look});
}

TEST(ProcessesSweep, FindTellsThatMemoryRanOut) {
    int failures = 0;
    PString first;
    ASSERT_CODE(PERR_OK, PProcess::getName(1, first));
    for (int n = 1; n <= 200; ++n) {  // then more of the same follows
        Ids ids, parents;
        int const code = runFailing(n, false, [&] { return PProcess::find(first, ids, parents); });
        EXPECT_TRUE(!memoryRanOut() || code == PERR_NO_MEMORY) << "gave " << codeName(code);
        EXPECT_EQ(parents.size(), ids.size());
        failures += memoryRanOut() ? 1 : 0;
    }
    EXPECT_GT(failures, 0);
}
