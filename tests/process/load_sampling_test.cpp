#include <process/children.h>
#include <process/script.h>

#include "process/cpu_sampling.h"

namespace {

using Contents = std::vector<std::string>;

/// The file of a process for who reads its first block, and of the machine for who seeks on.
std::string _bothFiles(int user, int system, std::string const& machine) {
    std::string block = "1 (x) S 4 5 6 7 8 9 10 11 12 13 ";
    block += std::to_string(user) + " " + std::to_string(system);
    for (int field = 16; field <= 52; ++field) block += " " + std::to_string(field);
    block.resize(1024, ' ');
    return block + machine;
}

}  // namespace

TEST(LoadOfTheMachine, IsCountedBetweenTwoSamples) {
    struct {
        char const *what, *before, *after;
        unsigned int percent;
    } const rows[] = {
        {"user and nice time", "cpu 0 0 0 0 0 0 0 0", "cpu 1 1 0 2 0 0 0 0", 50},
        {"waits and interrupts are not busy", "cpu 0 0 0 0 0 0 0 0", "cpu 0 0 1 0 1 1 1 1", 20},
        {"idle time that runs back stands still", "cpu 0 0 0 99", "cpu 3 0 0 0 0 1", 75},
        {"busy time wraps at 32 bits", "cpu 0", "cpu 42949973", 0},
    };
    for (auto const& row : rows) {
        SCOPED_TRACE(row.what);
        Script const script({row.before, row.after});
        unsigned int percent = 7;
        EXPECT_CODE(PERR_OK, PProcess::getCPUUsage(percent));
        EXPECT_EQ(row.percent, percent);
    }
}

TEST(LoadOfAProcess, IsItsShareOfTheMachine) {
    struct {
        char const* what;
        int user, system;  // how far they move
        char const *before, *after;
        unsigned int percent;
    } const rows[] = {
        {"both its times", 10, 5, "cpu 0 0 0 0 0 0 0 0 ", "cpu 40 0 0 0 0 0 0 0 ", 37},
        {"every counter is the machine's", 1, 0, "cpu 0 0 0 0 0 0 0 0 ", "cpu 1 1 1 1 1 1 1 1 ",
         12},
        {"the last byte read is lost", 10, 5, "cpu 0 0 0 0 0 0 0 0 ", "cpu 0 0 0 0 0 0 0 1009", 15},
    };
    for (auto const& row : rows) {
        SCOPED_TRACE(row.what);
        Script const script(
            {_bothFiles(7, 9, row.before), _bothFiles(7 + row.user, 9 + row.system, row.after)});
        unsigned int percent = 7;
        EXPECT_CODE(PERR_OK, PProcess::getCPUUsage(1, percent));
        EXPECT_EQ(row.percent, percent);
        EXPECT_EQ(Contents{"usleep 400000"}, script.calls());
    }
}

TEST(LoadOfAProcess, IsNoneWhereItCannotBeCounted) {
    for (auto const& [machine, code] : {std::pair("cpu 0 0 0 0 0 0 0 0 ", PERR_SYSTEM),
                                        {"cpu 1 2 3 4 5 6 7 ", PERR_END_OF_FILE}}) {
        Script const script({_bothFiles(7, 9, machine)});
        unsigned int percent = 7;
        EXPECT_CODE(code, PProcess::getCPUUsage(1, percent)) << machine;
        EXPECT_EQ(0U, percent);
    }
}

TEST(LoadOfAProcessor, IsCountedFromItsLine) {
    std::string const filling(2048, 'x');
    struct {
        char const* what;
        Contents samples;
        int code;
        unsigned int percent;
    } const rows[] = {
        {"all but the fourth is busy", {"cpu1 5 6 7 8", "cpu1 6 8 8 12"}, PERR_OK, 50},
        {"idle time that runs back", {"cpu1 0 0 0 100", "cpu1 5 0 0 0"}, PERR_OK, 500},
        {"in the second block", {filling + "cpu1 0 0 0 0", filling + "cpu1 1 0 0 3"}, PERR_OK, 25},
        {"across two blocks", {filling.substr(2) + "cpu1 0 0 0 0"}, PERR_SYSTEM, 7},
        {"another that begins alike", {"cpu10 0 0 0 0", "cpu10 1 0 0 1"}, PERR_OK, 50},
        {"gone meanwhile", {"cpu1 0 0 0 0", "cpu0 0 0 0 0"}, PERR_SYSTEM, 7},
    };
    for (auto const& row : rows) {
        SCOPED_TRACE(row.what);
        Script const script(row.samples);
        unsigned int percent = 7;
        EXPECT_CODE(row.code, PProcess::getSpecCPUUsage(1, percent));
        EXPECT_EQ(row.percent, percent);
    }
}

TEST(LoadSampling, PauseComesFromTheEnvironmentAsItWasFirstRead) {
    for (auto const& [setting, pause] :
         {std::pair("x", 400U), {"0", 400U}, {"1500", 1500U}, {"4294967297", 1U}}) {
        SCOPED_TRACE(setting);
        ChildRun reader([&] {
            (void)setenv("TALV_PROC_SAMPLE_TIME_MS", setting, 1);
            bool const first = _getSampleTime() == pause;
            (void)setenv("TALV_PROC_SAMPLE_TIME_MS", "7", 1);
            return first && _getSampleTime() == pause ? 0 : 1;
        });
        EXPECT_EQ(0, reader.wait());
    }
}

TEST(LoadSampling, RecordsHoldTheFieldsOfTheirLine) {
    Script const script({_bothFiles(14, 15, "cpu 1 2 3 4 5 6 7 8 ")});
    PFile file;
    proc_stat process;
    cpu_stat machine;
    ASSERT_CODE(PERR_OK, file.popen(L"/any", PFile::OPEN_READ, 1));
    EXPECT_CODE(PERR_OK, _readProcStat(file, 0, &process));
    EXPECT_EQ(14U, process.utime);
    EXPECT_EQ(40, process.priority) << "the real-time priority stands here";
    EXPECT_EQ(41U, process.policy);
    EXPECT_CODE(PERR_OK, _readCpuStat(file, &machine));
    EXPECT_EQ(1U, machine.user);
    EXPECT_EQ(8U, machine.steal);
}

TEST(LoadSampling, OfTheMachineTakesASecondAndOfAProcessorItsPause) {
    unsigned int percent = 0;
    Script const script;
    EXPECT_CODE(PERR_OK, PProcess::getCPUUsage(percent));
    EXPECT_CODE(PERR_OK, PProcess::getSpecCPUUsage(0, percent));
    EXPECT_EQ((Contents{"sleep 1", "usleep 400000"}), script.calls());
}
