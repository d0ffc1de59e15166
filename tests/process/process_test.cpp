#include <cstring>
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
    EXPECT_EQ(0, exitCode);
    return scratch.read("report");
}

}  // namespace

TEST(ProcessStart, SplitsArgumentsAtEverySpace) {
    struct {
        char const *what, *arguments, *expected;
    } const rows[] = {
        {"none", "  ", "env "},
        {"two", "a b", "arg a\narg b\nenv "},
        {"two adjacent spaces end the list", "a  b c", "arg a\nenv "},
        {"quotes mean nothing", "\"a b\"", "arg \"a\narg b\"\nenv "},
        {"white space around a token", "a\t \nb\r", "arg a\narg b\nenv "},
    };
    for (auto const& row : rows) {
        std::string const report = _report(owned(TEST_CHILD), row.arguments);
        EXPECT_EQ(0U, report.find(row.expected, report.find('\n') + 1) - report.find('\n') - 1)
            << row.what << ": " << report.substr(0, 200);
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

TEST(ProcessStart, WhatCannotRunEndsItsChildWithACode) {
    Scratch scratch;
    PString const plain = owned(scratch.write("plain", "no program"));
    struct {
        char const* what;
        PLiteral program, folder;
        int exitCode;
    } const rows[] = {
        {"missing program", L"/nowhere/program", L"", 2},
        {"missing along PATH", L"plt-no-such-program", L"", 2},
        {"not executable", plain, L"", 13},
        {"not convertible in the C locale", L"/\x263A", L"", 14},
        {"missing folder", L"/bin/true", L"/nowhere", 139},
        {"folder not convertible", L"/bin/true", L"/\x263A", 139},
        {"found along PATH", L"true", L"/", 0},
    };
    for (auto const& row : rows) {
        PProcess process(row.program, L"", row.folder);
        int exitCode = -1;
        EXPECT_EQ(PERR_OK, process.start()) << row.what;
        EXPECT_EQ(PERR_OK, process.waitExitCode(exitCode)) << row.what;
        EXPECT_EQ(row.exitCode, exitCode) << row.what;
    }
    EXPECT_EQ(PERR_NOT_FOUND, PProcess(L" \t", L"x").start());
}

TEST(ProcessStart, OneObjectRunsOneChildAtATime) {
    Child child("sleep 60");
    PProcess& process = child.process;
    unsigned int pid = 0;
    int exitCode = 0;
    EXPECT_EQ(PERR_PROCESS_RUNNING, process.start());
    EXPECT_EQ(PERR_PROCESS_RUNNING, process.startProcAsDifferentUser(PString(), PString()));
    EXPECT_EQ(PERR_OK, process.getPID(pid));
    EXPECT_EQ(child.pid, pid);
    EXPECT_EQ(0, ::kill(static_cast<pid_t>(pid), SIGKILL));
    EXPECT_EQ(PERR_OK, process.waitExitCode(exitCode));
    EXPECT_EQ(PERR_OK, process.start());
    EXPECT_EQ(PERR_OK, process.getPID(child.pid));
    EXPECT_NE(pid, child.pid);
    EXPECT_EQ(0, ::kill(static_cast<pid_t>(child.pid), SIGKILL));
    EXPECT_EQ(PERR_OK, process.waitExitCode(exitCode));
    EXPECT_EQ(PERR_NOT_SUPPORTED, process.startProcAsDifferentUser(PString(), PString()));
    EXPECT_EQ(PERR_NO_PROCESS, process.getPID(pid));
}

TEST(ProcessStart, AChildOutlivesItsObjectAndTheShortcutsGiveItsId) {
    PString const program = owned(TEST_CHILD), folder = owned("/");
    std::vector<PString> const added{owned("PLT_SHORTCUT=1")};
    Child children[4];
    EXPECT_EQ(PERR_OK, PProcess::start(program, L"sleep 60", children[0].pid));
    EXPECT_EQ(PERR_OK, PProcess::start(program, L"sleep 60", folder, children[1].pid));
    EXPECT_EQ(PERR_OK, PProcess::start(program, L"sleep 60", added, children[2].pid));
    EXPECT_EQ(PERR_OK, PProcess::start(program, L"sleep 60", folder, added, children[3].pid));
    for (int i = 0; i < 4; ++i) {
        unsigned int const pid = children[i].pid;
        PString dir;
        EXPECT_TRUE(eventually([&] { return factOf(pid, "cmdline").find("60") < 300; }));
        EXPECT_EQ(PERR_OK, PProcess::getWorkingDir(pid, dir));
        EXPECT_EQ(i % 2 == 1, dir == folder);
        EXPECT_EQ(i >= 2, factOf(pid, "environ").find("PLT_SHORTCUT=1") != std::string::npos);
    }
}
