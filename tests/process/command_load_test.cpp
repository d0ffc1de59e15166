#include <process/commands.h>
#include <process/queries.h>

namespace {

/// Starts commands one after the other, each to end as it is told.
void _launch() {
    for (int i = 0; i < CHILDREN / 2; ++i) {
        Shell command(L"read x; exit $x");
        std::string const fed = std::to_string(i % 256) + "\n";
        EXPECT_CODE(PERR_OK, command.setStreams(PIPED, PCommand::INHERITED, PIPED));
        EXPECT_CODE(PERR_OK, command.start());
        EXPECT_CODE(PERR_OK, command.writeInput(fed.data(), fed.size()));
        EXPECT_CODE(PERR_OK, command.wait(command.ending, FOREVER));
        EXPECT_EQ(i % 256, command.ending.exitCode);
    }
}

/// Asks about processes, which collects every ended child of the caller's group.
void _ask(std::stop_token const& over) {
    while (!over.stop_requested())
        for (Query const& query : queries()) (void)query.ask(PProcess::getCurrentPID());
}

}  // namespace

TEST(CommandLoad, EachEndingIsToldWhileOthersAskForProcesses) {
    (void)setenv("TALV_PROC_SAMPLE_TIME_MS", "1", 1);
    {
        std::jthread const askers[] = {std::jthread(_ask), std::jthread(_ask)};
        std::jthread const launchers[] = {std::jthread(_launch), std::jthread(_launch),
                                          std::jthread(_launch), std::jthread(_launch)};
    }
    EXPECT_EQ(-1, waitpid(-1, nullptr, 0)) << "a child is left";
}
