// Commands: how they are awaited and ended.
#include <chrono>
#include <process/children.h>

using std::chrono::milliseconds;
using Clock = std::chrono::steady_clock;

TEST(CommandWait, TellsTheEndingOfThisChildAloneAsOftenAsItIsAsked) {
    Shell exits(L"exit 255"), killed(L"kill -9 $$"), stopped(L"echo; kill -STOP $$");
    EXPECT_CODE(PERR_NO_PROCESS, exits.wait(exits.ending, FOREVER));
    ASSERT_CODE(PERR_OK, exits.start());
    ASSERT_CODE(PERR_OK, killed.start());
    stopped.startAndHear("\n");
    EXPECT_CODE(PERR_PROCESS_RUNNING, stopped.wait(stopped.ending, 0));
    errno = 0;  // of a signal it means another way
    EXPECT_CODE(PERR_PROCESS_RUNNING, stopped.wait(stopped.ending, 1));
    auto const start = Clock::now();
    EXPECT_CODE(PERR_PROCESS_RUNNING,
                interrupted([&] { return stopped.wait(stopped.ending, 30); }));
    EXPECT_GE(Clock::now() - start, milliseconds(30));
    EXPECT_EQ((PEnding{7, 7}), stopped.ending);
    for (int i = 0; i < 2; ++i) {
        EXPECT_CODE(PERR_OK, killed.wait(killed.ending, FOREVER));
        EXPECT_EQ((PEnding{-1, SIGKILL}), killed.ending);
        EXPECT_CODE(PERR_OK, exits.wait(exits.ending, FOREVER));
        EXPECT_EQ((PEnding{255, 0}), exits.ending);
    }
}

TEST(CommandWait, QueriesOfProcessesTakeAnEndingInTheForegroundOnly) {
    Shell grouped(L"exit 3"), foreground(L"exit 4");
    siginfo_t info{};
    Ids ids;
    EXPECT_CODE(PERR_OK, foreground.setForeground(true));
    for (Shell* const shell : {&grouped, &foreground}) {
        ASSERT_CODE(PERR_OK, shell->start());
        (void)waitid(P_PID, shell->getPID(), &info, WEXITED | WNOWAIT);
    }
    EXPECT_CODE(PERR_OK, PProcess::listPIDs(ids));
    EXPECT_CODE(PERR_OK, foreground.setForeground(true)) << "it is collected";
    EXPECT_CODE(PERR_NO_PROCESS, foreground.wait(foreground.ending, FOREVER));
    EXPECT_CODE(PERR_NO_PROCESS, foreground.signal(SIGTERM));
    EXPECT_CODE(PERR_NO_PROCESS, foreground.end(foreground.ending, 0));
    EXPECT_CODE(PERR_OK, grouped.end(grouped.ending, 0));
    EXPECT_EQ((PEnding{3, 0}), grouped.ending);
}

TEST(CommandSignal, GoesToTheChildAloneAndOnlyWhileThereIsOne) {
    Shell shell(L"trap 'echo child; exit' USR1;"
                L"(trap 'echo other' USR1; echo; sleep 1; echo nothing) & wait");
    EXPECT_CODE(PERR_NO_PROCESS, shell.signal(SIGUSR1));
    EXPECT_CODE(PERR_NO_PROCESS, shell.end(shell.ending, FOREVER));
    shell.startAndHear("\n");
    for (int const number : {-1, 0, 65}) EXPECT_CODE(PERR_INVALID_ARGUMENT, shell.signal(number));
    EXPECT_CODE(PERR_OK, shell.signal(SIGUSR1));
    EXPECT_EQ("child\n", shell.read());
    EXPECT_EQ("nothing\n", shell.read());
}

TEST(CommandEnd, EndsAGroupOfTwentyWithinItsGraceOrKillsItAfterwards) {
    auto const endTwenty = [](std::wstring const& trap, wchar_t const* child, unsigned int grace) {
        Shell shell(trap + L"for n in $(seq 20); do " + child + L"& done; trap - TERM; echo; wait");
        shell.startAndHear("\n");
        auto const start = Clock::now();
        EXPECT_CODE(PERR_OK, shell.end(shell.ending, grace));
        EXPECT_EQ("", shell.read()) << "none holds the output any more";
        EXPECT_EQ((PEnding{-1, SIGTERM}), shell.ending);
        return Clock::now() - start;
    };
    EXPECT_LT(endTwenty(L"", L"sleep 60", FOREVER), milliseconds(30'000));
    EXPECT_GE(endTwenty(L"trap '' TERM;", L"sleep 0.3", FOREVER), milliseconds(200));
    EXPECT_GE(endTwenty(L"trap '' TERM;", L"sleep 60", 100), milliseconds(100));
}

TEST(CommandEnd, InTheForegroundMeetsTheChildAlone) {
    Shell shell(L"(echo; sleep 0.3; echo left) & wait");
    EXPECT_CODE(PERR_OK, shell.setForeground(true));
    shell.startAndHear("\n");
    EXPECT_CODE(PERR_OK, shell.end(shell.ending, FOREVER));
    EXPECT_EQ((PEnding{-1, SIGTERM}), shell.ending);
    EXPECT_EQ("left\n", shell.read());
}

TEST(CommandRun, FeedsAndReadsAnySizesAtOnceAndBearsInputThatNobodyReads) {
    std::string const much(1 << 20, 'x');
    Command tee(L"tee", {L"/dev/stderr"}), nothing(L"true"), none(L"/no");
    EXPECT_TRUE(interrupted([&] { return tee.outputOf(much); }) == much);
    EXPECT_TRUE(tee.errors == much);
    EXPECT_EQ("", nothing.outputOf(much));
    EXPECT_CODE(PERR_NOT_OPEN, nothing.closeInput());
    EXPECT_CODE(PERR_NO_SUCH_FILE, none.run(much, none.output, none.errors, none.ending, FOREVER));
    EXPECT_EQ("kept", none.output);
}

TEST(CommandRun, KillsTheGroupAtItsLimitAndTellsWhatCameUntilThen) {
    Shell shell(L"echo out; echo errors >&2; sleep 60 & exit 3");
    int held[2];
    char byte = 0;
    ASSERT_EQ(0, pipe(held));  // its end for writing is inherited
    EXPECT_CODE(PERR_PROCESS_RUNNING,
                shell.run("", shell.output, shell.errors, shell.ending, 1000));
    EXPECT_EQ("out\n", shell.output);
    EXPECT_EQ("errors\n", shell.errors);
    EXPECT_EQ((PEnding{3, 0}), shell.ending);
    (void)close(held[1]);
    EXPECT_EQ(0, ::read(held[0], &byte, 1)) << "the group has ended";
    (void)close(held[0]);
}
