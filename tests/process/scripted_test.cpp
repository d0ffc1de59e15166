#include <clocale>
#include <cstring>
#include <random>

#include <faults/process_script.h>
#include <gtest/gtest.h>
#include <support/scratch.h>

#include "process/children.h"
#include "process/cpu_sampling.h"

namespace {

using Calls = std::vector<std::string>;

std::string const FILES = "/proc/" + std::to_string(SCRIPTED_PID) + "/";

/// A line of /proc/PID/stat with its two times.
std::string _processLine(int user, int system, std::string const& name = "(x)") {
    std::string line = "1 " + name + " S 4 5 6 7 8 9 10 11 12 13 " + std::to_string(user) + " " +
                       std::to_string(system);
    for (int field = 16; field <= 52; ++field) line += " " + std::to_string(field);
    return line + "\n";
}

}  // namespace

TEST(Load, OfTheMachineIsCountedOverOneSecond) {
    struct {
        char const *what, *before, *after;
        unsigned int percent;
    } const rows[] = {
        {"half", "cpu  1 2 3 4 5 6 7 8 9\n", "cpu  21 12 23 24 15 16 8 17 9\n", 50},
        {"cut", "cpu 0 0 0 0 0 0 0 0", "cpu 1 0 1 1 0 0 0 0", 66},
        {"nothing moved", "cpu 1 1 1 1 1 1 1 1", "cpu 1 1 1 1 1 1 1 1", 0},
        {"idle ran backwards", "cpu 0 0 0 100 0 0 0 0", "cpu 10 0 0 40 0 10 0 0", 50},
        {"the total ran backwards", "cpu 0 0 0 0 0 0 0 1000", "cpu 5 0 0 0 0 0 0 0", 500},
        {"32 bits wrap", "cpu 0 0 0 0 0 0 0 42949873", "cpu 42949973 0 0 0 0 0 0 0", 300},
        {"a line too short", "cpu 5", "cpu 6 1 0 2", 50},
    };
    for (auto const& row : rows) {
        ProcessScript script;
        script.file("/proc/stat", {row.before, row.after});
        unsigned int percent = 7;
        EXPECT_EQ(PERR_OK, PProcess::getCPUUsage(percent)) << row.what;
        EXPECT_EQ(row.percent, percent) << row.what;
        EXPECT_EQ(Calls{"sleep 1"}, script.calls);
    }
}

TEST(Load, OfAProcessIsItsShareOfAllProcessors) {
    std::string const idle = "cpu 0 0 0 0 0 0 0 0\n", hundred = "cpu 10 10 10 40 10 10 5 5\n";
    struct {
        char const* what;
        std::string before, after, machineBefore, machineAfter;
        int result;
        unsigned int percent;
    } const rows[] = {
        {"both times", _processLine(7, 9), _processLine(17, 14), idle, hundred, PERR_OK, 15},
        {"sum cut once", _processLine(0, 0), _processLine(1, 1), idle, "cpu 3 0 0 0 0 0 0 0\n",
         PERR_OK, 66},
        {"idle ran backwards", _processLine(0, 0), _processLine(1, 0), "cpu 0 0 0 99 0 0 0 0\n",
         "cpu 4 0 0 0 0 0 0 0\n", PERR_OK, 25},
        {"nothing moved", _processLine(0, 0), _processLine(1, 1), idle, idle, PERR_SYSTEM, 0},
        {"a space in the name", _processLine(0, 0, "(a b)"), "", idle, hundred, PERR_SYSTEM, 0},
        {"ended meanwhile", _processLine(0, 0), "", idle, hundred, PERR_END_OF_FILE, 0},
        {"a counter is missing", _processLine(0, 0), "", "cpu 1 2 3 4 5 6 7\n", hundred,
         PERR_END_OF_FILE, 0},
    };
    for (auto const& row : rows) {
        ProcessScript script;
        script.file("/proc/stat", {row.machineBefore, row.machineAfter});
        script.file(FILES + "stat", {row.before, row.after});
        unsigned int percent = 7;
        EXPECT_EQ(row.result, PProcess::getCPUUsage(SCRIPTED_PID, percent)) << row.what;
        EXPECT_EQ(row.percent, percent) << row.what;
        EXPECT_TRUE(row.result != PERR_OK || script.calls == Calls{"usleep 400000"}) << row.what;
    }
}

