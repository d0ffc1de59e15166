#include <process/children.h>

TEST(ProcessEnding, KillEndsTheChildAndForgetsIt) {
    Child child(shell("trap '' TERM; exec sleep 60"), "/bin/sh");
    unsigned int pid = 7;
    EXPECT_CODE(PERR_OK, child.process.kill());
    EXPECT_FALSE(child.runs());
    EXPECT_EQ(-1, waitpid(static_cast<pid_t>(child.pid), nullptr, 0)) << "it was collected";
    EXPECT_CODE(PERR_NO_PROCESS, child.process.getPID(pid));
    EXPECT_EQ(7U, pid);
}

TEST(ProcessEnding, KillIsNothingWithoutARunningChild) {
    PProcess idle(L"/bin/true", L"");
    Child child;
    child.end();
    long long const before = PTime::getTickCount();
    EXPECT_CODE(PERR_OK, idle.kill());
    EXPECT_CODE(PERR_OK, child.process.kill());
    EXPECT_LT(PTime::getTickCount() - before, 1000) << "it paused";
}

TEST(ProcessEnding, KillOfAnIdEndsTheProcess) {
    Child const child;
    bool running = true;
    EXPECT_CODE(PERR_OK, interrupted([&] { return PProcess::kill(child.pid); }));
    EXPECT_TRUE(
        eventually([&] { return PProcess::isRunning(child.pid, running) == PERR_OK && !running; }));
}

TEST(ProcessEnding, WhatCannotBeSentIsRefusedAtOnce) {
    Child const child;
    unsigned int const gone = endedProcess();
    long long const before = PTime::getTickCount();
    EXPECT_CODE(PERR_KILL, PProcess::killSignal(gone, SIGTERM));
    EXPECT_CODE(PERR_KILL, PProcess::kill(gone));
    EXPECT_CODE(PERR_KILL, PProcess::killTree(gone));
    EXPECT_CODE(PERR_KILL, PProcess::killSignal(child.pid, 1000));
    EXPECT_LT(PTime::getTickCount() - before, 1000) << "it paused";
}

TEST(ProcessEnding, KillSignalCollectsTheChildThatItEnded) {
    Child child;
    int exitCode = 0;
    EXPECT_CODE(PERR_OK, PProcess::killSignal(child.pid, SIGKILL));
    EXPECT_CODE(PERR_NO_PROCESS, child.process.waitExitCode(exitCode));
}

TEST(ProcessEnding, KillTreeEndsAProcessWithItsDescendants) {
    Child const root(shell("sleep 60; :"), "/bin/sh");
    Ids children;
    ASSERT_TRUE(eventually([&] { return PProcess::getChildPID(root.pid, children) == PERR_OK; }));
    EXPECT_CODE(PERR_OK, PProcess::killTree(root.pid));
    for (unsigned int const pid : {root.pid, children[0]}) {
        bool running = true;
        EXPECT_CODE(PERR_OK, PProcess::isRunning(pid, running));
        EXPECT_FALSE(running);
    }
}

TEST(ProcessEnding, ASignalEndsThePause) {
    Child child;
    EXPECT_CODE(PERR_OK, interrupted([&] { return PProcess::killSignal(child.pid, 0); }));
    EXPECT_CODE(PERR_OK, interrupted([&] { return child.process.kill(); }));
}
