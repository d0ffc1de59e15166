// Commands: what is started, and what goes through its streams.
#include <fcntl.h>
#include <process/children.h>

TEST(CommandSettings, ArgumentsFolderAndTextsBeyondAsciiArriveAsTheyStand) {
    Scratch const scratch;
    std::filesystem::create_directory(scratch.path("\xC3\xA9 \\"));
    Command shell(L"/bin/../bin/sh", {L"-c", L"pwd; tr '\\0' . </proc/$$/cmdline; echo $A", L"",
                                      L" a  'b\"\t", L"\U0001F600"});
    EXPECT_CODE(PERR_OK, shell.setWorkingDir((scratch.wpath("") + L"\xE9 \\").c_str()));
    EXPECT_CODE(PERR_OK, shell.setEnvironment(L"A", L"\x263A=\\"));
    std::string const said = shell.outputOf();
    EXPECT_TRUE(said.starts_with(scratch.path("\xC3\xA9 \\\n/bin/../bin/sh.-c."))) << said;
    EXPECT_TRUE(said.ends_with(".. a  'b\"\t.\xF0\x9F\x98\x80.\xE2\x98\xBA=\\\n")) << said;
}

TEST(CommandSettings, ChangesOfTheEnvironmentApplyInTheirOrderToThatOfTheStart) {
    Shell changed(L"env | grep ^PLT_SE | sort");
    EXPECT_CODE(PERR_OK, changed.setEnvironment(L"PLT_SE", L"one"));
    EXPECT_CODE(PERR_OK, changed.unsetEnvironment(L"PLT_SENT"));
    for (char const* const name : {"PLT_SE", "PLT_SET", "PLT_SENT"}) (void)setenv(name, "late", 1);
    EXPECT_EQ("PLT_SE=one\nPLT_SET=late\n", changed.outputOf());

    Command none(L"/usr/bin/env");
    EXPECT_CODE(PERR_OK, none.setEnvironment(L"A", L"before"));
    EXPECT_CODE(PERR_OK, none.clearEnvironment());
    EXPECT_CODE(PERR_OK, none.setEnvironment(L"B", L"1"));
    EXPECT_EQ("B=1\n", none.outputOf());
}

TEST(CommandSettings, WhatCannotBeTakenIsToldAndChangesNothing) {
    Command echo(L"echo", {L"kept"});
    PString const zero(L"a\0b", 3);
    PLiteral const bad(L"\xD800"), good(L"a");
    EXPECT_CODE(PERR_INVALID_ARGUMENT, echo.addArgument(zero));
    EXPECT_CODE(PERR_BAD_FORMAT, echo.addArgument(bad));
    EXPECT_CODE(PERR_INVALID_ARGUMENT, echo.setEnvironment(L"", good));
    EXPECT_CODE(PERR_INVALID_ARGUMENT, echo.setEnvironment(L"a=b", good));
    EXPECT_CODE(PERR_BAD_FORMAT, echo.setEnvironment(good, bad));
    EXPECT_CODE(PERR_INVALID_ARGUMENT, echo.unsetEnvironment(L"="));
    EXPECT_CODE(PERR_INVALID_ARGUMENT, echo.setWorkingDir(L""));
    EXPECT_CODE(PERR_INVALID_ARGUMENT, echo.setStreams(PIPED, -1, PIPED));
    EXPECT_CODE(PERR_INVALID_ARGUMENT, echo.setStreams(PIPED, PIPED, 3));
    EXPECT_CODE(PERR_INVALID_ARGUMENT, PCommand(L"").start());
    EXPECT_EQ("kept\n", echo.outputOf());
}