TEST(Load, OfAProcessorIsSearchedInBlocks) {
    std::string const block(2048, 'x');
    struct {
        char const* what;
        std::string before, after;
        int result;
        unsigned int percent;
    } const rows[] = {
        {"its own line", "cpu 9 9 9 9\ncpu1 0 0 0 0 5\n", "cpu 9 9 9 9\ncpu1 1 1 1 6 9\n", PERR_OK,
         33},
        {"sum cut once", "cpu1 0 0 0 0", "cpu1 1 1 1 0", PERR_OK, 100},
        {"in the second block", block + "cpu1 0 0 0 0", block + "cpu1 1 0 0 3", PERR_OK, 25},
        {"across two blocks", block.substr(2) + "cpu1 0 0 0 0", "", PERR_SYSTEM, 7},
        {"idle is not held at 0", "cpu1 0 0 0 100", "cpu1 5 0 0 0", PERR_OK, 500},
        {"a number is missing", "cpu1 0 0 0", "", PERR_SYSTEM, 7},
        {"no such processor", "cpu0 0 0 0 0\n", "", PERR_SYSTEM, 7},
        {"gone in the second sample", "cpu1 0 0 0 0", "", PERR_SYSTEM, 7},
    };
    for (auto const& row : rows) {
        ProcessScript script;
        script.file("/proc/stat", {row.before, row.after});
        unsigned int percent = 7;
        EXPECT_EQ(row.result, PProcess::getSpecCPUUsage(1, percent)) << row.what;
        EXPECT_EQ(row.percent, percent) << row.what;
        EXPECT_TRUE(row.result != PERR_OK || script.calls == Calls{"usleep 400000"}) << row.what;
    }
}

TEST(Load, WithoutCountersIsAFailure) {
    ProcessScript script;
    script.file("/proc/stat", {});
    script.file("/proc/meminfo", {});
    unsigned int machine = 7, process = 7, processor = 7;
    unsigned long long bytes = 7;
    EXPECT_EQ(PERR_IO, PProcess::getCPUUsage(machine));
    EXPECT_EQ(PERR_NO_SUCH_FILE, PProcess::getCPUUsage(1, process));
    EXPECT_EQ(PERR_OPEN, PProcess::getSpecCPUUsage(0, processor));
    EXPECT_EQ(PERR_IO, PProcess::getFreeMemory(bytes));
    EXPECT_TRUE(machine == 0 && process == 0 && processor == 7 && bytes == 0);
}

TEST(StatusLines, AreReadInPiecesOf255BytesAndMatchAtTheirStart) {
    struct {
        char const* what;
        std::string content;
        int result;
        unsigned long long bytes;
    } const rows[] = {
        {"plain", "Name:\tx\nVmRSS:\t    1000 kB\n", PERR_OK, 1024000},
        {"not further in", "Name:\tVmRSS: 5\n VmRSS: 6\nVmRSS: 7\n", PERR_OK, 7 << 10},
        {"a piece begins with it", std::string(255, 'x') + "VmRSS: 5\nVmRSS: 6", PERR_OK, 5 << 10},
        {"beyond a signed number", "VmRSS: 4294967295 kB\n", PERR_OK, 4294967295ULL << 10},
        {"missing", "Name:\tx\n", PERR_NOT_FOUND, 7},
        {"empty", "", PERR_NOT_FOUND, 7},
    };
    for (auto const& row : rows) {
        ProcessScript script;
        script.file(FILES + "status", {row.content});
        unsigned long long bytes = 7;
        EXPECT_EQ(row.result, PProcess::getMemoryUsage(SCRIPTED_PID, bytes)) << row.what;
        EXPECT_EQ(row.bytes, bytes) << row.what;
        bool running = false;
        EXPECT_EQ(PERR_OK, PProcess::isRunning(SCRIPTED_PID, running));
        EXPECT_TRUE(running) << row.what;  // without a state line
    }
    ProcessScript script;
    script.file("/proc/meminfo",
                {"MemFree: 1 kB\nSwapCached: 64 kB\nBuffers: 2 kB\nCached: 4 kB\nCached: 32 kB\n"});
    unsigned long long bytes = 0;
    EXPECT_EQ(PERR_OK, PProcess::getFreeMemory(bytes));
    EXPECT_EQ(7U << 10, bytes);
}

