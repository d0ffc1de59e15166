#include <clocale>

#include <process/children.h>

namespace {

/// What a shell script reports about how it was started.
struct Report {
    explicit Report(std::string const& script)
        : program(scratch.write("report", "exec >$0.out; " + script)) {}

    PString arguments(std::string const& own = "") const { return owned(program + " " + own); }
    std::string text() const { return scratch.read("report.out"); }

    Scratch scratch;
    std::string const program;
};

}  // namespace

TEST(ProcessStart, SplitsArgumentsAtSingleSpaces) {
    Report const report("for a; do echo \"<$a>\"; done");
    auto const seen = [&](char const* given) {
        EXPECT_EQ(0, runToEnd({L"/bin/sh", report.arguments(given)}));
        return report.text();
    };
    EXPECT_EQ("<a>\n", seen("a  b c")) << "an empty one ends the list";
    EXPECT_EQ("<\"a>\n<b\">\n", seen("\"a b\"")) << "quotes mean nothing";
    EXPECT_EQ("<a>\n<b\tc>\n", seen("a\t \nb\tc\r")) << "they are trimmed";
}

TEST(ProcessStart, PassesTextWithZerosBehindItWhole) {
    ASSERT_NE(nullptr, setlocale(LC_CTYPE, "C.UTF-8"));
    Report const report("echo \"<$1>\"");
    PString arguments = report.arguments();
    ASSERT_CODE(PERR_OK, arguments.cat("\xC3\xA9", 2));
    EXPECT_EQ(0, runToEnd({L"/bin/sh", arguments}));
    EXPECT_EQ("<\xC3\xA9>\n", report.text());
}

TEST(ProcessStart, TrimsProgramAndFolderAndTakesBackslashesForSlashes) {
    Report const report("pwd");
    EXPECT_EQ(0, runToEnd({L"  \\bin\\sh\t", report.arguments(), L"\\usr\\lib\n"}));
    EXPECT_EQ("/usr/lib\n", report.text());
}

TEST(ProcessStart, AddsItsEntriesToTheInheritedEnvironment) {
    Report const report("echo $PLT_A $PLT_B $PLT_C");
    (void)setenv("PLT_B", "old", 1);
    (void)setenv("PLT_C", "kept", 1);
    Texts const entries{owned("PLT_A=x=y"), owned("PLT_B=new"), owned("PLT_C")};
    EXPECT_EQ(0, runToEnd({L"/bin/sh", report.arguments(), entries}));
    EXPECT_EQ("x=y new kept\n", report.text());
}

TEST(ProcessStart, ExitCodeTellsWhyAProgramCouldNotBeRun) {
    EXPECT_EQ(0, runToEnd({L"true", L"", L"/"})) << "found along PATH";
    EXPECT_EQ(EACCES, runToEnd({L"/etc/passwd", L"", L""})) << "no program";
    EXPECT_EQ(EFAULT, runToEnd({L"/\x263A", L"", L""})) << "not in the locale";
    EXPECT_EQ(139, runToEnd({L"/bin/true", L"", L"/nowhere"})) << "a missing folder";
}

TEST(ProcessStart, NothingIsStartedWithoutAProgram) {
    PProcess process(L" \t", L"x");
    unsigned int pid = 7;
    EXPECT_CODE(PERR_NOT_FOUND, process.start());
    EXPECT_CODE(PERR_NO_PROCESS, process.getPID(pid));
    EXPECT_CODE(PERR_NOT_FOUND, PProcess::start(L"", L"x", pid));
    EXPECT_EQ(7U, pid);
}

TEST(ProcessStart, IsRefusedWhileTheChildRunsAndAlwaysAsAnotherUser) {
    PString const user = owned("root"), password = owned("x");
    Child child;
    int exitCode = 0;
    EXPECT_CODE(PERR_PROCESS_RUNNING, child.process.start());
    EXPECT_CODE(PERR_PROCESS_RUNNING, child.process.startProcAsDifferentUser(user, password));
    child.end();
    EXPECT_CODE(PERR_NOT_SUPPORTED, child.process.startProcAsDifferentUser(user, password));
    EXPECT_CODE(PERR_NO_PROCESS, child.process.waitExitCode(exitCode)) << "it was forgotten";
}

TEST(ProcessStart, ShortcutsGiveTheIdOfAChildThatOutlivesTheirObject) {
    Report const report("pwd; echo $PLT_ADDED; sleep 0.5");
    PLiteral const sh(L"/bin/sh"), usr(L"/usr");
    PString const line = report.arguments();
    Texts const added{owned("PLT_ADDED=1")};
    std::string const here = std::filesystem::current_path();
    unsigned int pid = 0;
    auto const said = [&](int code) {
        EXPECT_CODE(PERR_OK, code);
        EXPECT_EQ(static_cast<pid_t>(pid), waitpid(static_cast<pid_t>(pid), nullptr, 0));
        return report.text();
    };
    EXPECT_EQ(here + "\n\n", said(PProcess::start(sh, line, pid)));
    EXPECT_EQ("/usr\n\n", said(PProcess::start(sh, line, usr, pid)));
    EXPECT_EQ(here + "\n1\n", said(PProcess::start(sh, line, added, pid)));
    EXPECT_EQ("/usr\n1\n", said(PProcess::start(sh, line, usr, added, pid)));
}

TEST(ProcessStart, TheIdIsForgottenWithOrWithoutCollectingTheChild) {
    Child child;
    PProcess other(L"/bin/true", L"");
    child.end();
    EXPECT_CODE(PERR_OK, child.process.initProcessInfo());
    EXPECT_EQ(child.pid, waitpid(static_cast<pid_t>(child.pid), nullptr, WNOHANG));
    siginfo_t ended{};
    ASSERT_CODE(PERR_OK, other.start());
    ASSERT_EQ(0, waitid(P_ALL, 0, &ended, WEXITED | WNOWAIT));
    EXPECT_FALSE(endsACancelledThread([&] { (void)other.clearProcessInfo(); }));
    EXPECT_EQ(-1, waitpid(ended.si_pid, nullptr, WNOHANG));
}
