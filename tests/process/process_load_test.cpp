#include <process/children.h>

namespace {

/// Starts a child and a command one after the other, each to end in its own way.
void _launch() {
    for (int i = 0; i < CHILDREN; ++i) {
        int exitCode = 7;
        PProcess process(L"/bin/sh", shell("exit " + std::to_string(i % 256)));
        EXPECT_CODE(PERR_OK, process.start());
        int const code = process.waitExitCode(exitCode);
        EXPECT_EQ(code == PERR_OK ? i % 256 : -1, exitCode);

        Shell command(L"read x; exit $x");
        std::string const fed = std::to_string(i % 256) + "\n";
        EXPECT_CODE(PERR_OK, command.setStreams(PIPED, PCommand::INHERITED, PIPED));
        EXPECT_CODE(PERR_OK, command.start());
        EXPECT_CODE(PERR_OK, command.writeInput(fed.data(), fed.size()));
        EXPECT_CODE(PERR_OK, command.wait(command.ending, FOREVER));
        EXPECT_EQ(i % 256, command.ending.exitCode);
    }
}

/// Lists processes, which collects every ended child of the caller's group.
void _list(std::stop_token const& over) {
    Ids ids;
    while (!over.stop_requested()) EXPECT_CODE(PERR_OK, PProcess::listPIDs(ids));
}

}  // namespace

TEST(ProcessLoad, EachEndingIsToldOrCollectedAndThatOfACommandAlwaysToldWhileOthersAsk) {
    {
        std::jthread const askers[] = {std::jthread(_list), std::jthread(_list)};
        std::jthread const launchers[] = {std::jthread(_launch), std::jthread(_launch),
                                          std::jthread(_launch), std::jthread(_launch)};
    }
    EXPECT_EQ(-1, waitpid(-1, nullptr, 0)) << "a child is left";
}
