#include "process/cpu_sampling.h"

#include <gtest/gtest.h>
#include <support/scratch.h>
#include <unistd.h>

#include "process/children.h"

TEST(Counters, APriorityHoldsTheRealTimePriority) {
    Scratch scratch;
    std::string line = "1 (name) S";
    for (int field = 4; field <= 41; ++field) line += " " + std::to_string(field);
    for (bool const whole : {true, false}) {
        PFile file;
        proc_stat record;
        std::string const content = whole ? line : line.substr(0, line.rfind(' '));
        ASSERT_EQ(PERR_OK, file.popen(wide(scratch.write("stat", content)).c_str(), 1, 1));
        EXPECT_EQ(whole ? PERR_OK : PERR_SYSTEM, _readProcStat(file, 0, &record));
        EXPECT_STREQ("(name)", record.comm);
        EXPECT_EQ(1 + 14 + 15 + 22 + 35,
                  record.pid + static_cast<int>(record.utime + record.stime + record.starttime +
                                                record.wchan));
        EXPECT_EQ(40, record.priority);
        EXPECT_EQ(0U, record.rt_priority);
        EXPECT_EQ(whole ? 41U : 0U, record.policy);
    }
}

TEST(Counters, OfTheMachineAreSearchedInBlocksThatLoseTheirLastByte) {
    Scratch scratch;
    struct {
        char const* what;
        std::string content;
        int result;
        unsigned long long steal;
    } const rows[] = {
        {"last byte", "cpu 1 2 3 4 5 6 7 89", PERR_OK, 8},
        {"second block", std::string(1024, 'x') + "cpu 1 2 3 4 5 6 7 89\n", PERR_OK, 89},
        {"inside a block", "xcpu 1 2 3 4 5 6 7 8\n", PERR_END_OF_FILE, 0}};
    for (auto const& row : rows) {
        PFile file;
        cpu_stat record;
        ASSERT_EQ(PERR_OK, file.popen(wide(scratch.write("stat", row.content)).c_str(), 1, 1));
        EXPECT_EQ(row.result, _readCpuStat(file, &record)) << row.what;
        EXPECT_EQ(row.steal, record.steal) << row.what;
    }
}

TEST(Load, PauseComesFromTheEnvironment) {
    for (char const* const row : {"=400", "=0=400", "=abc=400", "=1500=1500", "=4294967297=1"}) {
        std::string const all = row;
        std::size_t const last = all.rfind('=');
        std::vector<std::string> environment;
        if (last > 0) environment.push_back("TALV_PROC_SAMPLE_TIME_MS" + all.substr(0, last));
        Child child({"sample", "sample", all.substr(last + 1)}, environment);
        EXPECT_EQ(0, child.waitExitCode()) << row;
    }
}

TEST(Load, OfABusyProcessShows) {
    Child child({"spin", "spin", "60"});
    unsigned int process = 0, machine = 0, processor = 0;
    EXPECT_EQ(PERR_OK, PProcess::getCPUUsage(child.pid, process));
    EXPECT_EQ(PERR_OK, PProcess::getCPUUsage(machine));
    EXPECT_EQ(PERR_OK, PProcess::getSpecCPUUsage(0, processor));
    EXPECT_GT(process, 0U);
    EXPECT_LE(process, 100 / sysconf(_SC_NPROCESSORS_ONLN) + 10U);
    EXPECT_TRUE(machine > 0 && machine <= 100 && processor <= 100) << machine << ' ' << processor;
}
