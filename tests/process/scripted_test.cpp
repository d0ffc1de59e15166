#include <clocale>
#include <cstring>

#include <faults/process_script.h>
#include <gtest/gtest.h>

#include "process/children.h"
#include "process/cpu_sampling.h"

namespace {

using Entries = std::vector<PString>;

constexpr unsigned int SCRIPTED_PID = 99999999;  // above the largest of the system
std::string const FILES = "/proc/" + std::to_string(SCRIPTED_PID) + "/";

/// A line of /proc/PID/stat with its two times and with `last` fields.
std::string _line(int user, int system, std::string const& name = "(x)", int last = 52) {
    std::string line = "1 " + name + " S 4 5 6 7 8 9 10 11 12 13 " + std::to_string(user) + " " +
                       std::to_string(system);
    for (int field = 16; field <= last; ++field) line += " " + std::to_string(field);
    return line;
}

int (*const _machine)(unsigned int&) = PProcess::getCPUUsage;

int _process(unsigned int& percent) {
    return PProcess::getCPUUsage(SCRIPTED_PID, percent);
}

int _processor(unsigned int& percent) {
    return PProcess::getSpecCPUUsage(1, percent);
}

}  // namespace

TEST(Load, IsCountedBetweenTwoSamples) {
    std::string const zero = "cpu 0 0 0 0 0 0 0 0\n", block(2048, 'x');
    Texts const hundred{zero, "cpu 10 10 10 40 10 10 5 5\n"}, busy{_line(7, 9), _line(17, 14)};
    Texts const back{"cpu 0 0 0 99 0 0 0 0\n", "cpu 30 0 0 0 0 10 0 0\n"};
    struct {
        char const* what;
        int (*measure)(unsigned int&);
        Texts machine, process;
        int result;
        unsigned int percent;
    } const rows[] = {
        {"cut", _machine, {"cpu  1 2 3 4 5 6 7 8 9", "cpu  2 2 4 5 5 6 7 8 9"}, {}, 0, 66},
        {"nothing moved", _machine, {zero}, {}, 0, 0},
        {"idle back", _machine, back, {}, 0, 75},
        {"total back", _machine, {"cpu 0 0 0 0 0 0 0 1000", "cpu 5 0 0 0 0 0 0 0"}, {}, 0, 500},
        {"32 bits wrap", _machine, {"cpu 0 0 0 0 0 0 0 42949873", "cpu 42949973"}, {}, 0, 300},
        {"no file", _machine, {}, {}, PERR_IO, 0},
        {"both times", _process, hundred, busy, 0, 15},
        {"sum cut", _process, {zero, "cpu 8 0 0 0 0 0 0 0\n"}, {_line(0, 0), _line(1, 1)}, 0, 25},
        {"idle back", _process, back, busy, 0, 37},
        {"last byte lost", _process, {zero, "cpu 0 0 0 0 0 0 0 1009"}, busy, 0, 15},
        {"second block", _process, {zero, block + hundred[1]}, busy, 0, 15},
        {"nothing moved", _process, {zero}, busy, PERR_SYSTEM, 0},
        {"space in the name", _process, hundred, {_line(0, 0, "(a b)")}, PERR_SYSTEM, 0},
        {"40 fields", _process, hundred, {_line(0, 0, "(x)", 40)}, PERR_SYSTEM, 0},
        {"ended meanwhile", _process, hundred, {_line(0, 0), ""}, PERR_END_OF_FILE, 0},
        {"a counter missing", _process, {"cpu 1 2 3 4 5 6 7\n"}, busy, PERR_END_OF_FILE, 0},
        {"no process", _process, hundred, {}, PERR_NO_SUCH_FILE, 0},
        {"own line", _processor, {"cpu 9 9 9 9\ncpu1 0 0 0 0 5", "cpu1 1 1 1 6 9"}, {}, 0, 33},
        {"second block", _processor, {block + "cpu1 0 0 0 0", block + "cpu1 1 0 0 3"}, {}, 0, 25},
        {"across blocks", _processor, {block.substr(2) + "cpu1 0 0 0 0"}, {}, PERR_SYSTEM, 7},
        {"idle back", _processor, {"cpu1 0 0 0 100", "cpu1 5 0 0 0"}, {}, 0, 500},
        {"a number missing", _processor, {"cpu1 0 0 0"}, {}, PERR_SYSTEM, 7},
        {"gone", _processor, {"cpu1 0 0 0 0", "cpu0 0 0 0 0"}, {}, PERR_SYSTEM, 7},
        {"no file", _processor, {}, {}, PERR_OPEN, 7},
    };
    for (auto const& row : rows) {
        ProcessScript const script({{"/proc/stat", row.machine}, {FILES + "stat", row.process}});
        unsigned int percent = 7;
        EXPECT_EQ(row.result, row.measure(percent)) << row.what;
        EXPECT_EQ(row.percent, percent) << row.what;
        Texts const pause{row.measure == _machine ? "sleep 1" : "usleep 400000"};
        EXPECT_TRUE(row.result != PERR_OK || script.calls == pause) << row.what;
    }
}

