// What a healthy system will not do: the definitions here win over those of the C library.
#include <algorithm>
#include <clocale>

#include <faults/interpose.h>
#include <process/children.h>
#include <unistd.h>

#include "process/cpu_sampling.h"

namespace {

using Texts = std::vector<std::string>;

/// While one exists, pauses and signals are recorded instead of done, and its texts, where it has
/// any, stand in for the files of the system: for /proc/stat the ones, for all others the others.
/// Each file reads as its first text, and from each pause on as its next one.
struct Script {
    explicit Script(Texts machine = {}, Texts process = {}) : texts{machine, process} {
        active = this;
        show();
    }
    ~Script() { active = nullptr; }

    void show() const {
        for (int const i : {0, 1})
            if (!texts[i].empty())
                scratch.write(std::to_string(i),
                              texts[i][std::min(calls.size(), texts[i].size() - 1)]);
    }

    static int record(std::string const& call, long argument) {
        active->calls.push_back(call + " " + std::to_string(static_cast<int>(argument)));
        active->show();
        return 0;
    }

    static std::string standIn(std::string const& path) {
        bool const any = active && active->texts[0].size() + active->texts[1].size() > 0;
        return any ? active->scratch.path(path == "/proc/stat" ? "0" : "1") : path;
    }

    static inline Script* active = nullptr;
    Texts const texts[2];
    Texts calls;  ///< such as "sleep 1", "usleep 400000", "kill 4711 9"
    bool forkFails = false;
    Scratch scratch;
};

}  // namespace

// clang-format off
#define STAND_IN(name) INTERPOSE(name, auto const path = Script::standIn(reinterpret_cast<char*>(a)); \
                                 a = reinterpret_cast<long>(path.c_str()))
STAND_IN(fopen)
STAND_IN(open)
INTERPOSE(sleep, return Script::record("sleep", a))
INTERPOSE(usleep, return Script::record("usleep", a))
INTERPOSE(kill, if (Script::active) return Script::record("kill " + std::to_string(int(a)), b);
          if (int(a) <= 0) return -1)  // never the processes of others
INTERPOSE(fork, if (Script::active && Script::active->forkFails) return -1)
// clang-format on

namespace {

/// A line of /proc/PID/stat with its two times and all fields.
std::string _line(int user, int system, std::string const& name = "(x)") {
    std::string line = "1 " + name + " S 4 5 6 7 8 9 10 11 12 13 " + std::to_string(user) + " " +
                       std::to_string(system);
    for (int field = 16; field <= 52; ++field) line += " " + std::to_string(field);
    return line;
}

}  // namespace

