#include <type_traits>

#include <gtest/gtest.h>
#include <support/scratch.h>

#include "process/children.h"

static_assert(sizeof(PProcess) == 144 && alignof(PProcess) == 8);
static_assert(std::has_virtual_destructor_v<PProcess> && !std::is_copy_constructible_v<PProcess> &&
              !std::is_copy_assignable_v<PProcess>);

namespace {

/// Runs the child program so that it reports its folder, arguments and environment.
std::string _report(PLiteral const& program, std::string const& arguments,
                    std::vector<PString> const& environment = {}, PLiteral const& folder = L"") {
    Scratch scratch;
    PProcess process(program, owned("report " + scratch.path("report") + " " + arguments), folder,
                     environment);
    int exitCode = -1;
    EXPECT_EQ(PERR_OK, process.start());
    EXPECT_EQ(PERR_OK, process.waitExitCode(exitCode));
    return scratch.read("report");
}

}  // namespace

TEST(ProcessStart, SplitsArgumentsAtEverySpace) {
    char const* const rows[][2] = {{"  ", "env "},
                                   {"a b", "arg a\narg b\nenv "},
                                   {"a  b c", "arg a\nenv "},  // an empty one ends the list
                                   {"\"a b\"", "arg \"a\narg b\"\nenv "},
                                   {"a\t \nb\r", "arg a\narg b\nenv "}};
    for (auto const& [arguments, expected] : rows) {
        std::string const report = _report(owned(TEST_CHILD), arguments);
        EXPECT_EQ(report.find('\n') + 1, report.find(expected)) << arguments << ": " << report;
    }
}

TEST(ProcessStart, NormalisesPathsAndAddsToTheEnvironment) {
    Scratch scratch;
    PString program = owned(std::string("  ") + TEST_CHILD + "\t"), folder = owned(scratch.dir());
    (void)program.replace(L'/', L'\\');
    (void)folder.replace(L'/', L'\\');
    std::vector<PString> const added{owned("PLT_A=B=C"), owned("PLT_B"), owned("PATH=")};
    std::string const report = _report(program, "x", added, folder);
    for (std::string const line : {"PLT_A=B=C\n", "PATH=\n", "HOME="})  // the last one inherited
        EXPECT_NE(std::string::npos, report.find("\nenv " + line)) << line;
    EXPECT_EQ(0U, report.find("cwd " + scratch.dir() + "\n"));
    EXPECT_EQ(std::string::npos, report.find("PLT_B"));
}

TEST(ProcessStart, AChildTellsByItsExitCodeHowItWent) {
    Scratch scratch;
    PString const plain = owned(scratch.write("plain", "no program"));
    struct {
        char const* what;
        PLiteral program, arguments, folder;
        int exitCode;
    } const rows[] = {
        {"along PATH", L"sh", L"-c exit\t255", L"/", 255},
        {"killed", L"/bin/sh", L"-c kill\t-9\t$$", L"", -9},
        {"missing program", L"/nowhere/program", L"", L"", 2},
        {"not executable", plain, L"", L"", 13},
        {"not convertible in the C locale", L"/\x263A", L"", L"", 14},
        {"missing folder", L"/bin/true", L"", L"/nowhere", 139},
        {"folder not convertible", L"/bin/true", L"", L"/\x263A", 139},
    };
    for (auto const& row : rows) {
        SCOPED_TRACE(row.what);
        PProcess process(row.program, row.arguments, row.folder);
        int exitCode = 1;
        EXPECT_TRUE(process.waitExitCode(exitCode) == PERR_NO_PROCESS &&
                    process.start() == PERR_OK);
        EXPECT_EQ(PERR_OK, process.waitExitCode(exitCode));
        EXPECT_EQ(row.exitCode, exitCode);
        EXPECT_TRUE(process.waitExitCode(exitCode) == PERR_NO_PROCESS && exitCode == -1);
    }
    EXPECT_EQ(PERR_NOT_FOUND, PProcess(L" \t", L"x").start());
}

TEST(ProcessStart, OneObjectRunsOneChildAtATime) {
    Child child("sleep 60");
    PProcess& process = child.process;
    int exitCode = 0;
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(PERR_PROCESS_RUNNING, process.start());
        EXPECT_EQ(PERR_PROCESS_RUNNING, process.startProcAsDifferentUser(PString(), PString()));
        EXPECT_EQ(PERR_OK, process.getPID(child.pid));
        child.end();
        EXPECT_EQ(PERR_OK, process.waitExitCode(exitCode));
        EXPECT_EQ(PERR_NO_PROCESS, process.getPID(child.pid));
        EXPECT_EQ(i == 0 ? PERR_OK : PERR_NOT_SUPPORTED,
                  i == 0 ? process.start()
                         : process.startProcAsDifferentUser(PString(), PString()));
    }
}

TEST(ProcessStart, AChildOutlivesItsObjectAndTheShortcutsGiveItsId) {
    PString const program = owned(TEST_CHILD), folder = owned("/");
    std::vector<PString> const added{owned("PLT_SHORTCUT=1")};
    for (int way = 0; way < 4; ++way) {
        Child child;
        PString dir;
        PLiteral const line(L"sleep 60");
        EXPECT_EQ(PERR_OK, way == 0   ? PProcess::start(program, line, child.pid)
                           : way == 1 ? PProcess::start(program, line, folder, child.pid)
                           : way == 2 ? PProcess::start(program, line, added, child.pid)
                                      : PProcess::start(program, line, folder, added, child.pid));
        EXPECT_TRUE(eventually([&] { return child.began(TEST_CHILD); }));
        EXPECT_EQ(PERR_OK, PProcess::getWorkingDir(child.pid, dir));
        EXPECT_EQ(way % 2 == 1, dir == folder);
        EXPECT_EQ(way >= 2, factOf(child.pid, "environ").find("PLT_SHORTCUT=1") < 9999);
    }
}
