#include <sys/ptrace.h>

#include <process/children.h>

TEST(ProcessWaiting, ExitCodeTellsHowAChildEnded) {
    struct {
        char const *what, *command;
        int exitCode;
    } const rows[] = {
        {"success", "exit 0", 0},
        {"a failure", "exit 3", 3},
        {"the highest code", "exit 255", 255},
        {"SIGKILL", "kill -9 $$", -9},
        {"SIGTERM", "kill -15 $$", -15},
        {"SIGHUP, as if unknown", "kill -1 $$", -1},
    };
    for (auto const& row : rows) {
        SCOPED_TRACE(row.what);
        EXPECT_EQ(row.exitCode, runToEnd({L"/bin/sh", shell(row.command)}));
    }
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

TEST(ProcessWaiting, ExitCodeCannotBeHadWhileTheCallerIgnoresSigchld) {
    ChildRun caller([] {
        int exitCode = 7;
        PProcess process(L"/bin/sh", shell("exit 3"));
        (void)signal(SIGCHLD, SIG_IGN);
        EXPECT_CODE(PERR_OK, process.start());
        EXPECT_CODE(PERR_NO_PROCESS, process.waitExitCode(exitCode));
        EXPECT_EQ(-1, exitCode);
        return testing::Test::HasFailure() ? 1 : 0;
    });
    EXPECT_EQ(0, caller.wait());
}

TEST(ProcessWaiting, ATracedChildThatStopsHasNotEnded) {
    Child child;
    int exitCode = 7;
    if (ptrace(PTRACE_ATTACH, child.pid, 0, 0) != 0) GTEST_SKIP() << "no child may be traced";
    EXPECT_CODE(PERR_STOPPED, child.process.waitExitCode(exitCode));
    EXPECT_EQ(-1, exitCode);
    EXPECT_EQ(0, ptrace(PTRACE_DETACH, child.pid, 0, 0));
}

TEST(ProcessWaiting, IsRunningTellsLivingProcessesFromOthers) {
    Child const living, zombie;
    zombie.end();
    struct {
        char const* what;
        unsigned int pid;
        bool runs;
    } const rows[] = {
        {"a child", living.pid, true},
        {"the caller", PProcess::getCurrentPID(), true},
        {"a zombie", zombie.pid, false},
        {"one that was collected", endedProcess(), false},
        {"none", 0, false},
    };
    for (auto const& row : rows) {
        SCOPED_TRACE(row.what);
        bool running = !row.runs;
        EXPECT_CODE(PERR_OK, PProcess::isRunning(row.pid, running));
        EXPECT_EQ(row.runs, running);
        EXPECT_EQ(row.runs, PProcess::waitFinish(row.pid, 999));  // which does not wait
    }
}

TEST(ProcessWaiting, AnObjectKnowsItsChildWhileThatRuns) {
    Child child;
    unsigned int pid = 7;
    bool running = false;
    EXPECT_CODE(PERR_OK, child.process.isRunning(running));
    EXPECT_TRUE(running);
    EXPECT_TRUE(child.process.waitFinish(999));

    child.end();
    EXPECT_CODE(PERR_NO_PROCESS, child.process.getPID(pid));
    EXPECT_EQ(7U, pid);
    EXPECT_CODE(PERR_OK, child.process.isRunning(running));
    EXPECT_FALSE(running);
    EXPECT_FALSE(child.process.waitFinish(999));
    EXPECT_FALSE(PProcess(L"/bin/true", L"").waitFinish(999));  // none was started
}

TEST(ProcessWaiting, WaitFinishNoticesTheEnd) {
    PProcess process(L"/bin/sleep", L"0.2");
    unsigned int pid = 0;
    for (bool const byId : {false, true}) {
        ASSERT_CODE(PERR_OK, process.start());
        ASSERT_CODE(PERR_OK, process.getPID(pid));
        EXPECT_FALSE(byId ? PProcess::waitFinish(pid, 5000) : process.waitFinish(5000));
        EXPECT_EQ(-1, waitpid(static_cast<pid_t>(pid), nullptr, 0)) << "its exit code was taken";
    }
}

TEST(ProcessWaiting, TheQueriesOfTheListCollectEveryEndedChild) {
    Child own;
    unsigned int const pid = own.pid;
    unsigned int number = 0;
    int value = 0;
    bool running = false;
    PString text;
    Texts texts;
    Ids ids, others;
    unsigned long long bytes = 0;
    (void)setenv("TALV_PROC_SAMPLE_TIME_MS", "1", 1);
    struct {
        char const* what;
        std::function<int()> query;
        bool collects;
    } const rows[] = {
        {"isRunning", [&] { return PProcess::isRunning(pid, running); }, true},
        {"getPID", [&] { return own.process.getPID(number); }, true},
        {"start", [&] { return own.process.start(); }, true},
        {"waitFinish of an id", [&] { return PProcess::waitFinish(pid, 0); }, true},
        {"waitFinish", [&] { return own.process.waitFinish(0); }, true},
        {"getName", [&] { return PProcess::getName(pid, text); }, true},
        {"getPath", [&] { return PProcess::getPath(pid, text); }, true},
        {"listPIDs", [&] { return PProcess::listPIDs(ids); }, true},
        {"getChildPID", [&] { return PProcess::getChildPID(pid, ids); }, true},
        {"find", [&] { return PProcess::find(text, ids, others); }, true},
        {"getCmdLine", [&] { return PProcess::getCmdLine(pid, text); }, false},
        {"getWorkingDir", [&] { return PProcess::getWorkingDir(pid, text); }, false},
        {"getPriority", [&] { return PProcess::getPriority(pid, value); }, false},
        {"getEnvironment", [&] { return PProcess::getEnvironment(pid, texts); }, false},
        {"getMemoryUsage", [&] { return PProcess::getMemoryUsage(pid, bytes); }, false},
        {"getParentPID", [&] { return PProcess::getParentPID(pid, number); }, false},
        {"getUserName", [&] { return PProcess::getUserName(pid, text); }, false},
        {"getCPUUsage", [&] { return PProcess::getCPUUsage(pid, number); }, false},
    };
    for (auto const& row : rows) {
        SCOPED_TRACE(row.what);
        Child other;
        other.end();
        (void)row.query();
        EXPECT_CODE(row.collects ? PERR_NO_PROCESS : PERR_OK, other.process.waitExitCode(value));
    }
}

TEST(ProcessWaiting, ASignalEndsAWait) {
    Child child;
    int exitCode = 0;
    EXPECT_CODE(PERR_SYSTEM, interrupted([&] { return child.process.waitExitCode(exitCode); }));
    EXPECT_EQ(-1, exitCode);
    EXPECT_TRUE(interrupted([&] { return child.process.waitFinish(60'000); }));
    EXPECT_TRUE(interrupted([&] { return PProcess::waitFinish(child.pid, 60'000); }));
}

TEST(ProcessWaiting, WhatBlocksIsACancellationPoint) {
    Child child;
    unsigned int const pid = child.pid;
    unsigned int percent = 0;
    int exitCode = 0;
    EXPECT_TRUE(endsACancelledThread([&] { (void)child.process.waitExitCode(exitCode); }));
    EXPECT_TRUE(endsACancelledThread([&] { (void)child.process.waitFinish(60'000); }));
    EXPECT_TRUE(endsACancelledThread([&] { (void)PProcess::waitFinish(pid, 60'000); }));
    EXPECT_TRUE(endsACancelledThread([&] { (void)PProcess::killSignal(pid, 0); }));
    EXPECT_TRUE(endsACancelledThread([&] { (void)child.process.kill(); }));
    EXPECT_TRUE(endsACancelledThread([&] { (void)PProcess::killTree(pid); }));
    EXPECT_TRUE(endsACancelledThread([&] { (void)PProcess::getCPUUsage(percent); }));
    EXPECT_TRUE(endsACancelledThread([&] { (void)PProcess::getCPUUsage(pid, percent); }));
    EXPECT_TRUE(endsACancelledThread([&] { (void)PProcess::getSpecCPUUsage(0, percent); }));
}
