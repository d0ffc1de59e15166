// What is read out of files of the system that hold what no system of today writes.
#include <clocale>

#include <process/children.h>
#include <process/script.h>

namespace {

std::string const NUL(1, '\0');
std::string const E_ACUTE = "\xC3\xA9";
std::string const PIECE(255, 'x');  // a line call gives no more bytes at once

}  // namespace

TEST(ScriptedStatus, MemoryIsTheNumberBehindItsKey) {
    auto const bytes = [](std::string const& status) {
        Script const script({status});
        unsigned long long found = 0;
        EXPECT_CODE(PERR_OK, PProcess::getMemoryUsage(1, found));
        return found;
    };
    EXPECT_EQ(4'398'046'510'080ULL, bytes("VmRSS: 4294967295 kB\n"));
    EXPECT_EQ(7168ULL, bytes("Name: VmRSS: 5\n VmRSS: 6\nVmRSS: 7\n"));
    EXPECT_EQ(5120ULL, bytes(PIECE + "VmRSS: 5\nVmRSS: 6"));
}

TEST(ScriptedStatus, AProcessRunsUnlessItsStateSaysOtherwise) {
    auto const runs = [](char const* status) {
        Script const script({status});
        bool running = false;
        EXPECT_CODE(PERR_OK, PProcess::isRunning(1, running));
        return running;
    };
    EXPECT_FALSE(runs("State: Z\n"));
    EXPECT_FALSE(runs("State:\tzombie\n"));
    EXPECT_TRUE(runs("Name:\tx\n"));
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
    auto const joined = [](std::string const& file) {
        Script const script({file});
        PString line(L"old", 3);
        EXPECT_CODE(PERR_OK, PProcess::getCmdLine(1, line));
        return line;
    };
    ASSERT_NE(nullptr, setlocale(LC_CTYPE, "C.UTF-8"));
    EXPECT_TEXT(L"a \"b c\" d", joined("a" + NUL + "b c" + NUL + "d" + NUL));
    EXPECT_TEXT(L"a  b", joined("a" + NUL + NUL + "b" + NUL));
    EXPECT_TEXT(L"b", joined(NUL + "b" + NUL)) << "an empty one in front";
    EXPECT_TEXT(std::wstring(L"\xE9\0 b", 4), joined(E_ACUTE + NUL + "b" + NUL));
    EXPECT_TEXT(L"a  b", joined("a" + NUL + "\xFF" + NUL + "b" + NUL)) << "no character";
    EXPECT_TEXT(L"x " + std::wstring(45, L'a') + L" \"b c\"",
                joined("x" + NUL + std::string(300, 'a') + NUL + "b c" + NUL))
        << "cut wrongly behind 255 bytes";
}

TEST(ScriptedEnvironment, SplitsEntriesAtTheirEnds) {
    auto const entry = [](std::string const& file) {
        Script const script({file});
        Texts entries(2);
        EXPECT_CODE(PERR_OK, PProcess::getEnvironment(1, entries));
        return entries.size() == 1 ? entries[0] : PString();
    };
    std::string const block(127, 'a');  // but for one byte
    ASSERT_NE(nullptr, setlocale(LC_CTYPE, "C.UTF-8"));
    EXPECT_TEXT(L"A=1", entry("A=1" + NUL + "B=2")) << "the last has no end";
    EXPECT_TEXT(L"A=x", entry("A=\xFFx" + NUL));
    EXPECT_TEXT(wide(block) + L"bcd", entry(block + "bcd" + NUL));
    EXPECT_TEXT(wide(block) + L"x", entry(block + E_ACUTE + "x" + NUL)) << "across two blocks";
}

TEST(ScriptedMachine, FreeMemoryIsTheSumOfThreeLines) {
    Script const script({"MemFree: 4294967295\nSwapCached: 64\nBuffers: 1\nCached: 4\n"});
    unsigned long long bytes = 7;
    EXPECT_CODE(PERR_OK, PProcess::getFreeMemory(bytes));
    EXPECT_EQ(4'294'967'300ULL * 1024, bytes);
}

TEST(ScriptedUser, IsRootUnlessALineHoldsTheKeyInSmallLetters) {
    auto const user = [](std::string const& status) {
        Script const script({status + "a:x:17:71:\n:b:x:5:7:\nc:x:7:7:\n"});  // both files
        PString name(L"kept", 4);
        EXPECT_CODE(PERR_OK, PProcess::getUserName(1, name));
        return name;
    };
    EXPECT_TEXT(L"root", user("Name:\tx\nUid:\t7\t7\n"));
    EXPECT_TEXT(L"a", user("Name:\tx\nuid:\t17\n"));
    EXPECT_TEXT(L"b", user("Name:\t7uid\n")) << "a group's number counts";
    EXPECT_TEXT(L"kept", user("uid:\t8\n"));
}