TEST(CommandStart, TellsWhyAProgramCannotRun) {
    Scratch const scratch;
    std::filesystem::permissions(scratch.write("bare", "exit 0"), std::filesystem::perms::all);
    scratch.write("plain", "");
    std::wstring const endless(200'000, L'x');
    std::string const before = getenv("PATH");
    (void)setenv("PATH", (scratch.dir() + ":/bin").c_str(), 1);
    auto const started = [](char const* program, char const* folder) {
        Command command(wide(program).c_str());
        EXPECT_CODE(PERR_OK, command.setWorkingDir(wide(folder).c_str()));
        return command.start();
    };
    EXPECT_CODE(PERR_NO_SUCH_FILE, started("plt-no-such-program", "/"));
    EXPECT_CODE(PERR_NO_SUCH_FILE, started("/bin/true", "/nowhere"));
    EXPECT_CODE(PERR_NO_SUCH_FILE, started("true", "/etc/passwd"));
    EXPECT_CODE(PERR_REFUSED, started("./bare", scratch.dir().c_str())) << "no shell is tried";
    EXPECT_CODE(PERR_REFUSED, started("./plain", scratch.dir().c_str()));
    EXPECT_CODE(PERR_REFUSED, started("plain", "/")) << "along PATH";
    EXPECT_CODE(PERR_SYSTEM, Command(L"true", {endless.c_str()}).start());
    (void)setenv("PATH", before.c_str(), 1);
}

TEST(CommandStart, LooksAlongTheFoldersOfPathButNeverInTheCurrentOne) {
    Scratch const scratch;
    std::string const tool = scratch.write("plt-tool", "#!/bin/sh\necho tool\n");
    std::filesystem::permissions(tool, std::filesystem::perms::all);
    std::filesystem::path const folder = std::filesystem::current_path();
    std::string const before = getenv("PATH"), found = "/nowhere::/etc/passwd:" + scratch.dir();
    std::filesystem::current_path(scratch.dir());
    (void)setenv("PATH", ".::/usr/bin", 1);
    EXPECT_CODE(PERR_NO_SUCH_FILE, PCommand(L"plt-tool").start());
    std::filesystem::current_path(folder);
    (void)setenv("PATH", found.c_str(), 1);
    EXPECT_EQ("tool\n", Command(L"plt-tool").outputOf());
    (void)unsetenv("PATH");
    EXPECT_EQ("default\n", Command(L"echo", {L"default"}).outputOf());
    (void)setenv("PATH", before.c_str(), 1);
}

TEST(CommandStart, GivesPlainSignals) {
    Command signals(L"grep", {L"-hE", L"Sig(Blk|Ign)", L"/proc/self/status"});
    sigset_t before, all;
    (void)sigfillset(&all);
    (void)pthread_sigmask(SIG_SETMASK, &all, &before);
    (void)std::signal(SIGUSR1, SIG_IGN);
    EXPECT_EQ("SigBlk:\t0000000000000000\nSigIgn:\t0000000000000000\n", signals.outputOf());
    (void)std::signal(SIGUSR1, SIG_DFL);
    (void)pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

TEST(CommandStart, GivesAGroupAndOnlyTheDescriptorsThatTheCallerLeftInheritable) {
    Shell shell(L"cut -d' ' -f5 /proc/$$/stat; for n in 0 1 2 40 41 42; do "
                L"[ -e /proc/$$/fd/$n ] && echo $n; done");
    int const open[] = {fcntl(0, F_DUPFD, 40), fcntl(0, F_DUPFD_CLOEXEC, 41)};
    std::string const said = shell.outputOf();
    EXPECT_EQ(std::to_string(shell.getPID()) + "\n0\n1\n2\n40\n", said);
    EXPECT_CODE(PERR_OK, shell.setForeground(true));
    EXPECT_EQ(std::to_string(getpgrp()) + "\n0\n1\n2\n40\n", shell.outputOf());
    for (int const descriptor : open) (void)close(descriptor);
}

TEST(CommandStart, PipesWorkWhereTheCallerHasClosedItsStreams) {
    ChildRun closed([] {
        for (int const stream : {0, 1, 2}) (void)close(stream);
        Shell pipes(L"cat; echo errors >&2");
        if (pipes.outputOf("through") != "through") return 1;
        return fcntl(0, F_GETFD) == -1 ? 0 : 2;
    });
    EXPECT_EQ(0, closed.wait());
}

TEST(CommandStart, OneObjectHoldsOneChildUntilThatIsCollectedAndThenStartsAnother) {
    Shell shell(L"echo $#; read x");
    shell.startAndHear("0\n");
    EXPECT_CODE(PERR_OK, shell.signal(SIGKILL));
    for (int const code :
         {shell.start(), shell.addArgument(L"a"), shell.setEnvironment(L"A", L"b"),
          shell.unsetEnvironment(L"A"), shell.clearEnvironment(), shell.setWorkingDir(L"/"),
          shell.setStreams(PIPED, PIPED, PIPED), shell.setForeground(true),
          shell.run("", shell.output, shell.errors, shell.ending, FOREVER)})
        EXPECT_CODE(PERR_PROCESS_RUNNING, code);
    EXPECT_CODE(PERR_OK, shell.wait(shell.ending, FOREVER));
    shell.startAndHear("0\n");
}

TEST(CommandStreams, TellWhereNothingCanBeReadOrWritten) {
    Shell shell(L"exec <&-; echo out; kill -STOP $$");
    char byte = 'b';
    unsigned long done = 7;
    EXPECT_CODE(PERR_NOT_OPEN, shell.writeInput(&byte, 1));
    shell.startAndHear("out\n");
    EXPECT_CODE(PERR_NOT_OPEN, shell.readErrors(&byte, 1, done));
    EXPECT_CODE(PERR_INVALID_ARGUMENT, shell.readErrors(nullptr, 1, done));
    EXPECT_CODE(PERR_INVALID_ARGUMENT, shell.readOutput(nullptr, 1, done));
    EXPECT_CODE(PERR_INVALID_ARGUMENT, shell.readOutput(&byte, 0, done));
    EXPECT_CODE(PERR_INVALID_ARGUMENT, shell.writeInput(nullptr, 1));
    EXPECT_CODE(PERR_INVALID_ARGUMENT, shell.writeInput(&byte, 0));
    EXPECT_CODE(PERR_WRITE, shell.writeInput(&byte, 1)) << "and no SIGPIPE came";
    EXPECT_CODE(PERR_OK, shell.closeInput());
    EXPECT_CODE(PERR_NOT_OPEN, shell.closeInput());
    EXPECT_CODE(PERR_OK, shell.end(shell.ending, 0));
    EXPECT_CODE(PERR_END_OF_FILE, shell.readOutput(&byte, 1, done));
    EXPECT_EQ(7UL, done);
}

TEST(CommandStreams, AreThoseOfTheCallerOrLeadNowhere) {
    Scratch const scratch;
    int const file = open(scratch.write("said", "").c_str(), O_WRONLY | O_CLOEXEC);
    ChildRun caller([&] {
        (void)dup3(file, 1, O_CLOEXEC);
        Shell shell(L"cat; echo output; echo errors >&2");
        (void)shell.setStreams(DISCARDED, PCommand::INHERITED, DISCARDED);
        (void)shell.start();
        return shell.wait(shell.ending, FOREVER) == PERR_OK ? 0 : 1;
    });
    EXPECT_EQ(0, caller.wait());
    EXPECT_EQ("output\n", scratch.read("said"));
    (void)close(file);
}
