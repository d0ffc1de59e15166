#include <process/children.h>
#include <sys/resource.h>

TEST(ProcessFacts, TellHowAChildStandsAndWhichBearAName) {
    Scratch scratch;
    std::string const plain = "Plt" + std::to_string(getpid()), extended = plain + "-more-than-15";
    for (auto const& name : {plain, extended})
        ASSERT_EQ(0, symlink("/bin/sleep", scratch.path(name).c_str()));
    Child const brief("60 1", scratch.path(plain)), other("60", scratch.path(extended));
    EXPECT_EQ(0, setpriority(PRIO_PROCESS, brief.pid, 7));
    EXPECT_EQ(scratch.path(plain) + " 60 1", ask("getCmdLine", brief.pid).second);
    EXPECT_EQ(std::to_string(getpid()), ask("getParentPID", brief.pid).second);
    EXPECT_EQ("7", ask("getPriority", brief.pid).second);
    EXPECT_TRUE(ask("getPath", brief.pid).second.ends_with("/sleep"));

    std::pair<std::string, Ids> const rows[] = {
        {plain, {brief.pid}},         {"C:\\x/pLT" + plain.substr(3), {brief.pid}},
        {plain.substr(1), {}},        {extended, {other.pid}},
        {extended.substr(0, 15), {}},  // cut as by the system
    };
    for (auto const& [name, expected] : rows) {
        Ids pids{1}, parents{1, 2};
        EXPECT_EQ(expected.empty(), PProcess::find(owned(name), pids, parents) == PERR_NOT_FOUND);
        EXPECT_EQ(expected, pids) << name;
        EXPECT_EQ(Ids(pids.size(), getpid()), parents) << name;
    }
    Ids all{0};
    EXPECT_EQ(PERR_OK, PProcess::listPIDs(all));
    EXPECT_EQ(1, std::count(all.begin(), all.end(), brief.pid));
    EXPECT_EQ(0, std::count(all.begin(), all.end(), 0));  // nothing but processes
}

TEST(ProcessFacts, AreKeptOrClearedWithoutAProcessOrADescriptor) {
    PString text(L"kept", 4);
    std::vector<PString> list{text};
    unsigned long long bytes = 7;
    int value = 7;
    PProcess const idle(L"/bin/idle", L"x");
    for (int code :
         {idle.getName(text), idle.getPath(text), idle.getCmdLine(text), idle.getWorkingDir(text),
          idle.getPriority(value), idle.getEnvironment(list), idle.getMemoryUsage(bytes)})
        EXPECT_EQ(PERR_NO_PROCESS, code);
    EXPECT_TRUE(text == L"kept" && value == 7 && list.size() == 1 && bytes == 0);
    rlimit limit{};
    ASSERT_EQ(0, getrlimit(RLIMIT_NOFILE, &limit));
    rlimit const none{0, limit.rlim_max};
    for (auto const& [name, fact] : FACTS) {
        SCOPED_TRACE(name);
        (void)fact.ask(getpid());  // what checks types at run time looks at them once, by a pipe
        (void)setrlimit(RLIMIT_NOFILE, &none);
        int const starved = fact.ask(getpid()).first;
        (void)setrlimit(RLIMIT_NOFILE, &limit);
        EXPECT_EQ(fact.starved, starved);
        if (fact.gone == Answer()) continue;
        Child child;
        child.end();
        siginfo_t ended{};
        ASSERT_EQ(0, waitid(P_PID, child.pid, &ended, WEXITED | WNOWAIT));
        (void)fact.ask(child.pid);
        EXPECT_EQ(fact.reaps ? PERR_NO_PROCESS : PERR_OK, child.process.waitExitCode(value));
        EXPECT_EQ(fact.reaps ? -1 : -9, value);
        EXPECT_EQ(fact.gone, fact.ask(child.pid));
        EXPECT_TRUE(child.process.getPath(text) == PERR_OK && text == L"/bin/sleep");  // its own
        EXPECT_TRUE(child.process.getCmdLine(text) == PERR_OK && text == L"60");
    }
}
