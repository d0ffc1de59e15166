#include <process/children.h>

TEST(ProcessWaiting, ExitCodeTellsHowAChildEnded) {
    EXPECT_EQ(255, runToEnd({L"/bin/sh", shell("exit 255")}));
    EXPECT_EQ(-9, runToEnd({L"/bin/sh", shell("kill -9 $$")}));
    (void)std::signal(SIGHUP, SIG_DFL);  // nohup has it ignored
    EXPECT_EQ(-1, runToEnd({L"/bin/sh", shell("kill -1 $$")})) << "as if unknown";
}

TEST(ProcessWaiting, ExitCodeIsGivenOnce) {
    PProcess process(L"/bin/true", L"");
    int exitCode = 7;
    EXPECT_CODE(PERR_NO_PROCESS, process.waitExitCode(exitCode));
    EXPECT_EQ(-1, exitCode);
    EXPECT_CODE(PERR_OK, process.start());
    EXPECT_CODE(PERR_OK, process.waitExitCode(exitCode));
    EXPECT_CODE(PERR_NO_PROCESS, process.waitExitCode(exitCode));
}

TEST(ProcessWaiting, AnObjectKnowsItsChildWhileThatRuns) {
    Child child;
    unsigned int pid = 7;
    bool running = false;
    EXPECT_CODE(PERR_OK, child.process.isRunning(running));
    EXPECT_TRUE(running);
    child.end();
    EXPECT_CODE(PERR_NO_PROCESS, child.process.getPID(pid));
    EXPECT_EQ(7U, pid);
    EXPECT_CODE(PERR_OK, child.process.isRunning(running));
    EXPECT_FALSE(running);
    EXPECT_FALSE(child.process.waitFinish(999));
    EXPECT_FALSE(PProcess::waitFinish(child.pid, 999));
}

TEST(ProcessWaiting, SomeQueriesCollectEveryEndedChild) {
    unsigned int const self = PProcess::getCurrentPID();
    int exitCode = 0;
    bool running = false;
    PString text;
    Ids ids, parents;
    Child own;
    std::function<int()> const queries[] = {
        [&] { return PProcess::isRunning(self, running); },
        [&] { return PProcess::getName(self, text); },
        [&] { return PProcess::getPath(self, text); },
        [&] { return PProcess::getChildPID(self, ids); },
        [&] { return PProcess::find(text, ids, parents); },
        [&] { return PProcess::listPIDs(ids); },
        [&] { return own.process.waitFinish(999) ? PERR_OK : PERR_NO_PROCESS; },
    };
    for (auto const& query : queries) {
        Child other;
        other.end();
        (void)query();
        EXPECT_CODE(PERR_NO_PROCESS, other.process.waitExitCode(exitCode)) << &query - queries;
    }
}

TEST(ProcessWaiting, EndsInTheTenthInWhichTheProcessEnds) {
    Child one, other;
    auto const start = std::chrono::steady_clock::now();
    std::jthread const ending([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
        one.end();
        other.end();
    });
    EXPECT_FALSE(PProcess::waitFinish(one.pid, 10'000));
    EXPECT_FALSE(other.process.waitFinish(10'000));
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(8));
}

TEST(ProcessWaiting, ASignalEndsAWait) {
    Child child;
    int exitCode = 0;
    EXPECT_CODE(PERR_SYSTEM, interrupted([&] { return child.process.waitExitCode(exitCode); }));
    EXPECT_TRUE(interrupted([&] { return child.process.waitFinish(60'000); }));
    EXPECT_TRUE(interrupted([&] { return PProcess::waitFinish(child.pid, 60'000); }));
}
