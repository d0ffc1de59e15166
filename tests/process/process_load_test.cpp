#include <process/queries.h>

namespace {

/// Starts children one after the other, and counts whose exit code was given.
void _launch(std::atomic<int>& reported, std::atomic<unsigned int>& latest) {
    for (int i = 0; i < CHILDREN; ++i) {
        unsigned int pid = 0;
        int exitCode = 7;
        PProcess process(L"/bin/sh", shell("exit " + std::to_string(i % 256)));
        EXPECT_CODE(PERR_OK, process.start());
        if (process.getPID(pid) == PERR_OK) latest = pid;
        int const code = process.waitExitCode(exitCode);
        EXPECT_EQ(code == PERR_OK ? i % 256 : -1, exitCode);
        if (code == PERR_OK) ++reported;
    }
}

}  // namespace

TEST(ProcessLoad, EachExitCodeIsReportedOnceOrCollectedWhileOthersAllocateAndAsk) {
    std::atomic<int> reported = 0;
    std::atomic<unsigned int> latest = 0;
    auto const allocate = [](std::stop_token const& ended) {
        for (unsigned long i = 1; !ended.stop_requested(); i = i % 5000 + 1)
            EXPECT_EQ(i, owned(std::string(i, 'x')).len());
    };
    (void)setenv("TALV_PROC_SAMPLE_TIME_MS", "1", 1);
    {
        std::jthread const one(allocate), two(allocate);
        std::vector<std::jthread> launchers;
        for (int i = 0; i < 4; ++i) launchers.emplace_back([&] { _launch(reported, latest); });
        for (int i = 0; i < CHILDREN / 10; ++i)
            for (Query const& query : queries()) (void)query.ask(latest);
    }
    EXPECT_GT(reported, 0);
    EXPECT_EQ(-1, waitpid(-1, nullptr, 0)) << "a child is left";
}
