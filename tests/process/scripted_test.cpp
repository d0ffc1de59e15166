// What a healthy system will not do: files of the system that hold what none of today writes, forks
// that fail, and pauses that are over at once.
#include <clocale>

#include <faults/interpose.h>
#include <process/children.h>

#include "process/cpu_sampling.h"

namespace {

using Strings = std::vector<std::string>;

/// While one exists, pauses and signals are recorded instead of done and forks fail. Where contents
/// are given, the first one stands in every file that is opened, and from each pause on the next.
class Script {
public:
    explicit Script(Strings given = {}) : contents(std::move(given)) {
        showNext();
        active = this;
    }
    Script(Script const&) = delete;
    ~Script() { active = nullptr; }

    /// What was recorded: "sleep 1", "usleep 400000", "kill 4711 9".
    Strings const& calls() const { return recorded; }

    int record(std::string const& call, long argument) {
        recorded.push_back(call + " " + std::to_string(static_cast<int>(argument)));
        showNext();
        return 0;
    }
    long path(long real) const {
        return contents.empty() ? real : reinterpret_cast<long>(file.c_str());
    }

    inline static Script* active = nullptr;

private:
    void showNext() {
        if (shown < contents.size()) (void)scratch.write("file", contents[shown++]);
    }

    Strings contents, recorded;
    std::size_t shown = 0;
    Scratch scratch;
    std::string file = scratch.path("file");
};

// clang-format off
INTERPOSE(fopen, if (Script::active) a = Script::active->path(a))
INTERPOSE(open, if (Script::active) a = Script::active->path(a))
INTERPOSE(sleep, if (Script::active) return Script::active->record("sleep", a))
INTERPOSE(usleep, if (Script::active) return Script::active->record("usleep", a))
INTERPOSE(kill, if (Script::active) return Script::active->record("kill " + std::to_string(int(a)), b);
          if (int(a) <= 0) return -1)  // never the processes of others
INTERPOSE(fork, if (Script::active) return -1)
INTERPOSE(getpriority, if (Script::active) return -1)
// clang-format on

std::string const NUL(1, '\0');
std::string const E_ACUTE = "\xC3\xA9";

/// The file of a process for who reads its first block, and of the machine for who seeks on.
std::string _bothFiles(int user, int system, std::string const& machine) {
    std::string block = "1 (x) S 4 5 6 7 8 9 10 11 12 13 ";
    block += std::to_string(user) + " " + std::to_string(system);
    for (int field = 16; field <= 52; ++field) block += " " + std::to_string(field);
    block.resize(1024, ' ');
    return block + machine;
}

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
    EXPECT_EQ(5120ULL, bytes(std::string(255, 'x') + "VmRSS: 5\nVmRSS: 6"));
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

TEST(ScriptedPriority, OfMinusOneIsNoFailure) {
    Script const script;
    int priority = 7;
    EXPECT_CODE(PERR_OK, PProcess::getPriority(1, priority));
    EXPECT_EQ(-1, priority);
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
    std::string const cut = std::string(300, 'a') + NUL + "b c" + NUL + std::string(250, 'd') + NUL;
    EXPECT_TEXT(L"x " + std::wstring(45, L'a') + L" \"b c\" ", joined("x" + NUL + cut))
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

TEST(LoadOfTheMachine, IsCountedBetweenTwoSamplesASecondApart) {
    auto const load = [](char const* before, char const* after) {
        std::string const others(8000, '\n');  // more lines than are read with the first
        Script const script({before + others, after + others});
        unsigned int percent = 7;
        EXPECT_CODE(PERR_OK, PProcess::getCPUUsage(percent));
        EXPECT_EQ(Strings{"sleep 1"}, script.calls());
        return percent;
    };
    EXPECT_EQ(50U, load("cpu 1 1 1 1", "cpu 2 2 1 3")) << "user and nice time";
    EXPECT_EQ(20U, load("cpu 1 1 1 1 1 1 1 1", "cpu 1 1 2 1 2 2 2 2"))
        << "waits and interrupts are not busy";
    EXPECT_EQ(75U, load("cpu 0 0 0 99", "cpu 3 0 0 0 0 1")) << "idle time ran back";
    EXPECT_EQ(0U, load("cpu 0", "cpu 42949973")) << "busy time wraps at 32 bits";
}

TEST(LoadOfAProcess, IsItsShareOfTheMachine) {
    auto const load = [](int user, int system, char const* before, char const* after) {
        Script const script({_bothFiles(7, 9, before), _bothFiles(7 + user, 9 + system, after)});
        unsigned int percent = 7;
        EXPECT_CODE(PERR_OK, PProcess::getCPUUsage(1, percent));
        EXPECT_EQ(Strings{"usleep 400000"}, script.calls());
        return percent;
    };
    EXPECT_EQ(37U, load(10, 5, "cpu 0 0 0 0 0 0 0 0 ", "cpu 40 0 0 0 0 0 0 0 "));
    EXPECT_EQ(15U, load(10, 5, "cpu 0 0 0 0 0 0 0 0 ", "cpu 0 0 0 0 0 0 0 1009"))
        << "the last byte read is lost";
}

TEST(LoadOfAProcessor, IsCountedFromItsLine) {
    std::string const filling(2048, 'x');
    unsigned int percent = 7;
    auto const load = [&](Strings const& samples) {
        Script const script(samples);
        EXPECT_CODE(PERR_OK, PProcess::getSpecCPUUsage(1, percent));
        EXPECT_EQ(Strings{"usleep 400000"}, script.calls());
        return percent;
    };
    EXPECT_EQ(50U, load({"cpu1 5 6 7 8", "cpu1 6 8 8 12"})) << "all but the fourth is busy";
    EXPECT_EQ(500U, load({"cpu1 0 0 0 100", "cpu1 5 0 0 0"})) << "idle time ran back";
    EXPECT_EQ(25U, load({filling + "cpu1 0 0 0 0", filling + "cpu1 1 0 0 3"}));
    EXPECT_EQ(50U, load({"cpu10 0 0 0 0", "cpu10 1 0 0 1"})) << "another that begins alike";
    Script const script({"cpu1 0 0 0 0", "cpu0 0 0 0 0"});
    EXPECT_CODE(PERR_SYSTEM, PProcess::getSpecCPUUsage(1, percent)) << "gone meanwhile";
}

TEST(LoadSampling, PauseComesFromTheEnvironmentAsItWasFirstRead) {
    ChildRun reader([] {
        (void)setenv("TALV_PROC_SAMPLE_TIME_MS", "4294967297", 1);
        bool const first = _getSampleTime() == 1;
        (void)setenv("TALV_PROC_SAMPLE_TIME_MS", "7", 1);
        return first && _getSampleTime() == 1 ? 0 : 1;
    });
    EXPECT_EQ(0, reader.wait());
}

TEST(ScriptedPauses, AWaitIsDividedIntoTenthsOfASecondAtLeast) {
    Child child;
    auto const expectPauses = [&](unsigned int milliseconds, Strings const& expected) {
        Script const byId;
        EXPECT_TRUE(PProcess::waitFinish(child.pid, milliseconds));
        EXPECT_EQ(expected, byId.calls());
        Script const byObject;
        EXPECT_TRUE(child.process.waitFinish(milliseconds));
        EXPECT_EQ(expected, byObject.calls());
    };
    expectPauses(999, {});
    expectPauses(1999, {"usleep 1000000"});
    expectPauses(20009, Strings(10, "usleep 2000000"));
}

TEST(ScriptedPauses, ASignalIsFollowedByASecond) {
    Child child;
    std::string const kill = "kill " + std::to_string(child.pid), pause = "usleep 1000000";
    Script const script;
    EXPECT_CODE(PERR_OK, PProcess::killSignal(child.pid, SIGUSR1));
    EXPECT_CODE(PERR_OK, PProcess::kill(child.pid));
    EXPECT_CODE(PERR_OK, child.process.kill());
    EXPECT_EQ((Strings{kill + " 10", pause, kill + " 15", pause, kill + " 9", pause}),
              script.calls());
}

TEST(ScriptedPauses, KillTreeEndsParentsBeforeTheirChildren) {
    Child const root(shell("tail -s 0.1 --pid=$$ -f /dev/null; :"), "/bin/sh");
    Ids children;
    ASSERT_TRUE(eventually([&] { return PProcess::getChildPID(root.pid, children) == PERR_OK; }));
    std::string const pause = "usleep 1000000";
    Strings expected;
    for (unsigned int const pid : {root.pid, children[0]}) {
        std::string const kill = "kill " + std::to_string(pid);
        for (auto const& call : {kill + " 15", pause, pause, pause, kill + " 9", pause})
            expected.push_back(call);
    }
    Script const script;
    EXPECT_CODE(PERR_OK, PProcess::killTree(root.pid));
    EXPECT_EQ(expected, script.calls());
}

TEST(ScriptedFork, LeavesAnIdThatIsNeverSignalledWhereItFails) {
    Script const script;
    PProcess process(L"/bin/true", L"");
    unsigned int pid = 7;
    EXPECT_CODE(PERR_OK, process.start());
    EXPECT_CODE(PERR_NO_PROCESS, process.getPID(pid));
    EXPECT_EQ(7U, pid);
    EXPECT_CODE(PERR_OK, process.kill());
    EXPECT_EQ(Strings(), script.calls());
}