TEST(CommandLine, IsCutInChunksOf255Bytes) {
    unsigned int const seed = 4711;
    std::mt19937 random(seed);
    for (int round = 0; round < 300; ++round) {
        std::string bytes, expected;
        for (std::size_t i = random() % 600; i > 0; --i) bytes += "xxxxxx \0"[random() % 8];
        std::size_t start = 0;
        for (std::size_t i = 0; i < bytes.size(); ++i) {
            if (bytes[i] != '\0') continue;
            std::size_t const chunk = i / 255 * 255;  // the start runs on from chunk to chunk
            std::string const one =
                start < i - chunk ? bytes.substr(chunk + start, i - chunk - start) : "";
            char const* const quote = one.find(' ') == std::string::npos ? "" : "\"";
            expected += (expected.empty() ? "" : " ") + (quote + one) + quote;
            start = i - chunk + 1;
        }
        ProcessScript script;
        script.file(FILES + "cmdline", {bytes});
        PString text;
        EXPECT_EQ(PERR_OK, PProcess::getCmdLine(SCRIPTED_PID, text));
        EXPECT_EQ(wide(expected), shown(text)) << "seed " << seed << " round " << round;
    }
}

TEST(ProcessText, IsConvertedUnderTheLocale) {
    ASSERT_NE(nullptr, setlocale(LC_CTYPE, "C.UTF-8"));
    ProcessScript script;
    std::string const acute = "\xC3\xA9";
    script.file(FILES + "environ",
                {"A=" + acute + "z" + '\0' + std::string(121, 'a') + acute + '\0' + "LAST=1"});
    script.file(FILES + "cmdline", {acute + '\0' + "b" + '\0'});
    script.file(FILES + "status", {"Name:\t" + acute + "\n"});
    std::vector<PString> environment;
    PString text;
    EXPECT_EQ(PERR_OK, PProcess::getEnvironment(SCRIPTED_PID, environment));
    ASSERT_EQ(2U, environment.size());  // without what has no terminator
    EXPECT_EQ(L"A=\xE9z", shown(environment[0]));
    EXPECT_EQ(std::wstring(121, L'a'), shown(environment[1]));  // across two blocks
    EXPECT_EQ(PERR_OK, PProcess::getCmdLine(SCRIPTED_PID, text));
    EXPECT_EQ((std::wstring{L'\xE9', L'\0', L' ', L'b'}), shown(text));  // one character a byte
    EXPECT_EQ(PERR_OK, PProcess::getName(SCRIPTED_PID, text));
    EXPECT_EQ(L"\xE9", shown(text));
    (void)setlocale(LC_CTYPE, "C");
}

TEST(UserName, IsLookedUpOnlyForAProcessThatBearsTheKeyInItsName) {
    struct {
        char const *status, *accounts;
        wchar_t const* name;
    } const rows[] = {{"Name:\tx\nUid:\t7\t7\n", "a:x:7:7:\n", L"root"},
                      {"Name:\tuid\n", "a:x:7:7:\n", L"root"},
                      {"Name:\t7uid\n", "a:x:17:71:\nb:x:5:7:\nc:x:7:7:\n", L"b"},
                      {"Name:\t7uid\n", "a:x:1:1:\n", L"kept"}};
    for (auto const& row : rows) {
        ProcessScript script;
        script.file(FILES + "status", {row.status});
        script.file("/etc/passwd", {row.accounts});
        PString name = owned("kept");
        EXPECT_EQ(PERR_OK, PProcess::getUserName(SCRIPTED_PID, name));
        EXPECT_EQ(row.name, shown(name)) << row.status;
    }
}

