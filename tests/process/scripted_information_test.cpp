#include <clocale>

#include <process/children.h>
#include <process/script.h>

// What is read out of files of the system that hold what no system of today writes.

namespace {

std::string const NUL(1, '\0');
std::string const E_ACUTE = "\xC3\xA9";
std::string const PIECE(255, 'x');  // a line call gives no more bytes at once

}  // namespace

TEST(ScriptedStatus, MemoryIsTheNumberBehindItsKey) {
    for (auto const& [status, bytes] :
         {std::pair(std::string("VmRSS: 4294967295 kB\n"), 4'398'046'510'080ULL),
          {"Name: VmRSS: 5\n VmRSS: 6\nVmRSS: 7\n", 7168},
          {PIECE + "VmRSS: 5\nVmRSS: 6", 5120}}) {
        Script const script({status});
        unsigned long long found = 0;
        EXPECT_CODE(PERR_OK, PProcess::getMemoryUsage(1, found));
        EXPECT_EQ(bytes, found) << status;
    }
}

TEST(ScriptedStatus, AProcessRunsUnlessItsStateSaysOtherwise) {
    for (auto const& [status, runs] : {std::pair("State:\tZ (zombie)\n", false),
                                       {"State: Z\n", false},
                                       {"State:\tzombie\n", false},
                                       {"Name:\tx\n", true}}) {
        SCOPED_TRACE(status);
        Script const script({status});
        bool running = !runs;
        EXPECT_CODE(PERR_OK, PProcess::isRunning(1, running));
        EXPECT_EQ(runs, running);
    }
}

TEST(ScriptedStatus, WithoutItsLineAFactIsNotFound) {
    Script const script({"Other:\t1\n"});
    PString name;
    unsigned int parent = 7;
    unsigned long long bytes = 7;
    EXPECT_CODE(PERR_NOT_FOUND, PProcess::getName(1, name));
    EXPECT_CODE(PERR_NOT_FOUND, PProcess::getMemoryUsage(1, bytes));
    EXPECT_EQ(7U, bytes);
    EXPECT_CODE(PERR_NOT_FOUND, PProcess::getParentPID(1, parent));
    EXPECT_EQ(0U, parent);
}

TEST(ScriptedCommandLine, JoinsArgumentsByTheirBytes) {
    std::string const shifted(300, 'a');
    struct {
        char const* what;
        std::string file;
        std::wstring line;
    } const rows[] = {
        {"one holds a space", "a" + NUL + "b c" + NUL + "d" + NUL, L"a \"b c\" d"},
        {"an empty one", "a" + NUL + NUL + "b" + NUL, L"a  b"},
        {"an empty one in front", NUL + "b" + NUL, L"b"},
        {"zeros stand behind multibyte text", E_ACUTE + NUL + "b" + NUL,
         std::wstring(L"\xE9\0 b", 4)},
        {"what cannot be converted is empty", "a" + NUL + "\xFF" + NUL + "b" + NUL, L"a  b"},
        {"cut wrongly behind 255 bytes", "x" + NUL + shifted + NUL + "b c" + NUL,
         L"x " + std::wstring(45, L'a') + L" \"b c\""},
    };
    ASSERT_NE(nullptr, setlocale(LC_CTYPE, "C.UTF-8"));
    for (auto const& row : rows) {
        SCOPED_TRACE(row.what);
        Script const script({row.file});
        PString line(L"old", 3);
        EXPECT_CODE(PERR_OK, PProcess::getCmdLine(1, line));
        EXPECT_TEXT(row.line, line);
    }
}

TEST(ScriptedEnvironment, SplitsEntriesAtTheirEnds) {
    std::string const block(127, 'a');  // but for one byte
    struct {
        char const* what;
        std::string file;
        std::wstring entry;
    } const rows[] = {
        {"the last without its end", "A=1" + NUL + "B=2", L"A=1"},
        {"bytes that are no character", "A=\xFFx" + NUL, L"A=x"},
        {"longer than a block", block + "bcd" + NUL, std::wstring(127, L'a') + L"bcd"},
        {"a character across two blocks", block + E_ACUTE + "x" + NUL,
         std::wstring(127, L'a') + L"x"},
    };
    ASSERT_NE(nullptr, setlocale(LC_CTYPE, "C.UTF-8"));
    for (auto const& row : rows) {
        SCOPED_TRACE(row.what);
        Script const script({row.file});
        Texts entries(2);
        EXPECT_CODE(PERR_OK, PProcess::getEnvironment(1, entries));
        ASSERT_EQ(1U, entries.size());
        EXPECT_TEXT(row.entry, entries[0]);
    }
}

TEST(ScriptedMachine, FreeMemoryIsTheSumOfThreeLines) {
    for (auto const& [report, kilobytes] :
         {std::pair("MemFree: 1\nSwapCached: 64\nBuffers: 2\nCached: 4\n", 7ULL),
          {"MemFree: 4294967295\nBuffers: 1\nCached: 4\n", 4'294'967'300ULL}}) {
        Script const script({report});
        unsigned long long bytes = 7;
        EXPECT_CODE(PERR_OK, PProcess::getFreeMemory(bytes));
        EXPECT_EQ(kilobytes * 1024, bytes) << report;
    }
}

TEST(ScriptedUser, IsRootUnlessALineHoldsTheKeyInSmallLetters) {
    std::string const accounts = "a:x:17:71:\n:b:x:5:7:\nc:x:7:7:\n";
    for (auto const& [status, account] : {std::pair("Name:\tx\nUid:\t7\t7\n", L"root"),
                                          {"Name:\tx\nuid:\t17\n", L"a"},
                                          {"Name:\t7uid\n", L"b"},  // a group's number counts
                                          {"uid:\t8\n", L"kept"}}) {
        SCOPED_TRACE(status);
        Script const script({status + accounts});  // both files
        PString name(L"kept", 4);
        EXPECT_CODE(PERR_OK, PProcess::getUserName(1, name));
        EXPECT_TEXT(account, name);
    }
}
