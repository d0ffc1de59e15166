#include <chrono>

#include <gtest/gtest.h>
#include <support/scratch.h>

#include "process/children.h"

namespace {

template <typename Action>
long _secondsOf(Action const& action) {
    auto const start = std::chrono::steady_clock::now();
    action();
    return static_cast<long>((std::chrono::steady_clock::now() - start) / std::chrono::seconds(1));
}

unsigned int pid;
PString text;
std::vector<unsigned int> ids;

}  // namespace

TEST(ProcessWaiting, OnlyTheQueriesThatReapTakeAnExitCode) {
    struct {
        char const* what;
        bool reaps;
        int (*query)();
    } const rows[] = {
        {"waitFinish", true, [] { return static_cast<int>(PProcess::waitFinish(pid, 5000)); }},
        {"getName", true, [] { return PProcess::getName(pid, text); }},
        {"getPath", true, [] { return PProcess::getPath(pid, text); }},
        {"listPIDs", true, [] { return PProcess::listPIDs(ids); }},
        {"getChildPID", true, [] { return PProcess::getChildPID(1, ids); }},
        {"find", true, [] { return PProcess::find(text, ids, ids); }},
        {"getCmdLine", false, [] { return PProcess::getCmdLine(pid, text); }},
        {"getWorkingDir", false, [] { return PProcess::getWorkingDir(pid, text); }},
        {"getParentPID", false, [] { return PProcess::getParentPID(pid, pid); }},
        {"getUserName", false, [] { return PProcess::getUserName(pid, text); }},
    };
    for (auto const& row : rows) {
        Child child("sleep 60");
        int exitCode = 0;
        pid = child.pid;
        child.end();
        ASSERT_TRUE(eventually([] { return factOf(pid, "stat").find(") Z ") < 40; })) << row.what;
        (void)row.query();
        EXPECT_EQ(row.reaps ? PERR_NO_PROCESS : PERR_OK, child.process.waitExitCode(exitCode))
            << row.what;
        EXPECT_EQ(row.reaps ? -1 : -9, exitCode) << row.what;
    }
}

TEST(ProcessEnding, KillEndsTheChildAndForgetsIt) {
    Scratch scratch;
    Child child("ignore " + scratch.path("ready"));
    PProcess& process = child.process;
    int exitCode = 0;
    ASSERT_TRUE(eventually([&] { return !scratch.read("ready").empty(); }));
    EXPECT_LE(1, _secondsOf([&] { EXPECT_EQ(PERR_OK, PProcess::kill(child.pid)); }));
    EXPECT_TRUE(process.waitFinish(999));  // SIGTERM was ignored
    EXPECT_EQ(PERR_OK, process.kill());
    EXPECT_EQ("", factOf(child.pid, "stat"));
    EXPECT_EQ(PERR_NO_PROCESS, process.waitExitCode(exitCode));
    EXPECT_EQ(0, _secondsOf([&] {
                  EXPECT_EQ(PERR_OK, process.kill());
                  EXPECT_EQ(PERR_KILL, PProcess::killSignal(child.pid, SIGTERM));
                  EXPECT_EQ(PERR_KILL, PProcess::killTree(child.pid));
              }));
}
