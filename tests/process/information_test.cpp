#include <clocale>

#include <sys/resource.h>

#include <process/queries.h>

namespace {

/// No descriptor can be had while one exists.
class NoDescriptors {
public:
    NoDescriptors() {
        (void)getrlimit(RLIMIT_NOFILE, &before);
        rlimit const none{0, before.rlim_max};
        (void)setrlimit(RLIMIT_NOFILE, &none);
    }
    ~NoDescriptors() { (void)setrlimit(RLIMIT_NOFILE, &before); }

private:
    rlimit before{};
};

}  // namespace

TEST(ProcessInformation, TellsOfARunningChild) {
    Texts const added{owned("PLT_ADDED=1")};
    PProcess process(L"/bin/sleep", L"60 1", L"/usr", added);
    unsigned int pid = 0, parent = 0;
    int nice = 7;
    unsigned long long bytes = 0;
    PString text;
    Texts environment;
    ASSERT_CODE(PERR_OK, process.start());
    ASSERT_CODE(PERR_OK, process.getPID(pid));
    EXPECT_TRUE(eventually([&] { return process.getName(text) == PERR_OK && text == L"sleep"; }));
    EXPECT_CODE(PERR_OK, process.getPath(text));
    EXPECT_TRUE(text.endsWith(L"/sleep", P_WHOLE_STRING, false));
    EXPECT_CODE(PERR_OK, process.getCmdLine(text));
    EXPECT_TEXT(L"/bin/sleep 60 1", text);
    EXPECT_CODE(PERR_OK, process.getWorkingDir(text));
    EXPECT_TEXT(L"/usr", text);
    EXPECT_CODE(PERR_OK, process.getEnvironment(environment));
    EXPECT_TEXT(L"PLT_ADDED=1", environment.back());
    EXPECT_EQ(0, setpriority(PRIO_PROCESS, pid, 5));
    EXPECT_CODE(PERR_OK, process.getPriority(nice));
    EXPECT_EQ(5, nice);
    EXPECT_CODE(PERR_OK, process.getMemoryUsage(bytes));
    EXPECT_GT(bytes, 0U);
    EXPECT_EQ(0U, bytes % 1024);
    EXPECT_CODE(PERR_OK, PProcess::getParentPID(pid, parent));
    EXPECT_EQ(PProcess::getCurrentPID(), parent);
    EXPECT_EQ(0, ::kill(static_cast<pid_t>(pid), SIGKILL));
    EXPECT_EQ(static_cast<pid_t>(pid), waitpid(static_cast<pid_t>(pid), nullptr, 0));
}

TEST(ProcessInformation, TellsOfTheCallerAndTheMachine) {
    Texts environment;
    PString user;
    unsigned long long bytes = 0;
    EXPECT_EQ(static_cast<unsigned int>(getpid()), PProcess::getCurrentPID());
    (void)setenv("PLT_LATER", "1", 1);
    EXPECT_CODE(PERR_OK, PProcess::getCurrentEnvironment(environment));
    EXPECT_FALSE(environment.empty());
    EXPECT_EQ(0, std::count(environment.begin(), environment.end(), owned("PLT_LATER=1")));
    EXPECT_CODE(PERR_OK, PProcess::getUserName(PProcess::getCurrentPID(), user));
    EXPECT_TEXT(L"root", user);
    EXPECT_CODE(PERR_OK, PProcess::getFreeMemory(bytes));
    EXPECT_GT(bytes, 0U);
}

TEST(ProcessInformation, IsRefusedForAnIdThatNoProcessBears) {
    unsigned int const gone = endedProcess();
    for (Query const& query : queries()) {
        SCOPED_TRACE(query.what);
        EXPECT_CODE(query.ofNoProcess, query.ask(gone));
    }
}

