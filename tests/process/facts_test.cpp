#include <process/children.h>
#include <sys/resource.h>

TEST(ProcessFacts, TellHowABusyChildStands) {
    Child const child(shell("while :; do :; done"), "/bin/sh");
    unsigned int const self = PProcess::getCurrentPID();
    std::string environment = factOf(child.pid, "environ");
    std::replace(environment.begin(), environment.end(), '\0', '|');
    std::pair<Question, std::string> const rows[] = {
        {askName, "sh"},
        {askLine, "/bin/sh " + shell("while :; do :; done")},
        {askEnvironment, environment},
        {askParent, shown(self)},
        {askUser, "root"},  // whoever runs it
        {askFolder, askFolder(self).second},
    };
    for (auto const& [ask, value] : rows) EXPECT_EQ(Answer(PERR_OK, value), ask(child.pid));
    PString path;
    int nice = 99;
    unsigned int load = 0, all = 0, one = 101;
    unsigned long long memory = 0, free = 0;
    EXPECT_EQ(0, setpriority(PRIO_PROCESS, child.pid, 7));
    for (int code : {child.process.getPath(path), child.process.getPriority(nice),
                     child.process.getMemoryUsage(memory), PProcess::getFreeMemory(free),
                     PProcess::getCPUUsage(child.pid, load), PProcess::getCPUUsage(all),
                     PProcess::getSpecCPUUsage(0, one)})
        EXPECT_EQ(PERR_OK, code);
    EXPECT_TRUE(path.endsWith(L"sh", 2, false) && nice == 7) << shown(path) << nice;
    EXPECT_TRUE(memory > 100U << 10 && free > 1U << 20) << memory << ' ' << free;
    EXPECT_TRUE(load > 0 && load <= 105 && all > 0 && all <= 100 && one <= 100) << load << all;
}

TEST(ProcessFacts, AreKeptOrClearedForAProcessThatIsGone) {
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
    for (Fact const& fact : FACTS) {
        SCOPED_TRACE(fact.name);
        Child child;
        child.end();
        ASSERT_TRUE(eventually([&] { return factOf(child.pid, "stat").find(") Z ") < 40; }));
        (void)fact.ask(child.pid);
        EXPECT_EQ(fact.reaps ? PERR_NO_PROCESS : PERR_OK, child.process.waitExitCode(value));
        EXPECT_EQ(fact.reaps ? -1 : -9, value);
        EXPECT_EQ(fact.gone, fact.ask(child.pid));
        EXPECT_TRUE(child.process.getPath(text) == PERR_OK && text == L"/bin/sleep");  // its own
        EXPECT_TRUE(child.process.getCmdLine(text) == PERR_OK && text == L"60");
    }
}

TEST(ProcessFacts, GiveTheirCodesWhereNoDescriptorIsLeft) {
    unsigned int percent = 0;
    unsigned long long bytes = 0;
    std::vector<int> codes, expected;
    rlimit limit{};
    ASSERT_EQ(0, getrlimit(RLIMIT_NOFILE, &limit));
    rlimit const none{0, limit.rlim_max};
    (void)setrlimit(RLIMIT_NOFILE, &none);
    codes = {PProcess::getCPUUsage(percent), PProcess::getCPUUsage(1, percent),
             PProcess::getSpecCPUUsage(0, percent), PProcess::getFreeMemory(bytes)};
    for (Fact const& fact : FACTS) codes.push_back(fact.ask(PProcess::getCurrentPID()).first);
    (void)setrlimit(RLIMIT_NOFILE, &limit);
    expected = {PERR_IO, PERR_OPEN, PERR_OPEN, PERR_IO};
    for (Fact const& fact : FACTS) expected.push_back(fact.starved);
    EXPECT_EQ(expected, codes);
}

TEST(ProcessFacts, FindProgramsByTheirWholeName) {
    Scratch scratch;
    std::string const plain = "Plt" + std::to_string(getpid()), extended = plain + "-beyond-15";
    for (auto const& name : {plain, extended})
        ASSERT_EQ(0, symlink("/bin/sleep", scratch.path(name).c_str()));
    Child const brief("60", scratch.path(plain)), other("60", scratch.path(extended));
    std::pair<std::string, Ids> const rows[] = {
        {plain, {brief.pid}},         {"C:\\x/pLT" + plain.substr(3), {brief.pid}},
        {plain.substr(1), {}},        {extended, {other.pid}},
        {extended.substr(0, 15), {}},  // cut as by the system
    };
    for (auto const& [name, expected] : rows) {
        Ids pids{1}, parents{1, 2};
        EXPECT_EQ(expected.empty(), PProcess::find(owned(name), pids, parents) == PERR_NOT_FOUND);
        EXPECT_EQ(expected, pids) << name;
        EXPECT_EQ(Ids(pids.size(), PProcess::getCurrentPID()), parents) << name;
    }
    Ids all{0}, children{0};
    EXPECT_EQ(PERR_OK, PProcess::listPIDs(all));
    EXPECT_EQ(1, std::count(all.begin(), all.end(), brief.pid));
    EXPECT_EQ(0, std::count(all.begin(), all.end(), 0));  // nothing but processes
    EXPECT_EQ(PERR_OK, PProcess::getChildPID(PProcess::getCurrentPID(), children));
    EXPECT_EQ((Ids{brief.pid, other.pid}), children);
}
