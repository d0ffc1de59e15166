// What a healthy system will not do: the definitions here win over those of the C library.
#include <clocale>

#include <faults/interpose.h>
#include <process/children.h>

#include "process/cpu_sampling.h"

namespace {

using Strings = std::vector<std::string>;

/// While one exists, pauses and signals are recorded instead of done, forks fail, and its texts, if
/// it has any, stand in for every file: the first one, and from each pause on the next one.
struct Script {
    explicit Script(Strings given = {}) : texts(std::move(given)) {
        active = this;
        show();
    }
    ~Script() { active = nullptr; }

    void show() const {
        if (calls.size() < texts.size()) (void)scratch.write("file", texts[calls.size()]);
    }

    static int record(std::string const& call, long argument) {
        active->calls.push_back(call + " " + std::to_string(static_cast<int>(argument)));
        active->show();
        return 0;
    }

    static long standIn(long path) {
        return active && !active->texts.empty() ? reinterpret_cast<long>(active->file.c_str())
                                                : path;
    }

    static inline Script* active = nullptr;
    Strings const texts;
    Strings calls;  ///< such as "sleep 1", "usleep 400000", "kill 4711 9"
    Scratch scratch;
    std::string const file = scratch.path("file");
};

}  // namespace

// clang-format off
INTERPOSE(fopen, a = Script::standIn(a))
INTERPOSE(open, a = Script::standIn(a))
INTERPOSE(sleep, return Script::record("sleep", a))
INTERPOSE(usleep, return Script::record("usleep", a))
INTERPOSE(kill, if (Script::active) return Script::record("kill " + std::to_string(int(a)), b);
          if (int(a) <= 0) return -1)  // never the processes of others
INTERPOSE(fork, if (Script::active) return -1)
// clang-format on

namespace {

/// A file that is a process's for who reads its first block, and the machine's for who seeks.
std::string _both(int user, int system, std::string const& machine, char const* name = "(x)") {
    std::string block = std::string("1 ") + name + " S 4 5 6 7 8 9 10 11 12 13 ";
    block += std::to_string(user) + " " + std::to_string(system);
    for (int field = 16; field <= 52; ++field) block += " " + std::to_string(field);
    block.resize(1024, ' ');
    return block + machine;
}

}  // namespace

TEST(Load, PauseComesFromTheEnvironmentAsItWasFirstRead) {
    for (auto const& [setting, pause] :
         {std::pair("x", 400U), {"0", 400U}, {"1500", 1500U}, {"4294967297", 1U}}) {
        auto const asked = [&] { return _getSampleTime() == pause ? 0 : 1; };
        (void)setenv("TALV_PROC_SAMPLE_TIME_MS", setting, 1);
        EXPECT_EQ(ChildRun(asked).wait(), 0) << setting;
    }
    (void)unsetenv("TALV_PROC_SAMPLE_TIME_MS");
}

TEST(Load, IsCountedBetweenTwoSamples) {
    std::string const zero = "cpu 0 0 0 0 0 0 0 0\n", block(2048, 'x'),
                      last = "cpu 0 0 0 0 0 0 0 1009";
    Strings const back{"cpu 0 0 0 99 0 0 0 0\n", "cpu 30 0 0 0 0 10 0 0\n"};
    struct {
        char const *what, *fact, *percent;
        Strings files;
        int code = PERR_OK;
    } const rows[] = {
        {"idle back", "getLoad", "75", back},
        {"32 bits wrap", "getLoad", "300", {"cpu 0 0 0 0 0 0 0 42949873", "cpu 42949973"}},
        {"idle back", "getCPUUsage", "37", {_both(7, 9, back[0]), _both(17, 14, back[1])}},
        {"last byte lost", "getCPUUsage", "15", {_both(7, 9, zero), _both(17, 14, last)}},
        {"nothing moved", "getCPUUsage", "0", {_both(7, 9, zero)}, PERR_SYSTEM},
        {"space in the name", "getCPUUsage", "0", {_both(0, 0, zero, "(a b)")}, PERR_SYSTEM},
        {"ended meanwhile", "getCPUUsage", "0", {_both(0, 0, zero), ""}, PERR_END_OF_FILE},
        {"one missing", "getCPUUsage", "0", {_both(0, 0, "cpu 1 2 3 4 5 6 7")}, PERR_END_OF_FILE},
        {"second block", "getSpecCPUUsage", "25", {block + "cpu1 0 0 0 0", block + "cpu1 1 0 0 3"}},
        {"across blocks", "getSpecCPUUsage", "7", {block.substr(2) + "cpu1 0 0 0 0"}, PERR_SYSTEM},
        {"idle back", "getSpecCPUUsage", "500", {"cpu1 0 0 0 100", "cpu1 5 0 0 0"}},
        {"a number missing", "getSpecCPUUsage", "7", {"cpu1 0 0 0"}, PERR_SYSTEM},
    };
    for (auto const& row : rows) {
        Script const script(row.files);
        EXPECT_EQ(Answer(row.code, row.percent), ask(row.fact, 1)) << row.what;
        Strings const pause{std::string("getLoad") == row.fact ? "sleep 1" : "usleep 400000"};
        EXPECT_TRUE(row.code != PERR_OK || script.calls == pause) << row.what;
    }
    Script const script({_both(14, 15, zero)});
    PFile file;
    proc_stat r;
    ASSERT_EQ(PERR_OK, file.popen(L"/proc/stat", PFile::OPEN_READ, 1));
    EXPECT_EQ(PERR_OK, _readProcStat(file, 0, &r));
    EXPECT_TRUE(r.priority == 40 && r.rt_priority == 0 && r.policy == 41) << r.priority;
}

