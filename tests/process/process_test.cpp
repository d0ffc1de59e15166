#include <portinglayer/portinglayer.h>
#include <process/children.h>

namespace {

int _runToEnd(PProcess&& process) {
    int exitCode = process.start();
    EXPECT_EQ(PERR_OK, process.waitExitCode(exitCode));
    return exitCode;
}

}  // namespace

TEST(ProcessStart, GivesFolderArgumentsAndEnvironment) {
    Scratch scratch;
    std::string const script =
        scratch.write("s", "exec >$0.out; pwd; for a; do echo \"arg $a\"; done; echo end; env");
    Texts const added{owned("PLT_A=B=C"), owned("PLT_B"), owned("LANG=")};
    char const* const rows[][2] = {{"  ", ""},
                                   {"a b", "arg a\narg b\n"},
                                   {"a  b c", "arg a\n"},  // an empty one ends the list
                                   {"\"a b\"", "arg \"a\narg b\"\n"},
                                   {"a\t \nb\r", "arg a\narg b\n"}};
    for (auto const& [given, seen] : rows) {
        _runToEnd({L"  \\bin\\sh\t", owned(script + " " + given), L"\\usr\\lib ", added});
        std::string const report = scratch.read("s.out");
        EXPECT_TRUE(report.starts_with("/usr/lib\n" + std::string(seen) + "end\n")) << report;
        for (std::string const line : {"PLT_A=B=C\n", "LANG=\n", "PATH=/"})  // this one inherited
            EXPECT_NE(std::string::npos, report.find("\n" + line)) << line;
        EXPECT_EQ(std::string::npos, report.find("PLT_B"));
    }
}

TEST(ProcessStart, AChildTellsByItsExitCodeHowItWent) {
    std::tuple<PLiteral, PLiteral, PLiteral, int> const rows[] = {
        {L"sh", L"-c exit\t255", L"/", 255},  // along PATH
        {L"/bin/sh", L"-c kill\t-9\t$$", L"", -9},
        {L"/nowhere/program", L"", L"", 2},
        {L"/etc/passwd", L"", L"", 13},
        {L"/\x263A", L"", L"", 14},  // cannot be converted
        {L"/bin/true", L"", L"/nowhere", 139},
        {L"/bin/true", L"", L"/\x263A", 139},
    };
    for (auto const& [program, arguments, folder, exitCode] : rows)
        EXPECT_EQ(exitCode, _runToEnd({program, arguments, folder}));
    EXPECT_EQ(PERR_NOT_FOUND, PProcess(L" \t", L"x").start());
}

TEST(ProcessStart, OneObjectRunsOneChildUntilThatEndsThoughItIgnoresTheRequest) {
    Child child(shell("trap '' TERM; exec sleep 60"), "/bin/sh");
    PProcess& process = child.process;
    int exitCode = 0;
    auto const other = [&] { return process.startProcAsDifferentUser(PString(), PString()); };
    EXPECT_TRUE(process.start() == PERR_PROCESS_RUNNING && other() == PERR_PROCESS_RUNNING);
    EXPECT_TRUE(eventually([&] { return ask("getName", child.pid).second == "sleep"; }));
    EXPECT_EQ(PERR_OK, PProcess::kill(child.pid));
    EXPECT_TRUE(process.waitFinish(999));  // SIGTERM was ignored
    EXPECT_EQ(PERR_OK, PProcess::killTree(child.pid));
    EXPECT_EQ(PERR_KILL, PProcess::killSignal(child.pid, SIGTERM));
    EXPECT_EQ(PERR_KILL, PProcess::killTree(child.pid));
    EXPECT_EQ(PERR_NOT_SUPPORTED, other());
    EXPECT_TRUE(process.waitExitCode(exitCode) == PERR_NO_PROCESS && exitCode == -1);
}

TEST(ProcessStart, AChildOutlivesItsObjectAndTheShortcutsGiveItsId) {
    PLiteral const sleep(L"/bin/sleep"), line(L"60"), folder(L"/");
    Texts environment, added{owned("PLT_SHORTCUT=1")};
    unsigned int pids[4] = {};
    EXPECT_EQ(PERR_OK, PProcess::start(sleep, line, pids[0]));
    EXPECT_EQ(PERR_OK, PProcess::start(sleep, line, folder, pids[1]));
    EXPECT_EQ(PERR_OK, PProcess::start(sleep, line, added, pids[2]));
    EXPECT_EQ(PERR_OK, PProcess::start(sleep, line, folder, added, pids[3]));
    for (int way = 0; way < 4; ++way) {
        ASSERT_TRUE(Child::isOne(pids[way]));
        EXPECT_TRUE(eventually([&] { return ask("getName", pids[way]).second == "sleep"; }));
        EXPECT_EQ(way % 2 == 1, ask("getWorkingDir", pids[way]).second == "/");
        EXPECT_EQ(PERR_OK, PProcess::getEnvironment(pids[way], environment));
        EXPECT_EQ(way >= 2, environment.back() == L"PLT_SHORTCUT=1");
        EXPECT_EQ(PERR_OK, PProcess::killSignal(pids[way], SIGKILL));
    }
}

TEST(ProcessStart, AChildGetsNoDescriptorOfTheLibrary) {
    Scratch scratch;
    std::wstring const a = scratch.wpath("a"), b = scratch.wpath("b"), here = scratch.wpath("");
    PFile file, safe;
    PTempFile temporary;
    PDir const dir(here.c_str(), L"");
    for (int code : {file.popen(a.c_str(), 27, 0), safe.popen(b.c_str(), 32, 0),
                     temporary.popen(a.c_str(), 18, 0), dir.getResult()})
        EXPECT_EQ(PERR_OK, code);
    std::string const count = "exit $(ls -l /proc/self/fd | grep -c " + scratch.dir() + ")";
    EXPECT_EQ(0, _runToEnd({L"/bin/sh", owned(shell(count))}));
}

TEST(ProcessWaiting, SignalsCutPausesShortAndEndTheWaitForAnExitCode) {
    Child child;
    PProcess& process = child.process;
    int exitCode = 0;
    EXPECT_EQ(PERR_SYSTEM, interrupted([&] { return process.waitExitCode(exitCode); }));
    EXPECT_EQ(-1, exitCode);
    EXPECT_TRUE(interrupted([&] { return process.waitFinish(60'000); }));
    EXPECT_TRUE(interrupted([&] { return PProcess::waitFinish(child.pid, 60'000); }));
    EXPECT_EQ(PERR_OK, interrupted([&] { return PProcess::killSignal(child.pid, 0); }));
    EXPECT_EQ(PERR_OK, interrupted([&] { return ask("getLoad", 0).first; }));
    int const load = interrupted([&] { return ask("getCPUUsage", child.pid).first; });
    EXPECT_TRUE(load == PERR_OK || load == PERR_SYSTEM) << load;  // no counter moved
    EXPECT_EQ(PERR_OK, interrupted([&] { return process.kill(); }));
}