TEST(Load, IsCountedBetweenTwoSamples) {
    std::string const zero = "cpu 0 0 0 0 0 0 0 0\n", block(2048, 'x');
    Texts const hundred{zero, "cpu 10 10 10 40 10 10 5 5\n"}, busy{_line(7, 9), _line(17, 14)};
    Texts const back{"cpu 0 0 0 99 0 0 0 0\n", "cpu 30 0 0 0 0 10 0 0\n"};
    Question const all = askMachineLoad, one = askProcessorLoad, process = askLoad;
    struct {
        char const* what;
        Question ask;
        std::string percent;
        Texts machine, process = {};
        int code = PERR_OK;
    } const rows[] = {
        {"cut", all, "66", {"cpu  1 2 3 4 5 6 7 8 9", "cpu  1 3 4 5 5 6 7 8 9"}},
        {"nothing moved", all, "0", {zero}},
        {"idle back", all, "75", back},
        {"total back", all, "500", {"cpu 0 0 0 0 0 0 0 1000", "cpu 5 0 0 0 0 0 0 0"}},
        {"32 bits wrap", all, "300", {"cpu 0 0 0 0 0 0 0 42949873", "cpu 42949973"}},
        {"both times", process, "15", hundred, busy},
        {"sum cut", process, "25", {zero, "cpu 8 0 0 0 0 0 0 0\n"}, {_line(0, 0), _line(1, 1)}},
        {"idle back", process, "37", back, busy},
        {"last byte lost", process, "15", {zero, "cpu 0 0 0 0 0 0 0 1009"}, busy},
        {"second block", process, "15", {zero, block + hundred[1]}, busy},
        {"nothing moved", process, "0", {zero}, busy, PERR_SYSTEM},
        {"space in the name", process, "0", hundred, {_line(0, 0, "(a b)")}, PERR_SYSTEM},
        {"ended meanwhile", process, "0", hundred, {_line(0, 0), ""}, PERR_END_OF_FILE},
        {"a counter missing", process, "0", {"cpu 1 2 3 4 5 6 7\n"}, busy, PERR_END_OF_FILE},
        {"no process", process, "0", hundred, {}, PERR_NO_SUCH_FILE},
        {"own line", one, "33", {"cpu 9 9 9 9\ncpu1 0 0 0 0 5", "cpu1 1 1 1 6 9"}},
        {"second block", one, "25", {block + "cpu1 0 0 0 0", block + "cpu1 1 0 0 3"}},
        {"across blocks", one, "7", {block.substr(2) + "cpu1 0 0 0 0"}, {}, PERR_SYSTEM},
        {"idle back", one, "500", {"cpu1 0 0 0 100", "cpu1 5 0 0 0"}},
        {"a number missing", one, "7", {"cpu1 0 0 0"}, {}, PERR_SYSTEM},
        {"gone", one, "7", {"cpu1 0 0 0 0", "cpu0 0 0 0 0"}, {}, PERR_SYSTEM},
    };
    for (auto const& row : rows) {
        Script const script(row.machine, row.process);
        EXPECT_EQ(Answer(row.code, row.percent), row.ask(1)) << row.what;
        Texts const pause{row.ask == all ? "sleep 1" : "usleep 400000"};
        EXPECT_TRUE(row.code != PERR_OK || script.calls == pause) << row.what;
    }
}

TEST(Load, ReadsTheRealTimePriorityIntoThePriority) {
    Script const script({_line(14, 15)});
    PFile file;
    proc_stat r;
    ASSERT_EQ(PERR_OK, file.popen(L"/proc/stat", PFile::OPEN_READ, 1));
    EXPECT_EQ(PERR_OK, _readProcStat(file, 0, &r));
    EXPECT_EQ(14 + 15 + 22 + 35U, r.utime + r.stime + r.starttime + r.wchan) << r.comm;
    EXPECT_TRUE(r.priority == 40 && r.rt_priority == 0 && r.policy == 41);
}

TEST(Load, PauseComesFromTheEnvironment) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");  // a program each: the first answer is kept
    for (auto const& [setting, pause] :
         {std::pair("x", 400), {"0", 400}, {"abc", 400}, {"1500", 1500}, {"4294967297", 1}})
        EXPECT_EXIT((setenv("TALV_PROC_SAMPLE_TIME_MS", setting, 1),
                     std::exit(_getSampleTime() == static_cast<unsigned int>(pause) ? 0 : 1)),
                    testing::ExitedWithCode(0), "")
            << setting;
}