TEST(Counters, AProcessPriorityHoldsTheRealTimePriority) {
    std::string line = "1 (name) S";
    for (int field = 4; field <= 41; ++field) line += " " + std::to_string(field);
    for (bool const whole : {true, false}) {
        ProcessScript script;
        script.file("/proc/stat", {whole ? line : line.substr(0, line.rfind(' '))});
        PFile file;
        proc_stat record;
        ASSERT_EQ(PERR_OK, file.popen(L"/proc/stat", PFile::OPEN_READ, 1));
        EXPECT_EQ(whole ? PERR_OK : PERR_SYSTEM, _readProcStat(file, 0, &record));
        EXPECT_STREQ("(name)", record.comm);
        EXPECT_EQ(14 + 15 + 22 + 35U,
                  record.utime + record.stime + record.starttime + record.wchan);
        EXPECT_EQ(40, record.priority);
        EXPECT_EQ(0U, record.rt_priority);
        EXPECT_EQ(whole ? 41U : 0U, record.policy);
    }
}

TEST(Counters, OfTheMachineAreSearchedInBlocksThatLoseTheirLastByte) {
    struct {
        std::string content;
        int result;
        unsigned long long steal;
    } const rows[] = {{"cpu 1 2 3 4 5 6 7 89", PERR_OK, 8},
                      {std::string(1024, 'x') + "cpu 1 2 3 4 5 6 7 89\n", PERR_OK, 89},
                      {"xcpu 1 2 3 4 5 6 7 8\n", PERR_END_OF_FILE, 0}};
    for (auto const& row : rows) {
        ProcessScript script;
        script.file("/proc/stat", {row.content});
        PFile file;
        cpu_stat record;
        ASSERT_EQ(PERR_OK, file.popen(L"/proc/stat", PFile::OPEN_READ, 1));
        EXPECT_EQ(row.result, _readCpuStat(file, &record)) << row.content;
        EXPECT_EQ(row.steal, record.steal) << row.content;
    }
}

TEST(Load, PauseComesFromTheEnvironment) {
    struct {
        char const *setting, *milliseconds;
    } const rows[] = {
        {"x=", "400"}, {"=0", "400"}, {"=abc", "400"}, {"=1500", "1500"}, {"=4294967297", "1"}};
    for (auto const& row : rows) {
        std::string const entry = std::string("TALV_PROC_SAMPLE_TIME_MS") + row.setting;
        PProcess process(owned(TEST_CHILD), owned(std::string("sample ") + row.milliseconds),
                         std::vector<PString>{owned(entry)});
        int exitCode = -1;
        EXPECT_EQ(PERR_OK, process.start());
        EXPECT_EQ(PERR_OK, process.waitExitCode(exitCode));
        EXPECT_EQ(0, exitCode) << entry;
    }
}

TEST(Waiting, IsDividedIntoStepsOfATenthButASecondAtLeast) {
    PProcess process(PString(TEST_CHILD, P_WHOLE_STRING), L"sleep 60");
    ASSERT_EQ(PERR_OK, process.start());
    Child const child(process);
    struct {
        unsigned int timeout;
        std::size_t polls;
        char const* sleep;
    } const rows[] = {{0, 0, ""},
                      {999, 0, ""},
                      {1999, 1, "usleep 1000000"},
                      {5000, 5, "usleep 1000000"},
                      {20009, 10, "usleep 2000000"}};
    for (auto const& row : rows) {
        for (bool const instance : {false, true}) {
            ProcessScript script;
            EXPECT_TRUE(instance ? process.waitFinish(row.timeout)
                                 : PProcess::waitFinish(child.pid, row.timeout));
            EXPECT_EQ(Calls(row.polls, row.sleep), script.calls) << row.timeout;
        }
    }
}

TEST(FailedFork, LeavesAnIdThatIsNeverSignalled) {
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
    EXPECT_EQ(PERR_NOT_SUPPORTED, process.startProcAsDifferentUser(PString(), PString()));
    EXPECT_EQ(Calls{}, script.calls);
}
