#include <process/children.h>

TEST(ProcessLoad, EachOfThousandsIsReportedOrReapedOnceWhileOthersAllocateAndAsk) {
    std::atomic<int> reported = 0, reaped = 0;
    std::atomic<unsigned int> latest = 0;
    auto const allocate = [](std::stop_token const& ended) {
        for (unsigned long i = 1; !ended.stop_requested(); i = i % 5000 + 1)
            EXPECT_EQ(i, owned(std::string(i, 'x')).len());
    };
    auto const launch = [&] {
        unsigned int pid = 0;
        for (int i = 0, exitCode = 7; i < CHILDREN; ++i) {
            PProcess process(L"/bin/sh", owned(shell("exit " + std::to_string(i % 256))));
            EXPECT_EQ(PERR_OK, process.start());
            if (process.getPID(pid) == PERR_OK) latest = pid;
            bool const ours = process.waitExitCode(exitCode) == PERR_OK;
            EXPECT_EQ(ours ? i % 256 : -1, exitCode);
            ++(ours ? reported : reaped);
        }
    };
    (void)setenv("TALV_PROC_SAMPLE_TIME_MS", "1", 1);
    {
        std::jthread const one(allocate), two(allocate);
        std::jthread const three(launch), four(launch), five(launch), six(launch);
        for (int i = 0; i < CHILDREN / 10; ++i)
            for (auto const& [name, fact] : FACTS) {
                if (fact.gone == Answer()) continue;
                int const code = fact.ask(latest).first;
                bool const known = code == fact.gone.first || fact.meanwhile.contains(code);
                EXPECT_TRUE(code == PERR_OK || known) << name << ' ' << code;
            }
    }
    EXPECT_EQ(4 * CHILDREN, reported + reaped) << reported << " reported";
    EXPECT_EQ(-1, waitpid(-1, nullptr, 0)) << "a child is left";
}
