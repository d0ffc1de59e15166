#include <process/children.h>
#include <sys/resource.h>

TEST(ProcessFacts, TellHowAChildStandsAndWhichBearAName) {
    Scratch scratch;
    std::string const plain = "Plt" + std::to_string(getpid()), extended = plain + "-more-than-15";
    for (auto const& name : {plain, extended})
        ASSERT_EQ(0, symlink("/bin/sleep", scratch.path(name).c_str()));
    Child const brief("60 1", scratch.path(plain)), other("60", scratch.path(extended));
    std::string environment = factOf(brief.pid, "environ");
    std::replace(environment.begin(), environment.end(), '\0', '|');
    std::string const self = shown(getpid());
    EXPECT_EQ(0, setpriority(PRIO_PROCESS, brief.pid, 7));
    EXPECT_EQ(Answer(PERR_OK, plain), askName(brief.pid));
    EXPECT_EQ(Answer(PERR_OK, scratch.path(plain) + " 60 1"), askLine(brief.pid));
    EXPECT_EQ(Answer(PERR_OK, environment), askEnvironment(brief.pid));
    EXPECT_EQ(Answer(PERR_OK, self), askParent(brief.pid));
    EXPECT_EQ(Answer(PERR_OK, "root"), askUser(brief.pid));  // whoever runs it
    EXPECT_EQ(Answer(PERR_OK, "7"), askNice(brief.pid));
    EXPECT_TRUE(askPath(brief.pid).second.ends_with("/sleep")) << askPath(brief.pid).second;
    EXPECT_LT(100 << 10, std::stol(askMemory(brief.pid).second));

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
    Ids all{0}, children{0};
    EXPECT_EQ(PERR_OK, PProcess::listPIDs(all));
    EXPECT_EQ(1, std::count(all.begin(), all.end(), brief.pid));
    EXPECT_EQ(0, std::count(all.begin(), all.end(), 0));  // nothing but processes
    EXPECT_EQ(PERR_OK, PProcess::getChildPID(getpid(), children));
    EXPECT_EQ((Ids{brief.pid, other.pid}), children);
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
    rlimit limit{};
    ASSERT_EQ(0, getrlimit(RLIMIT_NOFILE, &limit));
    std::vector<std::pair<Question, int>> rows{
        {askFree, PERR_IO}, {askMachineLoad, PERR_IO}, {askProcessorLoad, PERR_OPEN}};
    for (Fact const& fact : FACTS) rows.emplace_back(fact.ask, fact.starved);
    for (std::size_t i = 0; i < rows.size(); ++i) {
        rlimit const none{0, limit.rlim_max};
        (void)setrlimit(RLIMIT_NOFILE, &none);
        int const code = rows[i].first(PProcess::getCurrentPID()).first;
        (void)setrlimit(RLIMIT_NOFILE, &limit);
        EXPECT_EQ(rows[i].second, code) << i;
    }
}
