#include <gtest/gtest.h>
#include <support/scratch.h>
#include <sys/resource.h>

#include "process/children.h"

TEST(ProcessFacts, TellHowAChildStands) {
    std::string const value = "PLT_LONG=" + std::string(300, 'v');
    Child const child("sleep 60 x", TEST_CHILD, {owned("PLT_A="), owned(value)});
    PString text;
    std::vector<PString> entries;
    EXPECT_EQ(PERR_OK, PProcess::getPath(child.pid, text));
    EXPECT_EQ(wide(TEST_CHILD), shown(text));
    EXPECT_EQ(PERR_OK, PProcess::getName(child.pid, text));
    EXPECT_EQ(L"test_child", shown(text));
    EXPECT_EQ(PERR_OK, PProcess::getCmdLine(child.pid, text));
    EXPECT_EQ(wide(TEST_CHILD) + L" sleep 60 x", shown(text));
    EXPECT_EQ(PERR_OK, PProcess::getUserName(child.pid, text));
    EXPECT_EQ(L"root", shown(text));  // whoever runs it
    EXPECT_EQ(PERR_OK, PProcess::getEnvironment(child.pid, entries));
    std::wstring joined;
    for (PString const& entry : entries) joined += shown(entry) + L'\n';
    std::string const bytes = factOf(child.pid, "environ");
    EXPECT_EQ(joined.size(), bytes.size());
    EXPECT_NE(std::wstring::npos, joined.find(L"\nPLT_A=\n" + wide(value) + L'\n'));

    unsigned int parent = 0;
    int nice = 99;
    unsigned long long memory = 0, free = 0;
    EXPECT_EQ(PERR_OK, PProcess::getParentPID(child.pid, parent));
    EXPECT_EQ(PProcess::getCurrentPID(), parent);
    EXPECT_EQ(0, setpriority(PRIO_PROCESS, child.pid, 7));
    EXPECT_EQ(PERR_OK, PProcess::getPriority(child.pid, nice));
    EXPECT_EQ(7, nice);
    EXPECT_EQ(PERR_OK, PProcess::getMemoryUsage(child.pid, memory));
    EXPECT_EQ(PERR_OK, PProcess::getFreeMemory(free));
    EXPECT_TRUE(memory > 100U << 10 && free > 1U << 20) << memory << ' ' << free;
    EXPECT_EQ(PERR_OK, PProcess::getCurrentEnvironment(entries));
    EXPECT_FALSE(entries.empty());
}

TEST(ProcessFacts, AProcessThatIsGoneHasNone) {
    PProcess idle(L"/bin/idle", L"x");
    Child child("sleep 60");
    int value = 7;
    (void)::kill(static_cast<pid_t>(child.pid), SIGKILL);
    (void)child.process.waitExitCode(value);

    unsigned int const gone = child.pid;
    unsigned int parent = 7;
    unsigned long long bytes = 7;
    PString text = owned("kept");
    std::vector<PString> list{text};
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
