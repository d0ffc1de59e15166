#include <clocale>

#include <sys/resource.h>

#include <process/queries.h>

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
    EXPECT_EQ(0U, bytes % 1024);
}

TEST(ProcessInformation, OfTheCallersEnvironmentIsThatOfItsStart) {
    Texts environment;
    (void)setenv("PLT_LATER", "1", 1);
    EXPECT_CODE(PERR_OK, PProcess::getCurrentEnvironment(environment));
    EXPECT_FALSE(environment.empty());
    EXPECT_EQ(0, std::count(environment.begin(), environment.end(), owned("PLT_LATER=1")));
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
    EXPECT_CODE(PERR_NOT_FOUND, child.process.getWorkingDir(text));
}

TEST(ProcessInformation, PathsHaveSlashesAndZerosBehindMultibyteText) {
    ASSERT_NE(nullptr, setlocale(LC_CTYPE, "C.UTF-8"));
    Scratch const scratch;
    std::string const path = scratch.path("a\\b\xC3\xA9");
    std::wstring const shown = scratch.wpath("a/b") + std::wstring(L"\xE9\0", 2);
    std::filesystem::create_directory(path);
    ChildRun const child([&] { return chdir(path.c_str()) + pause(); });
    PString found;
    EXPECT_TRUE(eventually([&] {
        (void)PProcess::getWorkingDir(static_cast<unsigned int>(child.pid), found);
        return view(found) == shown;
    }));
}
