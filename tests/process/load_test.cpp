#include <set>

#include <process/children.h>

namespace {

struct Query {
    char const* what;
    std::function<int(unsigned int pid)> ask;
    std::set<int> codes;  ///< besides PERR_OK, of a process that may end at any time
};

template <class Out>
Query _query(char const* what, int (*ask)(unsigned int, Out&), std::set<int> codes) {
    return {what,
            [ask](unsigned int pid) {
                Out out{};
                return ask(pid, out);
            },
            std::move(codes)};
}

std::vector<Query> _queries() {
    std::set<int> const notFound{PERR_NOT_FOUND};
    return {
        _query<PString>("getName", PProcess::getName, notFound),
        _query<PString>("getPath", PProcess::getPath, notFound),
        _query<PString>("getCmdLine", PProcess::getCmdLine, notFound),
        _query<PString>("getWorkingDir", PProcess::getWorkingDir, notFound),
        _query<Texts>("getEnvironment", PProcess::getEnvironment, notFound),
        _query<int>("getPriority", PProcess::getPriority, notFound),
        _query<unsigned int>("getParentPID", PProcess::getParentPID, notFound),
        _query<unsigned long long>("getMemoryUsage", PProcess::getMemoryUsage,
                                   {PERR_NO_PROCESS, PERR_NOT_FOUND}),
        _query<unsigned int>("getCPUUsage", PProcess::getCPUUsage,
                             {PERR_NO_SUCH_FILE, PERR_READ, PERR_SYSTEM}),
        _query<bool>("isRunning", PProcess::isRunning, {}),
        _query<Ids>("getChildPID", PProcess::getChildPID, notFound),
    };
}

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
            for (Query const& query : _queries()) {
                int const code = query.ask(latest);
                EXPECT_TRUE(code == PERR_OK || query.codes.contains(code))
                    << query.what << " gave " << codeName(code);
            }
    }
    EXPECT_GT(reported, 0);
    EXPECT_EQ(-1, waitpid(-1, nullptr, 0)) << "a child is left";
}