TEST(ProcessInformation, OfAnObjectWithoutChildLeavesItsOutputAlone) {
    PProcess const idle(L"/bin/idle", L"x");
    PString text(L"kept", 4);
    Texts environment(1);
    int priority = 7;
    unsigned long long bytes = 7;
    EXPECT_CODE(PERR_NO_PROCESS, idle.getName(text));
    EXPECT_CODE(PERR_NO_PROCESS, idle.getPath(text));
    EXPECT_CODE(PERR_NO_PROCESS, idle.getCmdLine(text));
    EXPECT_CODE(PERR_NO_PROCESS, idle.getWorkingDir(text));
    EXPECT_CODE(PERR_NO_PROCESS, idle.getEnvironment(environment));
    EXPECT_CODE(PERR_NO_PROCESS, idle.getPriority(priority));
    EXPECT_TEXT(L"kept", text);
    EXPECT_EQ(1U, environment.size());
    EXPECT_EQ(7, priority);
    EXPECT_CODE(PERR_NO_PROCESS, idle.getMemoryUsage(bytes));
    EXPECT_EQ(0U, bytes) << "this one is cleared";
}

TEST(ProcessInformation, OfAnEndedChildIsWhatTheObjectDescribes) {
    Child child(owned("60"), "\\bin\\sleep");
    PString text;
    child.end();
    EXPECT_CODE(PERR_OK, child.process.getPath(text));  // collects the child
    EXPECT_TEXT(L"/bin/sleep", text);
    EXPECT_CODE(PERR_OK, child.process.getCmdLine(text));
    EXPECT_TEXT(L"60", text);
    EXPECT_CODE(PERR_NOT_FOUND, child.process.getWorkingDir(text));
}

TEST(ProcessInformation, OfAZombieHasNeitherMemoryNorArguments) {
    Child const child;
    PString line(L"old", 3);
    unsigned long long bytes = 7;
    child.end();
    EXPECT_CODE(PERR_NOT_FOUND, PProcess::getMemoryUsage(child.pid, bytes));
    EXPECT_EQ(7U, bytes);
    EXPECT_CODE(PERR_OK, PProcess::getCmdLine(child.pid, line));
    EXPECT_TEXT(L"", line);
}

TEST(ProcessInformation, PathsAreTrimmedWithSlashesAndZerosBehindMultibyteText) {
    ASSERT_NE(nullptr, setlocale(LC_CTYPE, "C.UTF-8"));
    Scratch const scratch;
    std::wstring const here = scratch.wpath("");
    for (auto const& [folder, text] : {std::pair<std::string, std::wstring>("a\\b \t", L"a/b"),
                                       {"\xC3\xA9", std::wstring(L"\xE9\0", 2)}}) {
        std::string const path = scratch.path(folder);
        std::filesystem::create_directory(path);
        ChildRun const child([&] { return chdir(path.c_str()) + pause(); });
        PString found;
        EXPECT_TRUE(eventually([&] {
            (void)PProcess::getWorkingDir(static_cast<unsigned int>(child.pid), found);
            return found.startsWith(here.c_str(), P_WHOLE_STRING, false);
        }));
        EXPECT_TEXT(here + text, found);
    }
}

TEST(ProcessInformation, IsRefusedWithoutADescriptor) {
    unsigned int percent = 7;
    unsigned long long bytes = 7;
    (void)queries()[0].ask(1);  // what checks types at run time opens a pipe once
    auto const asked = queries();
    NoDescriptors const none;
    for (Query const& query : asked) {
        SCOPED_TRACE(query.what);
        EXPECT_CODE(query.noDescriptors, query.ask(PProcess::getCurrentPID()));
    }
    EXPECT_CODE(PERR_IO, PProcess::getFreeMemory(bytes));
    EXPECT_EQ(0U, bytes);
    EXPECT_CODE(PERR_OPEN, PProcess::getSpecCPUUsage(0, percent));
    EXPECT_EQ(7U, percent);
    EXPECT_CODE(PERR_IO, PProcess::getCPUUsage(percent));
    EXPECT_EQ(0U, percent);
}
