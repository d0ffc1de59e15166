#include <gtest/gtest.h>
#include <support/scratch.h>

#include "process/children.h"

namespace {

template <typename Action>
long _millisecondsOf(Action const& action) {
    auto const start = std::chrono::steady_clock::now();
    action();
    return static_cast<long>((std::chrono::steady_clock::now() - start) /
                             std::chrono::milliseconds(1));
}

}  // namespace

TEST(ProcessWaiting, TellsHowAChildEnded) {
    struct {
        wchar_t const* arguments;
        int signal, exitCode;
    } const rows[] = {{L"exit 0", 0, 0},
                      {L"exit 255", 0, 255},
                      {L"sleep 60", SIGKILL, -9},
                      {L"sleep 60", SIGTERM, -15}};
    for (auto const& row : rows) {
        PProcess process(owned(TEST_CHILD), row.arguments);
        unsigned int pid = 0;
        int exitCode = 1;
        EXPECT_EQ(PERR_NO_PROCESS, process.waitExitCode(exitCode));
        EXPECT_EQ(-1, exitCode);
        EXPECT_EQ(PERR_OK, process.start());
        bool const signalled = row.signal != 0 && process.getPID(pid) == PERR_OK;
        if (signalled) (void)::kill(static_cast<pid_t>(pid), row.signal);
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
        {"isRunning", true, [] { (void)PProcess::isRunning(pid, flag); }},
        {"waitFinish", true, [] { (void)PProcess::waitFinish(pid, 5000); }},
        {"getName", true, [] { (void)PProcess::getName(pid, text); }},
        {"getPath", true, [] { (void)PProcess::getPath(pid, text); }},
        {"listPIDs", true, [] { (void)PProcess::listPIDs(ids); }},
        {"getChildPID", true, [] { (void)PProcess::getChildPID(1, ids); }},
        {"find", true, [] { (void)PProcess::find(owned("x"), ids, ids); }},
        {"getCmdLine", false, [] { (void)PProcess::getCmdLine(pid, text); }},
        {"getWorkingDir", false, [] { (void)PProcess::getWorkingDir(pid, text); }},
        {"getEnvironment", false, [] { (void)PProcess::getEnvironment(pid, entries); }},
        {"getUserName", false, [] { (void)PProcess::getUserName(pid, text); }},
    };
    for (auto const& row : rows) {
        Child child("sleep 60");
        int exitCode = 0;
        pid = child.pid;
        (void)::kill(static_cast<pid_t>(pid), SIGTERM);
        ASSERT_TRUE(eventually([] { return stateOf(pid) == 'Z'; })) << row.what;
        row.query();
        EXPECT_EQ(row.reaps ? PERR_NO_PROCESS : PERR_OK, child.process.waitExitCode(exitCode))
            << row.what;
        EXPECT_EQ(row.reaps ? -1 : -15, exitCode) << row.what;
    }
}

TEST(ProcessEnding, KillEndsTheChildAndForgetsIt) {
    Scratch scratch;
    Child child("ignore " + scratch.path("ready"));
    PProcess& process = child.process;
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
              }),
              900);
}
