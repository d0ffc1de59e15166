#include <process/children.h>

TEST(ProcessEnding, KillEndsAndCollectsAChildWhateverItIgnores) {
    (void)std::signal(SIGTERM, SIG_IGN);  // the child inherits it
    Child child;
    (void)std::signal(SIGTERM, SIG_DFL);
    EXPECT_CODE(PERR_OK, child.process.kill());
    EXPECT_EQ(-1, waitpid(static_cast<pid_t>(child.pid), nullptr, 0)) << "it was collected";
}

TEST(ProcessEnding, ASignalThatEndsAChildCollectsIt) {
    Child const child;
    EXPECT_CODE(PERR_OK, PProcess::killSignal(child.pid, SIGTERM));
    EXPECT_EQ(-1, waitpid(static_cast<pid_t>(child.pid), nullptr, 0));
}

TEST(ProcessEnding, WhatCannotBeSentIsRefused) {
    Child const child;
    unsigned int const gone = endedProcess();
    EXPECT_CODE(PERR_KILL, PProcess::kill(gone));
    EXPECT_CODE(PERR_KILL, PProcess::killTree(gone));
    EXPECT_CODE(PERR_KILL, PProcess::killSignal(child.pid, 1000));
}
