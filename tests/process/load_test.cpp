#include <atomic>
#include <thread>

#include <process/children.h>

namespace {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr int CHILDREN = 40;  // of each thread
#else
constexpr int CHILDREN = 500;
#endif

std::atomic<unsigned int> latest = 0;

/// Runs a program and gives its exit code, or -1 when another thread has taken it.
int _run(PLiteral const& program, std::string const& arguments = "") {
    PProcess process(program, owned(arguments));
    int exitCode = 7;
    unsigned int pid = 0;
    EXPECT_EQ(PERR_OK, process.start());
    if (arguments.empty() && process.getPID(pid) == PERR_OK) latest = pid;
    int const code = process.waitExitCode(exitCode);
    EXPECT_EQ(exitCode == -1 ? PERR_NO_PROCESS : PERR_OK, code);
    return exitCode;
}

}  // namespace

TEST(ProcessLoad, EachOfThousandsOfChildrenIsReportedOrReapedOnce) {
    std::atomic<int> reported = 0, reaped = 0;
    auto const launch = [&] {
        for (int i = 0; i < CHILDREN; ++i) {
            int const exitCode = _run(i % 2 == 0 ? L"/bin/true" : L"/bin/false", "x");
            ++(exitCode == -1 ? reaped : reported);
            EXPECT_TRUE(exitCode == i % 2 || exitCode == -1) << exitCode;
        }
    };
    for (std::jthread threads[4]; std::jthread & thread : threads) thread = std::jthread(launch);
    EXPECT_EQ(4 * CHILDREN, reported + reaped);
    EXPECT_LE(1, reported) << "nobody is left to reap the last one";
    EXPECT_EQ(-1, waitpid(-1, nullptr, 0)) << "a child is left";
}

TEST(ProcessLoad, ChildrenStartWhileOtherThreadsAllocate) {
    auto const allocate = [](std::stop_token const& ended) {
        for (unsigned long i = 1; !ended.stop_requested(); i = i % 5000 + 1)
            EXPECT_EQ(i, owned(std::string(i, 'x')).len());
    };
    std::jthread const one(allocate), other(allocate);
    for (int i = 0; i < CHILDREN / 2; ++i)
        ASSERT_EQ(i % 256, _run(L"/bin/sh", shell("exit " + std::to_string(i % 256))));
}

TEST(ProcessLoad, FactsAndListsGiveDocumentedCodesWhileProcessesComeAndGo) {
    std::jthread const starting([](std::stop_token const& ended) {
        while (!ended.stop_requested()) (void)_run(L"/bin/true");
    });
    (void)setenv("TALV_PROC_SAMPLE_TIME_MS", "1", 1);
    for (int i = 0; i < CHILDREN / 5; ++i)
        for (Fact const& fact : FACTS) {
            int const code = fact.ask(latest).first;
            EXPECT_TRUE(code == PERR_OK || code == fact.gone.first || fact.meanwhile.contains(code))
                << fact.name << ' ' << code;
        }
}