TEST(Load, ReadsTheRealTimePriorityIntoThePriority) {
    ProcessScript const script(Files{{"/proc/stat", {_line(14, 15)}}});
    PFile file;
    proc_stat r;
    ASSERT_EQ(PERR_OK, file.popen(L"/proc/stat", PFile::OPEN_READ, 1));
    EXPECT_EQ(PERR_OK, _readProcStat(file, 0, &r));
    EXPECT_EQ(14 + 15 + 22 + 35U, r.utime + r.stime + r.starttime + r.wchan) << r.comm;
    EXPECT_TRUE(r.priority == 40 && r.rt_priority == 0 && r.policy == 41);
}

TEST(Load, PauseComesFromTheEnvironment) {
    char const* const rows[][2] = {
        {"x=", "400"}, {"=0", "400"}, {"=abc", "400"}, {"=1500", "1500"}, {"=4294967297", "1"}};
    for (auto const& [setting, pause] : rows) {
        PString const entry = owned(std::string("TALV_PROC_SAMPLE_TIME_MS") + setting);
        PProcess process(owned(TEST_CHILD), owned(std::string("sample ") + pause), Entries{entry});
        int exitCode = process.start();
        EXPECT_EQ(PERR_OK, process.waitExitCode(exitCode));
        EXPECT_EQ(0, exitCode) << setting;
    }
}

TEST(ProcessFacts, ComeFromLinesReadInPiecesOf255Bytes) {
    struct {
        std::string status;
        int result;
        unsigned long long bytes;
        bool running;
    } const rows[] = {
        {"Name:\tVmRSS: 5 State: Z\n VmRSS: 6\nVmRSS:\t  7 kB\n", PERR_OK, 7 << 10, true},
        {std::string(255, 'x') + "VmRSS: 5\nVmRSS: 6", PERR_OK, 5 << 10, true},
        {"VmRSS: 4294967295 kB\nState:\tZ (zombie)\n", PERR_OK, 4294967295ULL << 10, false},
        {"", PERR_NOT_FOUND, 7, true},
    };
    for (auto const& row : rows) {
        ProcessScript const script(
            {{FILES + "status", {row.status}},
             {"/proc/meminfo", {"MemFree: 1\nSwapCached: 64\nCached: 4\nCached: 32\n"}}});
        unsigned long long bytes = 7, free = 0;
        bool running = !row.running;
        EXPECT_EQ(row.result, PProcess::getMemoryUsage(SCRIPTED_PID, bytes)) << row.status;
        EXPECT_EQ(row.bytes, bytes) << row.status;
        EXPECT_EQ(PERR_OK, PProcess::isRunning(SCRIPTED_PID, running));
        EXPECT_EQ(row.running, running) << row.status;
        EXPECT_EQ(PERR_OK, PProcess::getFreeMemory(free));
        EXPECT_EQ(5U << 10, free);
    }
}

TEST(ProcessFacts, CommandLinesAreCutInChunksOf255Bytes) {
    std::string const bytes = std::string(300, 'a') + '\0' + "b c" + '\0' + "unended";
    ProcessScript const script(Files{{FILES + "cmdline", {bytes}}});
    PString text;
    EXPECT_EQ(PERR_OK, PProcess::getCmdLine(SCRIPTED_PID, text));
    EXPECT_EQ(std::wstring(45, L'a') + L" \"b c\"", shown(text));
}

