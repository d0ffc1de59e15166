#include <atomic>
#include <set>
#include <thread>

#include <process/children.h>

namespace {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr int CHILDREN = 40;  // of each thread
#else
constexpr int CHILDREN = 500;
#endif

/// Runs a program and gives its exit code, or -1 when another thread has taken it.
int _run(PLiteral const& program, std::string const& arguments,
         std::atomic<unsigned>* id = nullptr) {
    PProcess process(program, owned(arguments));
    int exitCode = 7;
    unsigned int pid = 0;
    EXPECT_EQ(PERR_OK, process.start());
    if (id != nullptr && process.getPID(pid) == PERR_OK) *id = pid;
    int const code = process.waitExitCode(exitCode);
    EXPECT_EQ(exitCode == -1 ? PERR_NO_PROCESS : PERR_OK, code);
    return exitCode;
}

}  // namespace

TEST(ProcessLoad, EachOfThousandsOfChildrenIsReportedOrReapedOnce) {
    std::atomic<int> reported = 0, reaped = 0;
    auto const launch = [&] {
        for (int i = 0; i < CHILDREN; ++i) {
            int const exitCode = _run(i % 2 == 0 ? L"/bin/true" : L"/bin/false", "");
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
    std::jthread threads[2];
    for (std::jthread& thread : threads)
        thread = std::jthread([](std::stop_token const& ended) {
            for (unsigned long i = 1; !ended.stop_requested(); i = i % 5000 + 1)
                EXPECT_EQ(i, owned(std::string(i, 'x')).len());
        });
    for (int i = 0; i < CHILDREN / 2; ++i)
        ASSERT_EQ(i % 256, _run(L"/bin/sh", shell("exit " + std::to_string(i % 256))));
}

TEST(ProcessLoad, FactsAndListsGiveDocumentedCodesWhileProcessesComeAndGo) {
    std::atomic<unsigned int> latest = 0;
    std::jthread const starting([&](std::stop_token const& ended) {
        while (!ended.stop_requested()) (void)_run(L"/bin/true", "", &latest);
    });
    (void)setenv("TALV_PROC_SAMPLE_TIME_MS", "1", 1);
    for (int i = 0; i < CHILDREN / 5; ++i) {
        for (Fact const& fact : FACTS) {
            int const code = fact.ask(latest).first;
            EXPECT_TRUE((std::set{PERR_OK, PERR_NOT_FOUND, fact.gone.first}).contains(code))
                << fact.name << ' ' << code;
        }
        int const code = ask<unsigned int, PProcess::getCPUUsage>(latest).first;
        EXPECT_TRUE((std::set{PERR_OK, PERR_NO_SUCH_FILE, PERR_READ, PERR_SYSTEM}).contains(code));
    }
}
