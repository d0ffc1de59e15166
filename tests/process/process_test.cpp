#include <chrono>

#include <portinglayer/portinglayer.h>
#include <process/children.h>
#include <support/interrupted.h>

namespace {

/// What a shell script writes: its folder, arguments, environment.
std::string _report(std::string const& arguments, PLiteral const& program = L"/bin/sh",
                    PLiteral const& folder = L"", std::vector<PString> const& environment = {}) {
    Scratch scratch;
    std::string const script =
        scratch.write("s", "exec >\"$0.out\"; pwd; for a; do echo \"arg $a\"; done; echo end; env");
    PProcess process(program, owned(script + " " + arguments), folder, environment);
    int exitCode = process.start();
    EXPECT_EQ(PERR_OK, process.waitExitCode(exitCode));
    return scratch.read("s.out");
}

template <typename Action>
long _secondsOf(Action const& action) {
    auto const start = std::chrono::steady_clock::now();
    action();
    return static_cast<long>((std::chrono::steady_clock::now() - start) / std::chrono::seconds(1));
}

}  // namespace

TEST(ProcessStart, SplitsArgumentsAtEverySpace) {
    char const* const rows[][2] = {{"  ", "end"},
                                   {"a b", "arg a\narg b\nend"},
                                   {"a  b c", "arg a\nend"},  // an empty one ends the list
                                   {"\"a b\"", "arg \"a\narg b\"\nend"},
                                   {"a\t \nb\r", "arg a\narg b\nend"}};
    for (auto const& [arguments, expected] : rows) {
        std::string const report = _report(arguments);
        EXPECT_EQ(report.find('\n') + 1, report.find(expected)) << arguments << ": " << report;
    }
}

TEST(ProcessStart, NormalisesPathsAndAddsToTheEnvironment) {
    std::vector<PString> const added{owned("PLT_A=B=C"), owned("PLT_B"), owned("LANG=")};
    std::string const report = _report("x", L"  \\bin\\sh\t", L"\\usr\\lib", added);
    for (std::string const line : {"PLT_A=B=C\n", "LANG=\n", "PATH=/"})  // the last one inherited
        EXPECT_NE(std::string::npos, report.find("\n" + line)) << line;
    EXPECT_EQ(0U, report.find("/usr/lib\n"));
    EXPECT_EQ(std::string::npos, report.find("PLT_B"));
}

TEST(ProcessStart, AChildTellsByItsExitCodeHowItWent) {
    struct {
        PLiteral program, arguments, folder;
        int exitCode;
    } const rows[] = {
        {L"sh", L"-c exit\t255", L"/", 255},  // along PATH
        {L"/bin/sh", L"-c kill\t-9\t$$", L"", -9},
        {L"/nowhere/program", L"", L"", 2},
        {L"/etc/passwd", L"", L"", 13},
        {L"/\x263A", L"", L"", 14},  // cannot be converted
        {L"/bin/true", L"", L"/nowhere", 139},
        {L"/bin/true", L"", L"/\x263A", 139},
    };
    for (auto const& row : rows) {
        SCOPED_TRACE(row.exitCode);
        PProcess process(row.program, row.arguments, row.folder);
        int exitCode = 1;
        EXPECT_TRUE(process.waitExitCode(exitCode) == PERR_NO_PROCESS && !process.start());
        EXPECT_EQ(PERR_OK, process.waitExitCode(exitCode));
        EXPECT_EQ(row.exitCode, exitCode);
        EXPECT_TRUE(process.waitExitCode(exitCode) == PERR_NO_PROCESS && exitCode == -1);
    }
    EXPECT_EQ(PERR_NOT_FOUND, PProcess(L" \t", L"x").start());
}

TEST(ProcessStart, OneObjectRunsOneChildAtATime) {
    Child child("60");
    PProcess& process = child.process;
    int exitCode = 0;
    auto const other = [&] { return process.startProcAsDifferentUser(PString(), PString()); };
    for (bool const again : {true, false}) {
        EXPECT_EQ(PERR_PROCESS_RUNNING, process.start());
        EXPECT_EQ(PERR_PROCESS_RUNNING, other());
        EXPECT_EQ(PERR_OK, process.getPID(child.pid));
        child.end();
        EXPECT_EQ(PERR_OK, process.waitExitCode(exitCode));
        EXPECT_EQ(PERR_NO_PROCESS, process.getPID(child.pid));
        EXPECT_EQ(again ? PERR_OK : PERR_NOT_SUPPORTED, again ? process.start() : other());
    }
}

