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

TEST(LoadOfTheMachine, IsCountedBetweenTwoSamplesASecondApart) {
    auto const load = [](char const* before, char const* after) {
        Script const script({before, after});
        unsigned int percent = 7;
        EXPECT_CODE(PERR_OK, PProcess::getCPUUsage(percent));
        EXPECT_EQ(Contents{"sleep 1"}, script.calls());
        return percent;
    };
    EXPECT_EQ(50U, load("cpu 0", "cpu 1 1 0 2")) << "user and nice time";
    EXPECT_EQ(20U, load("cpu 0", "cpu 0 0 1 0 1 1 1 1")) << "waits and interrupts are not busy";
    EXPECT_EQ(75U, load("cpu 0 0 0 99", "cpu 3 0 0 0 0 1")) << "idle time ran back";
    EXPECT_EQ(0U, load("cpu 0", "cpu 42949973")) << "busy time wraps at 32 bits";
}

TEST(LoadOfAProcess, IsItsShareOfTheMachine) {
    auto const load = [](int user, int system, char const* before, char const* after) {
        Script const script({_bothFiles(7, 9, before), _bothFiles(7 + user, 9 + system, after)});
        unsigned int percent = 7;
        EXPECT_CODE(PERR_OK, PProcess::getCPUUsage(1, percent));
        EXPECT_EQ(Contents{"usleep 400000"}, script.calls());
        return percent;
    };
    EXPECT_EQ(37U, load(10, 5, "cpu 0 0 0 0 0 0 0 0 ", "cpu 40 0 0 0 0 0 0 0 "));
    EXPECT_EQ(12U, load(1, 0, "cpu 0 0 0 0 0 0 0 0 ", "cpu 1 1 1 1 1 1 1 1 "));
    EXPECT_EQ(15U, load(10, 5, "cpu 0 0 0 0 0 0 0 0 ", "cpu 0 0 0 0 0 0 0 1009"))
        << "the last byte read is lost";
}

TEST(LoadOfAProcess, IsNoneWhereItCannotBeCounted) {
    unsigned int percent = 7;
    {
        Script const script({_bothFiles(7, 9, "cpu 0 0 0 0 0 0 0 0 ")});
        EXPECT_CODE(PERR_SYSTEM, PProcess::getCPUUsage(1, percent)) << "nothing moved";
    }
    Script const script({_bothFiles(7, 9, "cpu 1 2 3 4 5 6 7 ")});
    EXPECT_CODE(PERR_END_OF_FILE, PProcess::getCPUUsage(1, percent));
    EXPECT_EQ(0U, percent);
}

TEST(LoadOfAProcessor, IsCountedFromItsLine) {
    std::string const filling(2048, 'x');
    unsigned int percent = 7;
    auto const load = [&](Contents const& samples) {
        Script const script(samples);
        EXPECT_CODE(PERR_OK, PProcess::getSpecCPUUsage(1, percent));
        EXPECT_EQ(Contents{"usleep 400000"}, script.calls());
        return percent;
    };
    EXPECT_EQ(50U, load({"cpu1 5 6 7 8", "cpu1 6 8 8 12"})) << "all but the fourth is busy";
    EXPECT_EQ(500U, load({"cpu1 0 0 0 100", "cpu1 5 0 0 0"})) << "idle time ran back";
    EXPECT_EQ(25U, load({filling + "cpu1 0 0 0 0", filling + "cpu1 1 0 0 3"}));
    EXPECT_EQ(50U, load({"cpu10 0 0 0 0", "cpu10 1 0 0 1"})) << "another that begins alike";
    Script const script({"cpu1 0 0 0 0", "cpu0 0 0 0 0"});
    EXPECT_CODE(PERR_SYSTEM, PProcess::getSpecCPUUsage(1, percent)) << "gone meanwhile";
    EXPECT_EQ(50U, percent);
}

TEST(LoadSampling, PauseComesFromTheEnvironmentAsItWasFirstRead) {
    for (auto const& [setting, pause] : {std::pair("x", 400U), {"0", 400U}, {"4294967297", 1U}}) {
        ChildRun reader([&] {
            (void)setenv("TALV_PROC_SAMPLE_TIME_MS", setting, 1);
            bool const first = _getSampleTime() == pause;
            (void)setenv("TALV_PROC_SAMPLE_TIME_MS", "7", 1);
            return first && _getSampleTime() == pause ? 0 : 1;
        });
        EXPECT_EQ(0, reader.wait()) << setting;
    }
}

TEST(LoadSampling, ARecordHoldsTheRealTimePriorityOfItsLine) {
    Script const script({_bothFiles(14, 15, "")});
    PFile file;
    proc_stat process;
    ASSERT_CODE(PERR_OK, file.popen(L"/any", PFile::OPEN_READ, 1));
    EXPECT_CODE(PERR_OK, _readProcStat(file, 0, &process));
    EXPECT_EQ(14U, process.utime);
    EXPECT_EQ(40, process.priority);
    EXPECT_EQ(41U, process.policy);
}
