#include <process/children.h>
#include <process/script.h>

namespace {

using Calls = std::vector<std::string>;

}  // namespace

TEST(ScriptedPauses, AWaitIsDividedIntoTenthsOfASecondAtLeast) {
    Child child;
    auto const expectPauses = [&](unsigned int milliseconds, Calls const& expected) {
        Script const byId;
        EXPECT_TRUE(PProcess::waitFinish(child.pid, milliseconds));
        EXPECT_EQ(expected, byId.calls());
        Script const byObject;
        EXPECT_TRUE(child.process.waitFinish(milliseconds));
        EXPECT_EQ(expected, byObject.calls());
    };
    expectPauses(999, {});
    expectPauses(1999, {"usleep 1000000"});
    expectPauses(20009, Calls(10, "usleep 2000000"));
}

TEST(ScriptedPauses, ASignalIsFollowedByASecond) {
    Child child;
    std::string const kill = "kill " + std::to_string(child.pid), pause = "usleep 1000000";
    Script const script;
    EXPECT_CODE(PERR_OK, PProcess::killSignal(child.pid, SIGUSR1));
    EXPECT_CODE(PERR_OK, PProcess::kill(child.pid));
    EXPECT_CODE(PERR_OK, child.process.kill());
    EXPECT_EQ((Calls{kill + " 10", pause, kill + " 15", pause, kill + " 9", pause}),
              script.calls());
}

TEST(ScriptedPauses, KillTreeEndsParentsBeforeTheirChildren) {
    Child const root(shell("tail -s 0.1 --pid=$$ -f /dev/null; :"), "/bin/sh");
    Ids children;
    ASSERT_TRUE(eventually([&] { return PProcess::getChildPID(root.pid, children) == PERR_OK; }));
    std::string const pause = "usleep 1000000";
    Calls expected;
    for (unsigned int const pid : {root.pid, children[0]}) {
        std::string const kill = "kill " + std::to_string(pid);
        for (auto const& call : {kill + " 15", pause, pause, pause, kill + " 9", pause})
            expected.push_back(call);
    }
    Script const script;
    EXPECT_CODE(PERR_OK, PProcess::killTree(root.pid));
    EXPECT_EQ(expected, script.calls());
}

TEST(ScriptedFork, LeavesAnIdThatIsNeverSignalledWhereItFails) {
    Script const script;
    PProcess process(L"/bin/true", L"");
    unsigned int pid = 7;
    EXPECT_CODE(PERR_OK, process.start());
    EXPECT_CODE(PERR_NO_PROCESS, process.getPID(pid));
    EXPECT_CODE(PERR_NO_PROCESS, PProcess::start(L"/bin/true", L"", pid));
    EXPECT_EQ(7U, pid);
    EXPECT_CODE(PERR_OK, process.kill());
    EXPECT_EQ(Calls(), script.calls());
}
