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
        char const* what;
        char const* arguments;
        char const* expected;
    } const rows[] = {
        {"none", "  ", "env "},
        {"two", "a b", "arg a\narg b\nenv "},
        {"two adjacent spaces end the list", "a  b c", "arg a\nenv "},
        {"quotes mean nothing", "\"a b\"", "arg \"a\narg b\"\nenv "},
        {"white space around a token", "a\t \nb\r", "arg a\narg b\nenv "},
    };
    for (auto const& row : rows) {
        std::string const report = _report(owned(TEST_CHILD), row.arguments);
        std::size_t const second = report.find('\n') + 1;
        EXPECT_EQ(row.expected, report.substr(second, std::strlen(row.expected))) << row.what;
    }
}

TEST(ProcessStart, NormalisesPathsAndAddsToTheEnvironment) {
    Scratch scratch;
    PString program = owned(std::string("  ") + TEST_CHILD + "\t");
    PString folder = owned(scratch.dir() + "\n");
    (void)program.replace(L'/', L'\\');
    (void)folder.replace(L'/', L'\\');
    std::string const report =
        _report(program, "x",
                {owned("PLT_A=B=C"), owned("PLT_SKIPPED"), owned("PATH="), owned("=odd")}, folder);

    EXPECT_NE(std::string::npos, report.find("cwd " + scratch.dir() + "\n"));
    EXPECT_NE(std::string::npos, report.find("\nenv PLT_A=B=C\n"));
    EXPECT_NE(std::string::npos, report.find("\nenv PATH=\n"));
    EXPECT_EQ(std::string::npos, report.find("PLT_SKIPPED"));
    EXPECT_EQ(std::string::npos, report.find("odd"));
    EXPECT_NE(std::string::npos, report.find("\nenv HOME="));  // inherited
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
        {"missing in PATH", L"plt-no-such-program", L"", 2},
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
    PProcess running(owned(TEST_CHILD), L"sleep 60");
    ASSERT_EQ(PERR_OK, running.start());
    Child const child(startedId(running));
    unsigned int pid = 0;
    EXPECT_EQ(PERR_PROCESS_RUNNING, running.start());
    EXPECT_EQ(PERR_PROCESS_RUNNING, running.startProcAsDifferentUser(PString(), PString()));
    EXPECT_EQ(PERR_OK, running.getPID(pid));
    EXPECT_EQ(child.pid, pid);

    PProcess again(owned(TEST_CHILD), L"exit 0");
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(PERR_OK, again.start());
        EXPECT_FALSE(again.waitFinish(0) && again.waitFinish(1000));
    }
    EXPECT_EQ(PERR_NOT_SUPPORTED, again.startProcAsDifferentUser(PString(), PString()));
    EXPECT_EQ(PERR_NO_PROCESS, again.getPID(pid));
}

TEST(ProcessStart, AChildOutlivesItsObjectAndTheShortcutsGiveItsId) {
    Scratch scratch;
    PString const program = owned(TEST_CHILD);
    PString const folder = owned(scratch.dir());
    std::vector<PString> const environment{owned("PLT_SHORTCUT=1")};
    unsigned int pids[4] = {};
    EXPECT_EQ(PERR_OK, PProcess::start(program, L"sleep 60", pids[0]));
    EXPECT_EQ(PERR_OK, PProcess::start(program, L"sleep 60", folder, pids[1]));
    EXPECT_EQ(PERR_OK, PProcess::start(program, L"sleep 60", environment, pids[2]));
    EXPECT_EQ(PERR_OK, PProcess::start(program, L"sleep 60", folder, environment, pids[3]));
    for (int i = 0; i < 4; ++i) {
        Child const child(pids[i]);
        PString name, dir;
        std::vector<PString> entries;
        EXPECT_TRUE(eventually([&] {
            return PProcess::getName(child.pid, name) == PERR_OK && name == L"test_child";
        }));
        EXPECT_EQ(PERR_OK, PProcess::getWorkingDir(child.pid, dir));
        EXPECT_EQ(i % 2 == 1, dir == folder);
        EXPECT_EQ(PERR_OK, PProcess::getEnvironment(child.pid, entries));
        EXPECT_EQ(i >= 2, !entries.empty() && entries.back() == environment[0]);
    }
    unsigned int untouched = 7;
    EXPECT_EQ(PERR_NOT_FOUND, PProcess::start(L"", L"", untouched));
    EXPECT_EQ(7U, untouched);
}
