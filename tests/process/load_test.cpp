#include <atomic>
#include <thread>

#include <process/children.h>

namespace {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr int CHILDREN = 100;  // of each thread
#else
constexpr int CHILDREN = 500;
#endif
constexpr int THREADS = 4;

/// Runs a program and gives its exit code, or -1 when another thread has taken it.
int _run(PLiteral const& program, std::string const& arguments = "") {
    PProcess process(program, owned(arguments));
    int exitCode = 7;
    EXPECT_EQ(PERR_OK, process.start());
    int const code = process.waitExitCode(exitCode);
    EXPECT_EQ(exitCode == -1 ? PERR_NO_PROCESS : PERR_OK, code);
    return exitCode;
}

}  // namespace

TEST(ProcessLoad, EachOfThousandsOfChildrenIsReportedOrReapedOnce) {
    std::atomic<int> reported = 0, reaped = 0;
    {
        std::vector<std::jthread> threads;
        for (int t = 0; t < THREADS; ++t)
            threads.emplace_back([&] {
                for (int i = 0; i < CHILDREN; ++i) {
                    int const exitCode = _run(i % 2 == 0 ? L"/bin/true" : L"/bin/false");
                    ++(exitCode == i % 2 ? reported : reaped);
                    EXPECT_TRUE(exitCode == i % 2 || exitCode == -1) << exitCode;
                }
            });
    }
    EXPECT_EQ(THREADS * CHILDREN, reported + reaped);
    EXPECT_LE(1, reported) << "nobody is left to reap the last one";
    EXPECT_EQ(-1, waitpid(-1, nullptr, 0)) << "a child is left";
}

TEST(ProcessLoad, ChildrenStartWhileOtherThreadsAllocate) {
    std::vector<std::jthread> threads;
    for (int t = 0; t < THREADS; ++t)
        threads.emplace_back([](std::stop_token const& ended) {
            for (unsigned long i = 1; !ended.stop_requested(); i = i % 5000 + 1)
                EXPECT_EQ(i, owned(std::string(i, 'x')).len());
        });
    for (int i = 0; i < CHILDREN; ++i)
        ASSERT_EQ(i % 256, _run(L"/bin/sh", shell("exit " + std::to_string(i % 256))));
}

TEST(ProcessLoad, FactsAndListsGiveDocumentedCodesWhileProcessesComeAndGo) {
    std::atomic<unsigned int> latest = 0;
    std::jthread const starting([&](std::stop_token const& ended) {
        while (!ended.stop_requested()) {
            PProcess process(L"/bin/true", L"");
            unsigned int pid = 0;
            int exitCode = 0;
            (void)process.start();
            if (process.getPID(pid) == PERR_OK) latest = pid;
            (void)process.waitExitCode(exitCode);
        }
    });
    (void)setenv("TALV_PROC_SAMPLE_TIME_MS", "1", 1);
    for (int i = 0; i < CHILDREN / 5; ++i) {
        for (Fact const& fact : FACTS) {
            int const code = fact.ask(latest).first;
            EXPECT_TRUE(code == PERR_OK || code == PERR_NOT_FOUND || code == fact.gone.first)
                << fact.name << ' ' << code;
        }
        unsigned int percent = 0;
        int const code = PProcess::getCPUUsage(latest, percent);
        EXPECT_TRUE(std::set({PERR_OK, PERR_NO_SUCH_FILE, PERR_READ, PERR_SYSTEM}).contains(code))
            << code;
    }
}