TEST(ProcessStart, AChildOutlivesItsObjectAndTheShortcutsGiveItsId) {
    PLiteral const sh(L"/bin/sh"), line(L"-c exec\tsleep\t60"), folder(L"/");
    std::vector<PString> const added{owned("PLT_SHORTCUT=1")};
    unsigned int pid[4] = {};
    int const codes[] = {
        PProcess::start(sh, line, pid[0]), PProcess::start(sh, line, folder, pid[1]),
        PProcess::start(sh, line, added, pid[2]), PProcess::start(sh, line, folder, added, pid[3])};
    for (int way = 0; way < 4; ++way) {
        EXPECT_EQ(PERR_OK, codes[way]);
        EXPECT_TRUE(eventually([&] { return factOf(pid[way], "cmdline").find("sleep") == 0; }));
        EXPECT_EQ(way % 2 == 1, askFolder(pid[way]) == Answer(PERR_OK, "/"));
        EXPECT_EQ(way >= 2, factOf(pid[way], "environ").find("PLT_SHORTCUT=1") < 9999);
        EXPECT_EQ(PERR_OK, PProcess::killSignal(pid[way], SIGKILL));
    }
}

TEST(ProcessStart, AChildGetsNoDescriptorOfTheLibrary) {
    Scratch scratch;
    std::wstring const name = wide(uniqueName());
    auto const descriptors = [&] {
        PProcess process(L"/bin/sh", owned(shell("echo /proc/self/fd/* >" + scratch.path("fds"))));
        int exitCode = process.start();
        EXPECT_EQ(PERR_OK, process.waitExitCode(exitCode));
        return scratch.read("fds");
    };
    std::string const without = descriptors();
    PFile file, safe;
    PTempFile temporary;
    PDir const dir(L"/", L"");
    PMutex mutex(name.c_str());
    PSemaphore semaphore((name + L"s").c_str());
    for (int code : {file.popen(scratch.wpath("a").c_str(), 27, 0), dir.getResult(),
                     safe.popen(scratch.wpath("b").c_str(), PFile::OPEN_SAFE_WRITE, 0),
                     temporary.popen(scratch.wpath("t").c_str(), 18, 0), mutex.init(true),
                     semaphore.init(1, true)})
        EXPECT_EQ(PERR_OK, code);
    EXPECT_EQ(without, descriptors());
}

TEST(ProcessEnding, KillForgetsTheChildAndKillTreeEndsWhatIgnoresTheRequest) {
    Child child(shell("trap '' TERM; exec sleep 60"), "/bin/sh", "sleep");
    int exitCode = 0;
    EXPECT_LE(1, _secondsOf([&] { EXPECT_EQ(PERR_OK, PProcess::kill(child.pid)); }));
    EXPECT_TRUE(child.process.waitFinish(999));  // SIGTERM was ignored
    EXPECT_EQ(PERR_OK, PProcess::killTree(child.pid));
    EXPECT_EQ("", factOf(child.pid, "stat"));
    EXPECT_EQ(PERR_NO_PROCESS, child.process.waitExitCode(exitCode));
    EXPECT_EQ(0, _secondsOf([&] {
                  EXPECT_EQ(PERR_OK, child.process.kill());
                  EXPECT_EQ(PERR_KILL, PProcess::killSignal(child.pid, SIGTERM));
                  EXPECT_EQ(PERR_KILL, PProcess::killTree(child.pid));
              }));
}

TEST(ProcessWaiting, SignalsCutPausesShortAndEndTheWaitForAnExitCode) {
    Child child("60");
    PProcess& process = child.process;
    int exitCode = 0;
    unsigned int percent = 101;
    auto const all = [&] {
        EXPECT_EQ(PERR_SYSTEM, interrupted([&] { return process.waitExitCode(exitCode); }));
        EXPECT_TRUE(interrupted([&] { return process.waitFinish(20'000); }));
        EXPECT_TRUE(interrupted([&] { return PProcess::waitFinish(child.pid, 20'000); }));
        EXPECT_EQ(PERR_OK, interrupted([&] { return PProcess::killSignal(child.pid, 0); }));
        EXPECT_EQ(PERR_OK, interrupted([&] { return PProcess::getCPUUsage(percent); }));
        EXPECT_EQ(PERR_OK, interrupted([&] { return PProcess::getSpecCPUUsage(0, percent); }));
        int const load = interrupted([&] { return PProcess::getCPUUsage(child.pid, percent); });
        EXPECT_TRUE(load == PERR_OK || load == PERR_SYSTEM) << load;  // no counter moved
        EXPECT_EQ(PERR_OK, interrupted([&] { return process.kill(); }));
    };
    EXPECT_GT(20, _secondsOf(all));
    EXPECT_EQ(-1, exitCode);
}