TEST(ProcessFacts, AreConvertedUnderTheLocale) {
    ASSERT_NE(nullptr, setlocale(LC_CTYPE, "C.UTF-8"));
    std::string const acute = "\xC3\xA9", across = std::string(121, 'a') + acute;
    ProcessScript const script(
        {{FILES + "environ", {"A=" + acute + "z" + '\0' + across + '\0' + "LAST=1"}},
         {FILES + "cmdline", {acute + '\0' + "b" + '\0'}},
         {FILES + "status", {"Name:\t" + acute + "\n"}}});
    Entries entries;
    PString line, name;
    EXPECT_EQ(PERR_OK, PProcess::getEnvironment(SCRIPTED_PID, entries));
    EXPECT_EQ(PERR_OK, PProcess::getCmdLine(SCRIPTED_PID, line));
    EXPECT_EQ(PERR_OK, PProcess::getName(SCRIPTED_PID, name));
    (void)setlocale(LC_CTYPE, "C");
    ASSERT_EQ(2U, entries.size());  // without what has no terminator
    EXPECT_EQ(L"A=\xE9z", shown(entries[0]));
    EXPECT_EQ(std::wstring(121, L'a'), shown(entries[1]));  // without what lies across two blocks
    EXPECT_EQ((std::wstring{L'\xE9', L'\0', L' ', L'b'}), shown(line));  // one character a byte
    EXPECT_EQ(L"\xE9", shown(name));
}

TEST(ProcessFacts, AUserIsLookedUpOnlyForANameThatBearsTheKey) {
    char const* const rows[][3] = {{"Name:\tx\nUid:\t7\t7\n", "a:x:7:7:\n", "root"},
                                   {"Name:\tuid\n", "a:x:7:7:\n", "root"},
                                   {"Name:\t7uid\n", "a:x:17:71:\nb:x:5:7:\nc:x:7:7:\n", "b"},
                                   {"Name:\t7uid\n", "a:x:1:1:\n", "kept"}};
    for (auto const& [status, accounts, expected] : rows) {
        ProcessScript const script({{FILES + "status", {status}}, {"/etc/passwd", {accounts}}});
        PString name = owned("kept");
        EXPECT_EQ(PERR_OK, PProcess::getUserName(SCRIPTED_PID, name));
        EXPECT_EQ(wide(expected), shown(name)) << status;
    }
}

TEST(ProcessWaiting, IsDividedIntoStepsOfATenthButASecondAtLeast) {
    Child child("sleep 60");
    struct {
        unsigned int timeout;
        Texts sleeps;
    } const rows[] = {{999, {}},
                      {1999, Texts(1, "usleep 1000000")},
                      {5000, Texts(5, "usleep 1000000")},
                      {20009, Texts(10, "usleep 2000000")}};
    for (auto const& row : rows) {
        ProcessScript instance, any;
        EXPECT_TRUE(PProcess::waitFinish(child.pid, row.timeout));
        EXPECT_EQ(row.sleeps, any.calls);
        ProcessScript::active = &instance;
        EXPECT_TRUE(child.process.waitFinish(row.timeout));
        EXPECT_EQ(row.sleeps, instance.calls);
    }
}

TEST(ProcessStart, AFailedForkLeavesAnIdThatIsNeverSignalled) {
    ProcessScript script;
    script.forkFails = true;
    PProcess process(L"/bin/true", L"");
    unsigned int pid = 7, stored = 0;
    EXPECT_EQ(PERR_OK, process.start());
    std::memcpy(&stored, reinterpret_cast<char const*>(&process) + 136, sizeof stored);
    EXPECT_EQ(4294967295U, stored);
    EXPECT_EQ(PERR_NO_PROCESS, process.getPID(pid));
    EXPECT_EQ(PERR_NO_PROCESS, PProcess::start(L"/bin/true", L"", pid));
    EXPECT_EQ(7U, pid);
    EXPECT_EQ(PERR_OK, process.kill());
    EXPECT_EQ(Texts(), script.calls);
}
