// Commands by the hundred while others ask for processes, which collects every ended child of the
// caller's group.
#include <portinglayer/portinglayer.h>
#include <support/child_run.h>
#include <support/expect.h>

namespace {

constexpr int THREADS = 4;

/// Runs a program that ends with the exit code it is told.
void _run(int number) {
    std::string const fed = std::to_string(number % 256) + "\n";
    PEnding ending{};
    PCommand shell(L"sh");
    EXPECT_CODE(PERR_OK, shell.addArgument(L"-c"));
    EXPECT_CODE(PERR_OK, shell.addArgument(L"read x; exit $x"));
    EXPECT_CODE(PERR_OK, shell.setStreams(PCommand::PIPED, PCommand::INHERITED, PCommand::PIPED));
    EXPECT_CODE(PERR_OK, shell.start());
    EXPECT_CODE(PERR_OK, shell.writeInput(fed.data(), fed.size()));
    EXPECT_CODE(PERR_OK, shell.wait(ending, PCommand::FOREVER));
    EXPECT_EQ(number % 256, ending.exitCode);
}

}  // namespace

TEST(CommandLoad, EachEndingIsToldWhileOthersListProcesses) {
    auto const list = [](std::stop_token const& over) {
        for (std::vector<unsigned int> ids; !over.stop_requested();)
            EXPECT_CODE(PERR_OK, PProcess::listPIDs(ids));
    };
    auto const launch = [] {
        for (int i = 0; i < CHILDREN / 2; ++i) _run(i);
    };
    std::jthread const lister(list);
    std::vector<std::jthread> launchers;
    for (int i = 0; i < THREADS; ++i) launchers.emplace_back(launch);
    launchers.clear();
    EXPECT_EQ(-1, waitpid(-1, nullptr, 0)) << "a child is left";
}
