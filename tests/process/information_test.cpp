#include <clocale>

#include <sys/resource.h>

#include <process/children.h>

TEST(ProcessInformation, TellsOfARunningChild) {
    Child child(owned("60 1"));
    int nice = 7;
    unsigned long long bytes = 0;
    PString text;
    EXPECT_CODE(PERR_OK, child.process.getName(text));
    EXPECT_TEXT(L"sleep", text);
    EXPECT_CODE(PERR_OK, child.process.getPath(text));
    EXPECT_TRUE(text.endsWith(L"/sleep", P_WHOLE_STRING, false));
    EXPECT_CODE(PERR_OK, child.process.getCmdLine(text));
    EXPECT_TEXT(L"/bin/sleep 60 1", text);
    EXPECT_EQ(0, setpriority(PRIO_PROCESS, child.pid, 5));
    EXPECT_CODE(PERR_OK, child.process.getPriority(nice));
    EXPECT_EQ(5, nice);
    EXPECT_CODE(PERR_OK, child.process.getMemoryUsage(bytes));
    EXPECT_GT(bytes, 0U);
}

TEST(ProcessInformation, TellsTheEnvironmentOfTheCaller) {
    Texts environment;
    EXPECT_CODE(PERR_OK, PProcess::getCurrentEnvironment(environment));
    EXPECT_FALSE(environment.empty());
}

TEST(ProcessInformation, IsRefusedForAnIdThatNoProcessBears) {
    unsigned int const gone = endedProcess();
    unsigned int number = 7;
    unsigned long long bytes = 7;
    int priority = 7;
    PString text;
    Texts environment;
    EXPECT_CODE(PERR_NOT_FOUND, PProcess::getName(gone, text));
    EXPECT_CODE(PERR_NOT_FOUND, PProcess::getPath(gone, text));
    EXPECT_CODE(PERR_NOT_FOUND, PProcess::getCmdLine(gone, text));
    EXPECT_CODE(PERR_NOT_FOUND, PProcess::getWorkingDir(gone, text));
    EXPECT_CODE(PERR_NOT_FOUND, PProcess::getEnvironment(gone, environment));
    EXPECT_CODE(PERR_NOT_FOUND, PProcess::getPriority(gone, priority));
    EXPECT_CODE(PERR_NOT_FOUND, PProcess::getParentPID(gone, number));
    EXPECT_CODE(PERR_NO_PROCESS, PProcess::getMemoryUsage(gone, bytes));
    EXPECT_CODE(PERR_NO_SUCH_FILE, PProcess::getCPUUsage(gone, number));
}

TEST(ProcessInformation, OfAnObjectWithoutChildLeavesItsOutputAlone) {
    PProcess const idle(L"/bin/idle", L"x");
    PString text(L"kept", 4);
    Texts environment;
    int priority = 7;
    unsigned long long bytes = 7;
    EXPECT_CODE(PERR_NO_PROCESS, idle.getName(text));
    EXPECT_CODE(PERR_NO_PROCESS, idle.getPath(text));
    EXPECT_CODE(PERR_NO_PROCESS, idle.getCmdLine(text));
    EXPECT_CODE(PERR_NO_PROCESS, idle.getWorkingDir(text));
    EXPECT_CODE(PERR_NO_PROCESS, idle.getEnvironment(environment));
    EXPECT_CODE(PERR_NO_PROCESS, idle.getPriority(priority));
    EXPECT_TEXT(L"kept", text);
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
}

TEST(ProcessInformation, PathsHaveSlashesAndZerosBehindMultibyteText) {
    ASSERT_NE(nullptr, setlocale(LC_CTYPE, "C.UTF-8"));
    Scratch const scratch;
    std::string const path = scratch.path("a\\b\xC3\xA9");
    std::filesystem::create_directory(path);
    ChildRun const child([&] { return chdir(path.c_str()) + pause(); });
    auto const pid = static_cast<unsigned int>(child.pid);
    PString found;
    EXPECT_TRUE(eventually([&] {
        (void)PProcess::getWorkingDir(pid, found);
        return view(found) == scratch.wpath("a/b") + std::wstring(L"\xE9\0", 2);
    }));
}