TEST(ProcessFacts, ComeFromLinesReadInPiecesUnderTheLocale) {
    std::string const acute = "\xC3\xA9", zero(1, '\0'), shift(300, 'a'), block(127, 'a');
    std::string const noise = "Name:\tVmRSS: 5 State: Z\n VmRSS: 6\n", piece(255, 'x');
    std::string const accounts = "a:x:17:71:\nb:x:5:7:\nc:x:7:7:\n";
    struct {
        char const* fact;
        std::string content, value;  // of every file; what it tells
        int code = PERR_OK;
    } const rows[] = {
        {"getMemoryUsage", piece + "VmRSS: 5\nVmRSS: 6", "5120"},
        {"getMemoryUsage", noise + "VmRSS: 4294967295 kB\n", "4398046510080"},
        {"isRunning", piece + "State:\tZ (zombie)\n", "false"},
        {"getName", "Name:\t" + acute + " \n", acute},
        {"getFree", "MemFree: 1\nSwapCached: 64\nCached: 4\nCached: 32\n", "5120"},
        {"getCmdLine", "x" + zero + shift + zero + "b c" + zero,
         "x " + shift.substr(255) + " \"b c\""},
        {"getCmdLine", acute + zero + "b" + zero, acute + zero + " b"},
        {"getCmdLine", "a" + zero + "\xFF" + zero + "b" + zero, "a  b"},  // not to be converted
        {"getEnvironment", block + acute + zero + "LAST=1", "{ " + block + " }"},  // both lost
        {"getUser", "Name:\tx\nUid:\t7\t7\n" + accounts, "root"},
        {"getUser", "Name:\t7uid\n" + accounts, "b"},
        {"getUser", "Name:\t8uid\n" + accounts, "kept"},
    };
    ASSERT_NE(nullptr, setlocale(LC_CTYPE, "C.UTF-8"));
    for (auto const& row : rows) {
        Script const script({row.content});
        EXPECT_EQ(Answer(row.code, row.value), ask(row.fact, 1)) << row.content;
    }
}

TEST(ProcessWaiting, IsDividedIntoStepsOfATenthButASecondAtLeast) {
    Child child;
    for (auto const& [timeout, sleeps, pause] : {std::tuple(999U, 0, "usleep 1000000"),
                                                 {5000, 5, "usleep 1000000"},
                                                 {20009, 10, "usleep 2000000"}}) {
        Script const script;
        EXPECT_TRUE(PProcess::waitFinish(child.pid, timeout) && child.process.waitFinish(timeout));
        EXPECT_EQ(Strings(2 * sleeps, pause), script.calls) << timeout;
    }
}

TEST(ProcessEnding, KillTreeEndsParentsBeforeTheirChildren) {
    Child const root(shell("sh -c 'sleep 60; :'; :"), "/bin/sh");
    Ids ids{root.pid}, children;
    ASSERT_TRUE(eventually([&] {
        if (PProcess::getChildPID(ids.back(), children) == PERR_OK) ids.push_back(children[0]);
        return ids.size() == 3;
    }));
    Script script;
    EXPECT_EQ(PERR_OK, PProcess::killTree(root.pid));
    Strings expected, calls = std::move(script.calls);
    Script::active = nullptr;
    for (unsigned int const id : ids) {
        std::string const kill = "kill " + std::to_string(id), pause = "usleep 1000000";
        for (auto const& call : {kill + " 15", pause, pause, pause, kill + " 9", pause})
            expected.push_back(call);
        EXPECT_TRUE(Child::isOne(id) && ::kill(static_cast<int>(id), SIGKILL) == 0);
    }
    EXPECT_EQ(expected, calls);
}

TEST(ProcessStart, AFailedForkLeavesAnIdThatIsNeverSignalled) {
    Script script;
    PProcess process(L"/bin/true", L"");
    unsigned int pid = 7;
    EXPECT_EQ(PERR_OK, process.start());
    EXPECT_EQ(PERR_NO_PROCESS, process.getPID(pid));
    EXPECT_TRUE(PProcess::start(L"/bin/true", L"", pid) == PERR_NO_PROCESS && pid == 7);
    EXPECT_EQ(PERR_OK, process.kill());
    EXPECT_EQ(Strings(), script.calls);
}
