#include <chrono>
#include <csignal>

#include <gtest/gtest.h>
#include <support/scratch.h>
#include <unistd.h>

#include "process/children.h"

namespace {

long _millisecondsOf(std::function<void()> const& action) {
    auto const start = std::chrono::steady_clock::now();
    action();
    return static_cast<long>((std::chrono::steady_clock::now() - start) /
                             std::chrono::milliseconds(1));
}

}  // namespace

TEST(ProcessWaiting, TellsHowAChildEnded) {
    struct {
        wchar_t const* arguments;
        int signal;
        int exitCode;
    } const rows[] = {{L"exit 0", 0, 0},
                      {L"exit 3", 0, 3},
                      {L"exit 255", 0, 255},
                      {L"sleep 60", SIGKILL, -9},
                      {L"sleep 60", SIGTERM, -15}};
    for (auto const& row : rows) {
        PProcess process(wide(TEST_CHILD).c_str(), row.arguments);
        unsigned int pid = 0;
        int exitCode = 1;
        EXPECT_EQ(PERR_NO_PROCESS, process.waitExitCode(exitCode));
        EXPECT_EQ(-1, exitCode);
        EXPECT_EQ(PERR_OK, process.start());
        if (row.signal != 0 && process.getPID(pid) == PERR_OK)
            EXPECT_EQ(0, ::kill(static_cast<pid_t>(pid), row.signal));
        EXPECT_EQ(PERR_OK, process.waitExitCode(exitCode));
        EXPECT_EQ(row.exitCode, exitCode);
        EXPECT_EQ(PERR_NO_PROCESS, process.waitExitCode(exitCode));
        EXPECT_EQ(-1, exitCode);
        EXPECT_EQ(PERR_NO_PROCESS, process.getPID(pid));
    }
}

TEST(ProcessWaiting, OnlyTheQueriesThatReapTakeAnExitCode) {
    static unsigned int pid;
    static PString text;
    static std::vector<PString> entries;
    static std::vector<unsigned int> ids;
    static bool flag;
    struct {
        char const* what;
        bool reaps;
        void (*query)();
    } const rows[] = {
        {"isRunning", true, [] { (void)PProcess::isRunning(1, flag); }},
        {"waitFinish", true, [] { (void)PProcess::waitFinish(1, 0); }},
        {"getName", true, [] { (void)PProcess::getName(1, text); }},
        {"getPath", true, [] { (void)PProcess::getPath(1, text); }},
        {"listPIDs", true, [] { (void)PProcess::listPIDs(ids); }},
        {"getChildPID", true, [] { (void)PProcess::getChildPID(1, ids); }},
        {"find", true, [] { (void)PProcess::find(owned("x"), ids, ids); }},
        {"getCmdLine", false, [] { (void)PProcess::getCmdLine(pid, text); }},
        {"getWorkingDir", false, [] { (void)PProcess::getWorkingDir(pid, text); }},
        {"getEnvironment", false, [] { (void)PProcess::getEnvironment(pid, entries); }},
        {"getUserName", false, [] { (void)PProcess::getUserName(pid, text); }},
    };
    for (auto const& row : rows) {
        PProcess process(wide(TEST_CHILD).c_str(), L"exit 3");
        int exitCode = -1;
        ASSERT_EQ(PERR_OK, process.start());
        ASSERT_EQ(PERR_OK, PProcess::getChildPID(PProcess::getCurrentPID(), ids)) << row.what;
        pid = ids.back();
        ASSERT_TRUE(eventually([] { return stateOf(pid) == 'Z'; })) << row.what;
        row.query();
        EXPECT_EQ(row.reaps ? PERR_NO_PROCESS : PERR_OK, process.waitExitCode(exitCode))
            << row.what;
        EXPECT_EQ(row.reaps ? -1 : 3, exitCode) << row.what;
    }
}

TEST(ProcessEnding, KillEndsTheChildAndForgetsIt) {
    Scratch scratch;
    PProcess process(owned(TEST_CHILD), (L"ignore " + scratch.wpath("ready")).c_str());
    ASSERT_EQ(PERR_OK, process.start());
    Child const child(startedId(process));
    ASSERT_TRUE(eventually([&] { return !scratch.read("ready").empty(); }));
    EXPECT_GE(_millisecondsOf([&] { EXPECT_EQ(PERR_OK, PProcess::kill(child.pid)); }), 1000);
    EXPECT_TRUE(process.waitFinish(999));  // SIGTERM was ignored
    EXPECT_EQ(PERR_OK, process.kill());
    EXPECT_EQ('-', stateOf(child.pid));

    int exitCode = 0;
    EXPECT_EQ(PERR_NO_PROCESS, process.waitExitCode(exitCode));
    EXPECT_LT(_millisecondsOf([&] {
                  EXPECT_EQ(PERR_OK, process.kill());
                  EXPECT_EQ(PERR_KILL, PProcess::killSignal(child.pid, SIGTERM));
                  EXPECT_EQ(PERR_KILL, PProcess::killTree(child.pid));
                  EXPECT_FALSE(PProcess::waitFinish(child.pid, 5000));
              }),
              900);
}