TEST(ProcessFacts, ComeFromLinesReadInPiecesUnderTheLocale) {
    std::string const acute = "\xC3\xA9", zero(1, '\0'), shift(300, 'a'), block(127, 'a');
    std::string const noise = "Name:\tVmRSS: 5 State: Z\n VmRSS: 6\n", piece(255, 'x');
    std::string const accounts = "a:x:17:71:\nb:x:5:7:\nc:x:7:7:\n";
    struct {
        Question ask;
        std::string content, value;  // of every file; what it tells
        int code = PERR_OK;
    } const rows[] = {
        {askMemory, noise + "VmRSS:\t  7 kB\n", "7168"},
        {askMemory, piece + "VmRSS: 5\nVmRSS: 6", "5120"},
        {askMemory, "VmRSS: 4294967295 kB\n", "4398046510080"},
        {askMemory, noise, "7", PERR_NOT_FOUND},
        {askParent, noise, "0", PERR_NOT_FOUND},
        {askRunning, noise, "1"},
        {askRunning, piece + "State:\tZ (zombie)\n", "0"},
        {askName, "Name:\t" + acute + " \n", "<233>"},
        {askFree, "MemFree: 1\nSwapCached: 64\nCached: 4\nCached: 32\n", "5120"},
        {askLine, "x" + zero + shift + zero + "b c" + zero, "x " + shift.substr(255) + " \"b c\""},
        {askLine, acute + zero + "b" + zero, "<233><0> b"},
        {askLine, "a" + zero + "\xFF" + zero + "b" + zero, "a  b"},  // what cannot be converted
        {askEnvironment, "A=" + acute + "z" + zero + "LAST=1", "A=<233>z|"},
        {askEnvironment, block + acute + zero, block + "|"},  // not what lies across two blocks
        {askUser, "Name:\tx\nUid:\t7\t7\n" + accounts, "root"},
        {askUser, "Name:\tuid\n" + accounts, "root"},
        {askUser, "Name:\t7uid\n" + accounts, "b"},
        {askUser, "Name:\t8uid\n" + accounts, "kept"},
    };
    ASSERT_NE(nullptr, setlocale(LC_CTYPE, "C.UTF-8"));
    for (auto const& row : rows) {
        Script const script({}, {row.content});
        EXPECT_EQ(Answer(row.code, row.value), row.ask(1)) << row.content;
    }
    (void)setlocale(LC_CTYPE, "C");
}

TEST(ProcessWaiting, IsDividedIntoStepsOfATenthButASecondAtLeast) {
    Child child;
    for (auto const& [timeout, sleeps] : {std::pair(999U, Texts()),
                                          {1999, Texts(1, "usleep 1000000")},
                                          {5000, Texts(5, "usleep 1000000")},
                                          {20009, Texts(10, "usleep 2000000")}}) {
        Script script;
        EXPECT_TRUE(PProcess::waitFinish(child.pid, timeout));
        EXPECT_EQ(sleeps, std::exchange(script.calls, {}));
        EXPECT_TRUE(child.process.waitFinish(timeout));
        EXPECT_EQ(sleeps, script.calls);
    }
}

TEST(ProcessEnding, KillTreeEndsParentsBeforeTheirChildren) {
    Child const root(shell("sh -c 'sleep 60; :' & sleep 60; :"), "/bin/sh");
    Texts calls, ended{askParent(root.pid).second};
    ASSERT_TRUE(eventually([&] {
        Script script;
        EXPECT_EQ(PERR_OK, PProcess::killTree(root.pid));
        calls = script.calls;
        return calls.size() == 4 * 6;
    }));
    std::string const pause = "usleep 1000000";
    for (auto call = calls.begin(); call != calls.end(); call += 6) {
        std::string const pid = call->substr(5, call->rfind(' ') - 5), kill = "kill " + pid;
        EXPECT_EQ(1, std::count(ended.begin(), ended.end(), askParent(std::stoi(pid)).second));
        EXPECT_EQ(Texts(call, call + 6),
                  (Texts{kill + " 15", pause, pause, pause, kill + " 9", pause}));
        ended.push_back(pid);
    }
    for (std::size_t i = 1; i < ended.size(); ++i) (void)::kill(std::stoi(ended[i]), SIGKILL);
}

TEST(ProcessStart, AFailedForkLeavesAnIdThatIsNeverSignalled) {
    Script script;
    script.forkFails = true;
    PProcess process(L"/bin/true", L"");
    PString kept;
    unsigned int pid = 7;
    EXPECT_EQ(PERR_OK, process.start());
    EXPECT_EQ(PERR_OK, process.getCmdLine(kept)) << "an id, though not of a process";
    EXPECT_EQ(PERR_NO_PROCESS, process.getPID(pid));
    EXPECT_EQ(PERR_NO_PROCESS, PProcess::start(L"/bin/true", L"", pid));
    EXPECT_EQ(7U, pid);
    EXPECT_EQ(PERR_OK, process.kill());
    EXPECT_EQ(Texts(), script.calls);
}
