#include <process/queries.h>

TEST(ProcessWaiting, ExitCodeTellsHowAChildEnded) {
    EXPECT_EQ(255, runToEnd({L"/bin/sh", shell("exit 255")}));
    EXPECT_EQ(-9, runToEnd({L"/bin/sh", shell("kill -9 $$")}));
    EXPECT_EQ(-1, runToEnd({L"/bin/sh", shell("kill -1 $$")})) << "as if unknown";
}

TEST(ProcessWaiting, ExitCodeIsGivenOnce) {
    PProcess process(L"/bin/true", L"");
    int exitCode = 7;
    EXPECT_CODE(PERR_NO_PROCESS, process.waitExitCode(exitCode));
    EXPECT_EQ(-1, exitCode);
    EXPECT_CODE(PERR_OK, process.start());
    EXPECT_CODE(PERR_OK, process.waitExitCode(exitCode));
    EXPECT_EQ(0, exitCode);
    EXPECT_CODE(PERR_NO_PROCESS, process.waitExitCode(exitCode));
    EXPECT_EQ(-1, exitCode);
}

TEST(ProcessWaiting, IsRunningTellsLivingProcessesFromOthers) {
    Child const living, zombie;
    zombie.end();
    for (auto const& [pid, runs] : {std::pair(living.pid, true), {zombie.pid, false}, {0, false}}) {
        bool running = !runs;
        EXPECT_CODE(PERR_OK, PProcess::isRunning(pid, running));
        EXPECT_EQ(runs, running);
        EXPECT_EQ(runs, PProcess::waitFinish(pid, 999));
    }
}

TEST(ProcessWaiting, AnObjectKnowsItsChildWhileThatRuns) {
    Child child;
    unsigned int pid = 7;
    bool running = false;
    EXPECT_CODE(PERR_OK, child.process.isRunning(running));
    EXPECT_TRUE(running);
    child.end();
    EXPECT_CODE(PERR_NO_PROCESS, child.process.getPID(pid));
    EXPECT_CODE(PERR_OK, child.process.isRunning(running));
    EXPECT_FALSE(running);
    EXPECT_FALSE(child.process.waitFinish(999));
}

TEST(ProcessWaiting, SomeQueriesCollectEveryEndedChild) {
    int exitCode = 0;
    (void)setenv("TALV_PROC_SAMPLE_TIME_MS", "1", 1);
    for (Query const& query : queries()) {
        SCOPED_TRACE(query.what);
        Child other;
        other.end();
        (void)query.ask(other.pid);
        EXPECT_CODE(query.collects ? PERR_NO_PROCESS : PERR_OK,
                    other.process.waitExitCode(exitCode));
    }
}

TEST(ProcessWaiting, WaitFinishCollectsOthersWhereItsOwnChildStillRuns) {
    Child own, other;
    int exitCode = 0;
    other.end();
    EXPECT_TRUE(own.process.waitFinish(999));  // which does not wait
    EXPECT_CODE(PERR_NO_PROCESS, other.process.waitExitCode(exitCode));
}

TEST(ProcessWaiting, ASignalEndsAWait) {
    Child child;
    int exitCode = 0;
    EXPECT_CODE(PERR_SYSTEM, interrupted([&] { return child.process.waitExitCode(exitCode); }));
    EXPECT_TRUE(interrupted([&] { return child.process.waitFinish(60'000); }));
    EXPECT_TRUE(interrupted([&] { return PProcess::waitFinish(child.pid, 60'000); }));
}

TEST(ProcessWaiting, WhatBlocksIsACancellationPoint) {
    Child child;
    unsigned int const pid = child.pid;
    unsigned int percent = 0;
    int exitCode = 0;
    EXPECT_TRUE(endsACancelledThread([&] { (void)child.process.waitExitCode(exitCode); }));
    EXPECT_TRUE(endsACancelledThread([&] { (void)PProcess::waitFinish(pid, 60'000); }));
    EXPECT_TRUE(endsACancelledThread([&] { (void)PProcess::killSignal(pid, 0); }));
    EXPECT_TRUE(endsACancelledThread([&] { (void)PProcess::getCPUUsage(percent); }));
    EXPECT_TRUE(endsACancelledThread([&] { (void)PProcess::getCPUUsage(pid, percent); }));
}
