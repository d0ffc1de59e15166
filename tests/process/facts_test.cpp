#include <thread>

#include <process/children.h>
#include <sys/resource.h>

TEST(ProcessFacts, TellHowAChildStands) {
    Child const child("60 1", "/bin/sleep", "", {owned("A="), owned(std::string(300, 'v') + "=")});
    PString path;
    int nice = 99;
    unsigned long long memory = 0, free = 0;
    std::string environment = factOf(child.pid, "environ");
    std::replace(environment.begin(), environment.end(), '\0', '|');
    EXPECT_EQ(Answer(PERR_OK, "sleep"), askName(child.pid));
    EXPECT_EQ(Answer(PERR_OK, "/bin/sleep 60 1"), askLine(child.pid));
    EXPECT_EQ(Answer(PERR_OK, environment), askEnvironment(child.pid));
    EXPECT_EQ(Answer(PERR_OK, shown(PProcess::getCurrentPID())), askParent(child.pid));
    EXPECT_EQ(Answer(PERR_OK, "root"), askUser(child.pid));  // whoever runs it
    EXPECT_TRUE(child.process.getPath(path) == PERR_OK && path.endsWith(L"/sleep", 6, false));
    EXPECT_EQ(0, setpriority(PRIO_PROCESS, child.pid, 7));
    EXPECT_TRUE(child.process.getPriority(nice) == PERR_OK && nice == 7) << nice;
    EXPECT_TRUE(child.process.getMemoryUsage(memory) == PERR_OK && memory > 100U << 10) << memory;
    EXPECT_TRUE(PProcess::getFreeMemory(free) == PERR_OK && free > 1U << 20) << free;
}

TEST(ProcessFacts, AreKeptOrClearedForAProcessThatIsGone) {
    for (Fact const& fact : FACTS) {
        Child child("60");
        int exitCode = 0;
        child.end();
        ASSERT_TRUE(eventually([&] { return factOf(child.pid, "stat").find(") Z ") < 40; }));
        (void)fact.ask(child.pid);  // some take the exit code
        EXPECT_EQ(fact.reaps ? PERR_NO_PROCESS : PERR_OK, child.process.waitExitCode(exitCode))
            << fact.name;
        EXPECT_EQ(fact.reaps ? -1 : -9, exitCode) << fact.name;
        EXPECT_EQ(fact.gone, fact.ask(child.pid)) << fact.name;
        PString known;  // by the object itself
        EXPECT_TRUE(child.process.getPath(known) == PERR_OK && known == L"/bin/sleep");
        EXPECT_TRUE(child.process.getCmdLine(known) == PERR_OK && known == L"60");
    }
    PProcess const idle(L"/bin/idle", L"x");
    PString text(L"kept", 4);
    std::vector<PString> list{text};
    int value = 7;
    unsigned long long bytes = 7;
    for (int result :
         {idle.getName(text), idle.getPath(text), idle.getCmdLine(text), idle.getWorkingDir(text),
          idle.getPriority(value), idle.getEnvironment(list), idle.getMemoryUsage(bytes)})
        EXPECT_EQ(PERR_NO_PROCESS, result);
    EXPECT_TRUE(text == L"kept" && value == 7 && list.size() == 1 && bytes == 0);
}

TEST(ProcessFacts, GiveTheirCodesWhereNoDescriptorIsLeft) {
    std::vector<int> codes, expected{PERR_IO, PERR_OPEN, PERR_OPEN, PERR_IO, PERR_NOT_FOUND};
    unsigned int percent = 0;
    unsigned long long bytes = 0;
    Ids pids;
    rlimit limit{};
    ASSERT_EQ(0, getrlimit(RLIMIT_NOFILE, &limit));
    rlimit const none{0, limit.rlim_max};
    (void)setrlimit(RLIMIT_NOFILE, &none);
    codes = {PProcess::getCPUUsage(percent), PProcess::getCPUUsage(1, percent),
             PProcess::getSpecCPUUsage(0, percent), PProcess::getFreeMemory(bytes),
             PProcess::find(PString(), pids, pids)};
    for (Fact const& fact : FACTS) codes.push_back(fact.ask(PProcess::getCurrentPID()).first);
    (void)setrlimit(RLIMIT_NOFILE, &limit);
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
        {plain, {brief.pid}},
        {"C:\\x/pLT" + plain.substr(3), {brief.pid}},
        {plain.substr(0, plain.size() - 1), {}},
        {extended, {other.pid}},
        {extended.substr(0, 15), {}},  // cut as by the system
    };
    for (auto const& [name, expected] : rows) {
        Ids pids{1}, parents{1, 2};
        EXPECT_EQ(expected.empty() ? PERR_NOT_FOUND : PERR_OK,
                  PProcess::find(owned(name), pids, parents));
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

TEST(Load, OfABusyProcessShows) {
    Child const child(shell("while :; do :; done"), "/bin/sh");
    unsigned int process = 0, machine = 0, processor = 101;
    EXPECT_EQ(PERR_OK, PProcess::getCPUUsage(child.pid, process));
    EXPECT_EQ(PERR_OK, PProcess::getCPUUsage(machine));
    EXPECT_EQ(PERR_OK, PProcess::getSpecCPUUsage(0, processor));
    EXPECT_TRUE(process > 0 && process <= 100 / std::thread::hardware_concurrency() + 5) << process;
    EXPECT_TRUE(machine > 0 && machine <= 100 && processor <= 100) << machine << ' ' << processor;
}
