#include <clocale>

#include <sys/prctl.h>
#include <sys/resource.h>

#include <process/children.h>

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

TEST(ProcessInformation, OfNoProcessClearsOrKeepsWhatItIsGiven) {
    unsigned int const gone = endedProcess();
    PString name(L"kept", 4), path(L"kept", 4), line(L"kept", 4), dir(L"kept", 4), user(L"kept", 4);
    Texts environment(1);
    int priority = 7;
    unsigned int parent = 7;
    unsigned long long bytes = 7;
    EXPECT_CODE(PERR_NOT_FOUND, PProcess::getName(gone, name));
    EXPECT_TEXT(L"", name);
    EXPECT_CODE(PERR_NOT_FOUND, PProcess::getPath(gone, path));
    EXPECT_TEXT(L"kept", path);
    EXPECT_CODE(PERR_NOT_FOUND, PProcess::getCmdLine(gone, line));
    EXPECT_TEXT(L"kept", line);
    EXPECT_CODE(PERR_NOT_FOUND, PProcess::getWorkingDir(gone, dir));
    EXPECT_TEXT(L"kept", dir);
    EXPECT_CODE(PERR_NOT_FOUND, PProcess::getUserName(gone, user));
    EXPECT_TEXT(L"kept", user);
    EXPECT_CODE(PERR_NOT_FOUND, PProcess::getEnvironment(gone, environment));
    EXPECT_TRUE(environment.empty());
    EXPECT_CODE(PERR_NOT_FOUND, PProcess::getPriority(gone, priority));
    EXPECT_EQ(7, priority);
    EXPECT_CODE(PERR_NOT_FOUND, PProcess::getParentPID(gone, parent));
    EXPECT_EQ(0U, parent);
    EXPECT_CODE(PERR_NO_PROCESS, PProcess::getMemoryUsage(gone, bytes));
    EXPECT_EQ(7U, bytes);
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
    EXPECT_TEXT(L"kept", text);
    EXPECT_CODE(PERR_NO_PROCESS, idle.getEnvironment(environment));
    EXPECT_EQ(1U, environment.size());
    EXPECT_CODE(PERR_NO_PROCESS, idle.getPriority(priority));
    EXPECT_EQ(7, priority);
    EXPECT_CODE(PERR_NO_PROCESS, idle.getMemoryUsage(bytes));
    EXPECT_EQ(0U, bytes);
}

TEST(ProcessInformation, OfAnEndedChildIsWhatTheObjectDescribes) {
    Child child(owned("60"), "\\bin\\sleep");
    PString text(L"kept", 4);
    child.end();
    EXPECT_CODE(PERR_OK, child.process.getPath(text));  // collects the child
    EXPECT_TEXT(L"/bin/sleep", text);
    EXPECT_CODE(PERR_OK, child.process.getCmdLine(text));
    EXPECT_TEXT(L"60", text);
    EXPECT_CODE(PERR_NOT_FOUND, child.process.getWorkingDir(text));
    EXPECT_TEXT(L"60", text);
    EXPECT_CODE(PERR_NOT_FOUND, child.process.getName(text));
    EXPECT_TEXT(L"", text);
}

TEST(ProcessInformation, OfAZombieHasNeitherMemoryNorArguments) {
    Child const child;
    PString line(L"kept", 4);
    Texts environment(1);
    unsigned long long bytes = 7;
    child.end();
    EXPECT_CODE(PERR_NOT_FOUND, PProcess::getMemoryUsage(child.pid, bytes));
    EXPECT_EQ(7U, bytes);
    EXPECT_CODE(PERR_OK, PProcess::getCmdLine(child.pid, line));
    EXPECT_TEXT(L"", line);
}

TEST(ProcessInformation, IsRefusedWithoutADescriptor) {
    unsigned int const self = PProcess::getCurrentPID();
    unsigned int number = 7;
    unsigned long long bytes = 7;
    bool running = true;
    PString text;
    Texts environment;
    Ids ids, parents;
    (void)PProcess::getName(self, text);  // what checks types at run time opens a pipe once
    NoDescriptors const none;
    EXPECT_CODE(PERR_NOT_FOUND, PProcess::getName(self, text));
    EXPECT_CODE(PERR_OK, PProcess::getPath(self, text));
    EXPECT_CODE(PERR_NOT_FOUND, PProcess::getCmdLine(self, text));
    EXPECT_CODE(PERR_NOT_FOUND, PProcess::getWorkingDir(self, text));
    EXPECT_CODE(PERR_NOT_FOUND, PProcess::getEnvironment(self, environment));
    EXPECT_CODE(PERR_NOT_FOUND, PProcess::getParentPID(self, number));
    EXPECT_CODE(PERR_NO_PROCESS, PProcess::getMemoryUsage(self, bytes));
    EXPECT_CODE(PERR_NOT_FOUND, PProcess::getUserName(self, text));
    EXPECT_CODE(PERR_IO, PProcess::getFreeMemory(bytes));
    EXPECT_EQ(0U, bytes);
    EXPECT_CODE(PERR_NOT_FOUND, PProcess::listPIDs(ids));
    EXPECT_CODE(PERR_NOT_FOUND, PProcess::getChildPID(1, ids));
    EXPECT_CODE(PERR_NOT_FOUND, PProcess::find(owned("x"), ids, parents));
    EXPECT_CODE(PERR_IO, PProcess::getCPUUsage(number));
    EXPECT_EQ(0U, number);
    EXPECT_CODE(PERR_OPEN, PProcess::getSpecCPUUsage(0, number));
    EXPECT_CODE(PERR_OPEN, PProcess::getCPUUsage(self, number));
    EXPECT_CODE(PERR_OK, PProcess::isRunning(self, running));
    EXPECT_FALSE(running);
}

TEST(ProcessInformation, NamesBeyondAsciiHaveTheirCharactersOnly) {
    ASSERT_NE(nullptr, setlocale(LC_CTYPE, "C.UTF-8"));
    struct {
        char const* bytes;
        wchar_t const* name;
    } const rows[] = {
        {"\xC3\xA9", L"\x00E9"},                               // two bytes
        {"\xE3\x81\x82", L"\x3042"},                           // three
        {" \xE3\x81\x82\xF0\x9F\x98\x80 ", L"\x3042\x1F600"},  // four, and space at both ends
    };
    for (auto const& row : rows) {
        SCOPED_TRACE(row.bytes);
        ChildRun const child([&] { return prctl(PR_SET_NAME, row.bytes) + pause(); });
        auto const pid = static_cast<unsigned int>(child.pid);
        PString name;
        EXPECT_TRUE(eventually([&] {  // it has its name a moment after it is there
            return PProcess::getName(pid, name) == PERR_OK && name == row.name;
        }));
        EXPECT_TEXT(row.name, name);
    }
}
