#include <thread>

#include <gtest/gtest.h>
#include <support/scratch.h>
#include <sys/resource.h>

#include "process/children.h"

TEST(ProcessFacts, TellHowAChildStands) {
    Child const child("sleep 60 x", TEST_CHILD, {owned("A="), owned(std::string(300, 'v') + "=")});
    PString name, path, line, user;
    std::vector<PString> entries;
    unsigned int parent = 0;
    int nice = 99;
    unsigned long long memory = 0, free = 0;
    ASSERT_EQ(0, setpriority(PRIO_PROCESS, child.pid, 7));
    for (int result :
         {PProcess::getName(child.pid, name), PProcess::getPath(child.pid, path),
          PProcess::getCmdLine(child.pid, line), PProcess::getUserName(child.pid, user),
          PProcess::getEnvironment(child.pid, entries), PProcess::getParentPID(child.pid, parent),
          PProcess::getPriority(child.pid, nice), PProcess::getMemoryUsage(child.pid, memory),
          PProcess::getFreeMemory(free)})
        EXPECT_EQ(PERR_OK, result);
    EXPECT_EQ(L"test_child", shown(name));
    EXPECT_EQ(wide(TEST_CHILD), shown(path));
    std::wstring const quote = wide(TEST_CHILD).find(L' ') == std::wstring::npos ? L"" : L"\"";
    EXPECT_EQ(quote + wide(TEST_CHILD) + quote + L" sleep 60 x", shown(line));
    EXPECT_EQ(L"root", shown(user));  // whoever runs it
    EXPECT_EQ(PProcess::getCurrentPID(), parent);
    EXPECT_EQ(7, nice);
    EXPECT_TRUE(memory > 100U << 10 && free > 1U << 20) << memory << ' ' << free;

    std::wstring joined;
    for (PString const& entry : entries) joined += shown(entry) + L'\0';
    EXPECT_EQ(wide(factOf(child.pid, "environ")), joined);
    EXPECT_EQ(PERR_OK, PProcess::getCurrentEnvironment(entries));
    EXPECT_LT(entries.size() * 2, joined.size());
}

TEST(ProcessFacts, AProcessThatIsGoneHasNone) {
    PProcess idle(L"/bin/idle", L"x");
    Child child("sleep 60");
    unsigned int const gone = child.pid;
    unsigned int parent = 7;
    int value = 7;
    unsigned long long bytes = 7;
    PString text = owned("kept");
    std::vector<PString> list{text};
    child.end();
    EXPECT_EQ(PERR_OK, child.process.waitExitCode(value));
    for (int result : {PProcess::getPath(gone, text), PProcess::getCmdLine(gone, text),
                       PProcess::getWorkingDir(gone, text), PProcess::getUserName(gone, text),
                       PProcess::getPriority(gone, value), PProcess::getParentPID(gone, parent)})
        EXPECT_EQ(PERR_NOT_FOUND, result);
    for (int result : {idle.getName(text), idle.getPath(text), idle.getCmdLine(text),
                       idle.getWorkingDir(text), idle.getPriority(value), idle.getEnvironment(list),
                       PProcess::getMemoryUsage(gone, bytes)})
        EXPECT_EQ(PERR_NO_PROCESS, result);
    EXPECT_TRUE(text == L"kept" && parent == 0 && bytes == 7 && list.size() == 1);
    EXPECT_EQ(PERR_NO_PROCESS, idle.getMemoryUsage(bytes));
    EXPECT_EQ(PERR_NOT_FOUND, PProcess::getName(gone, text));
    EXPECT_EQ(PERR_NOT_FOUND, PProcess::getEnvironment(gone, list));
    EXPECT_TRUE(text.ptr() == nullptr && bytes == 0 && list.empty());
    EXPECT_EQ(PERR_OK, child.process.getPath(text));  // what the object knows by itself
    EXPECT_EQ(wide(TEST_CHILD), shown(text));
    EXPECT_EQ(PERR_OK, child.process.getCmdLine(text));
    EXPECT_EQ(L"sleep 60", shown(text));
}

TEST(Load, OfABusyProcessShows) {
    Child const child("spin 60");
    unsigned int process = 0, machine = 0, processor = 101;
    EXPECT_EQ(PERR_OK, PProcess::getCPUUsage(child.pid, process));
    EXPECT_EQ(PERR_OK, PProcess::getCPUUsage(machine));
    EXPECT_EQ(PERR_OK, PProcess::getSpecCPUUsage(0, processor));
    EXPECT_TRUE(process > 0 && process <= 100 / std::thread::hardware_concurrency() + 5) << process;
    EXPECT_TRUE(machine > 0 && machine <= 100 && processor <= 100) << machine << ' ' << processor;
}
