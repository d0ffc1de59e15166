#include <gtest/gtest.h>
#include <support/scratch.h>
#include <sys/resource.h>

#include "process/children.h"

TEST(ProcessFacts, TellHowAChildStands) {
    std::string const value = "LONG=" + std::string(300, 'v');
    Child child({"first arg", "sleep", "60", "b c"}, {"A=1", "", "NO_VALUE", value, "Z=\xC3\xA9"});
    PString text;
    std::vector<PString> entries;
    EXPECT_EQ(PERR_OK, PProcess::getPath(child.pid, text));
    EXPECT_EQ(wide(TEST_CHILD), shown(text));
    EXPECT_EQ(PERR_OK, PProcess::getName(child.pid, text));
    EXPECT_EQ(L"test_child", shown(text));
    EXPECT_EQ(PERR_OK, PProcess::getCmdLine(child.pid, text));
    EXPECT_EQ(L"\"first arg\" sleep 60 \"b c\"", shown(text));
    EXPECT_EQ(PERR_OK, PProcess::getUserName(child.pid, text));
    EXPECT_EQ(L"root", shown(text));  // whoever runs it
    EXPECT_EQ(PERR_OK, PProcess::getEnvironment(child.pid, entries));
    EXPECT_EQ((std::vector<PString>{owned("A=1"), owned(""), owned("NO_VALUE"), owned(value),
                                    owned("Z=")}),  // without what the C locale cannot convert
              entries);

    unsigned int parent = 0;
    int nice = 99;
    unsigned long long bytes = 0;
    EXPECT_EQ(PERR_OK, PProcess::getParentPID(child.pid, parent));
    EXPECT_EQ(PProcess::getCurrentPID(), parent);
    EXPECT_EQ(0, setpriority(PRIO_PROCESS, child.pid, 7));
    EXPECT_EQ(PERR_OK, PProcess::getPriority(child.pid, nice));
    EXPECT_EQ(7, nice);
    EXPECT_EQ(PERR_OK, PProcess::getMemoryUsage(child.pid, bytes));
    EXPECT_GT(bytes, 100U << 10);
    EXPECT_EQ(PERR_OK, PProcess::getFreeMemory(bytes));
    EXPECT_GT(bytes, 1U << 20);
    EXPECT_EQ(PERR_OK, PProcess::getCurrentEnvironment(entries));
    EXPECT_FALSE(entries.empty());
}

TEST(ProcessFacts, AProcessThatIsGoneHasNone) {
    PProcess idle(L"/bin/idle", L"x"), ended(owned(TEST_CHILD), L"sleep 60");
    ASSERT_EQ(PERR_OK, ended.start());
    Child const child(ended);
    int value = 7;
    (void)::kill(static_cast<pid_t>(child.pid), SIGKILL);
    (void)ended.waitExitCode(value);

    unsigned int parent = 7;
    unsigned long long bytes = 7;
    PString text(L"kept", 4);
    std::vector<PString> list{owned("kept")};
    for (int result :
         {PProcess::getPath(child.pid, text), PProcess::getCmdLine(child.pid, text),
          PProcess::getWorkingDir(child.pid, text), PProcess::getUserName(child.pid, text),
          PProcess::getPriority(child.pid, value), PProcess::getParentPID(child.pid, parent)})
        EXPECT_EQ(PERR_NOT_FOUND, result);
    for (int result : {idle.getName(text), idle.getPath(text), idle.getCmdLine(text),
                       idle.getWorkingDir(text), idle.getPriority(value), idle.getEnvironment(list),
                       PProcess::getMemoryUsage(child.pid, bytes)})
        EXPECT_EQ(PERR_NO_PROCESS, result);
    EXPECT_TRUE(text == L"kept" && parent == 0 && bytes == 7 && list.size() == 1);
    EXPECT_EQ(PERR_NO_PROCESS, idle.getMemoryUsage(bytes));
    EXPECT_EQ(PERR_NOT_FOUND, PProcess::getName(child.pid, text));
    EXPECT_EQ(PERR_NOT_FOUND, PProcess::getEnvironment(child.pid, list));
    EXPECT_TRUE(text.ptr() == nullptr && bytes == 0 && list.empty());
    EXPECT_EQ(PERR_OK, ended.getPath(text));  // what the object knows by itself
    EXPECT_EQ(wide(TEST_CHILD), shown(text));
    EXPECT_EQ(PERR_OK, ended.getCmdLine(text));
    EXPECT_EQ(L"sleep 60", shown(text));
}

TEST(Load, OfABusyProcessShows) {
    Child child({"spin", "spin", "60"});
    unsigned int process = 0, machine = 0, processor = 101;
    EXPECT_EQ(PERR_OK, PProcess::getCPUUsage(child.pid, process));
    EXPECT_EQ(PERR_OK, PProcess::getCPUUsage(machine));
    EXPECT_EQ(PERR_OK, PProcess::getSpecCPUUsage(0, processor));
    EXPECT_TRUE(process > 0 && process <= 60 / std::thread::hardware_concurrency() + 50) << process;
    EXPECT_TRUE(machine > 0 && machine <= 100 && processor <= 100) << machine << ' ' << processor;
}
