// What a healthy system will not do: the definitions here win over those of the C library.
#include <algorithm>
#include <clocale>
#include <cstdio>
#include <functional>
#include <map>

#include <dlfcn.h>
#include <process/children.h>
#include <unistd.h>

#include "process/cpu_sampling.h"

namespace {

using Texts = std::vector<std::string>;
using Files = std::map<std::string, Texts>;

/// While one exists, pauses and signals are recorded instead of done, and its files stand in for
/// those of the system: each reads as its first text, and from each pause on as its next one;
/// without any it does not exist.
struct Script {
    explicit Script(Files const& given = {}) : files(given) {
        active = this;
        show();
    }
    ~Script() { active = nullptr; }

    void show() const {
        for (auto const& [path, texts] : files)
            if (!texts.empty())
                scratch.write(name(path), texts[std::min(calls.size(), texts.size() - 1)]);
    }

    static int record(std::string const& call, unsigned int argument) {
        active->calls.push_back(call + " " + std::to_string(argument));
        active->show();
        return 0;
    }

    static std::string standIn(char const* path) {
        bool const scripted = active != nullptr && active->files.contains(path);
        return scripted ? active->scratch.path(name(path)) : path;
    }

    static std::string name(std::string const& path) {
        return std::to_string(std::hash<std::string>()(path));
    }

    static inline Script* active = nullptr;
    Files const files;
    Texts calls;  ///< such as "sleep 1", "usleep 400000", "kill 4711 9"
    bool forkFails = false;
    Scratch scratch;
};

/// The system's function behind one of those below.
template <typename Function>
Function* _systems(Function*, char const* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

}  // namespace

extern "C" {
FILE* fopen(char const* path, char const* mode) {
    return _systems(&fopen, "fopen")(Script::standIn(path).c_str(), mode);
}
int scriptedOpen(char const* path, int flags, mode_t mode) __asm__("open");  // elsewhere variadic
int scriptedOpen(char const* path, int flags, mode_t mode) {
    return _systems(&scriptedOpen, "open")(Script::standIn(path).c_str(), flags, mode);
}
unsigned int sleep(unsigned int seconds) {
    return static_cast<unsigned int>(Script::record("sleep", seconds));
}
int usleep(useconds_t microseconds) {
    return Script::record("usleep", microseconds);
}
int kill(pid_t pid, int signal) noexcept {
    if (Script::active == nullptr) return _systems(&kill, "kill")(pid, signal);
    return Script::record("kill " + std::to_string(pid), signal);
}
pid_t fork() noexcept {
    bool const fails = Script::active != nullptr && Script::active->forkFails;
    return fails ? -1 : _systems(&fork, "fork")();
}
}

namespace {

/// A line of /proc/PID/stat with its two times and with `last` fields.
std::string _line(int user, int system, std::string const& name = "(x)", int last = 52) {
    std::string line = "1 " + name + " S 4 5 6 7 8 9 10 11 12 13 " + std::to_string(user) + " " +
                       std::to_string(system);
    for (int field = 16; field <= last; ++field) line += " " + std::to_string(field);
    return line;
}

constexpr Question _free = ask<unsigned long long, [](unsigned int, unsigned long long& bytes) {
    return PProcess::getFreeMemory(bytes);
}>;
constexpr Question _machine = ask<unsigned int, [](unsigned int, unsigned int& percent) {
    return PProcess::getCPUUsage(percent);
}>;
constexpr Question _process = ask<unsigned int, PProcess::getCPUUsage>;
constexpr Question _processor = ask<unsigned int, PProcess::getSpecCPUUsage>;

}  // namespace

TEST(Load, IsCountedBetweenTwoSamples) {
    std::string const zero = "cpu 0 0 0 0 0 0 0 0\n", block(2048, 'x');
    Texts const hundred{zero, "cpu 10 10 10 40 10 10 5 5\n"}, busy{_line(7, 9), _line(17, 14)};
    Texts const back{"cpu 0 0 0 99 0 0 0 0\n", "cpu 30 0 0 0 0 10 0 0\n"};
    struct {
        char const* what;
        Question ask;
        Texts machine, process;
        int code;
        char const* percent;
    } const rows[] = {
        {"cut", _machine, {"cpu  1 2 3 4 5 6 7 8 9", "cpu  2 2 4 5 5 6 7 8 9"}, {}, 0, "66"},
        {"nothing moved", _machine, {zero}, {}, 0, "0"},
        {"idle back", _machine, back, {}, 0, "75"},
        {"total back", _machine, {"cpu 0 0 0 0 0 0 0 1000", "cpu 5 0 0 0 0 0 0 0"}, {}, 0, "500"},
        {"32 bits wrap", _machine, {"cpu 0 0 0 0 0 0 0 42949873", "cpu 42949973"}, {}, 0, "300"},
        {"both times", _process, hundred, busy, 0, "15"},
        {"sum cut", _process, {zero, "cpu 8 0 0 0 0 0 0 0\n"}, {_line(0, 0), _line(1, 1)}, 0, "25"},
        {"idle back", _process, back, busy, 0, "37"},
        {"last byte lost", _process, {zero, "cpu 0 0 0 0 0 0 0 1009"}, busy, 0, "15"},
        {"second block", _process, {zero, block + hundred[1]}, busy, 0, "15"},
        {"nothing moved", _process, {zero}, busy, PERR_SYSTEM, "0"},
        {"space in the name", _process, hundred, {_line(0, 0, "(a b)")}, PERR_SYSTEM, "0"},
        {"ended meanwhile", _process, hundred, {_line(0, 0), ""}, PERR_END_OF_FILE, "0"},
        {"a counter missing", _process, {"cpu 1 2 3 4 5 6 7\n"}, busy, PERR_END_OF_FILE, "0"},
        {"no process", _process, hundred, {}, PERR_NO_SUCH_FILE, "0"},
        {"own line", _processor, {"cpu 9 9 9 9\ncpu1 0 0 0 0 5", "cpu1 1 1 1 6 9"}, {}, 0, "33"},
        {"second block", _processor, {block + "cpu1 0 0 0 0", block + "cpu1 1 0 0 3"}, {}, 0, "25"},
        {"across blocks", _processor, {block.substr(2) + "cpu1 0 0 0 0"}, {}, PERR_SYSTEM, "7"},
        {"idle back", _processor, {"cpu1 0 0 0 100", "cpu1 5 0 0 0"}, {}, 0, "500"},
        {"a number missing", _processor, {"cpu1 0 0 0"}, {}, PERR_SYSTEM, "7"},
        {"gone", _processor, {"cpu1 0 0 0 0", "cpu0 0 0 0 0"}, {}, PERR_SYSTEM, "7"},
    };
    for (auto const& row : rows) {
        Script const script({{"/proc/stat", row.machine}, {"/proc/1/stat", row.process}});
        EXPECT_EQ(Answer(row.code, row.percent), row.ask(1)) << row.what;
        Texts const pause{row.ask == _machine ? "sleep 1" : "usleep 400000"};
        EXPECT_TRUE(row.code != PERR_OK || script.calls == pause) << row.what;
    }
}

TEST(Load, ReadsTheRealTimePriorityIntoThePriority) {
    Script const script(Files{{"/proc/stat", {_line(14, 15)}}});
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
        {_free, "MemFree: 1\nSwapCached: 64\nCached: 4\nCached: 32\n", "5120"},
        {askLine, shift + zero + "b c" + zero + "end", std::string(45, 'a') + " \"b c\""},
        {askLine, acute + zero + "b" + zero, "<233><0> b"},
        {askEnvironment, "A=" + acute + "z" + zero + "LAST=1", "A=<233>z|"},
        {askEnvironment, block + acute + zero, block + "|"},  // not what lies across two blocks
        {askUser, "Name:\tx\nUid:\t7\t7\n" + accounts, "root"},
        {askUser, "Name:\tuid\n" + accounts, "root"},
        {askUser, "Name:\t7uid\n" + accounts, "b"},
        {askUser, "Name:\t8uid\n" + accounts, "kept"},
    };
    ASSERT_NE(nullptr, setlocale(LC_CTYPE, "C.UTF-8"));
    for (auto const& row : rows) {
        Texts const all{row.content};
        Script const script({{"/proc/1/status", all},
                             {"/proc/1/cmdline", all},
                             {"/proc/1/environ", all},
                             {"/proc/meminfo", all},
                             {"/etc/passwd", all}});
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
    Texts calls, ended;
    ASSERT_TRUE(eventually([&] {
        Script script;
        EXPECT_EQ(PERR_OK, PProcess::killTree(root.pid));
        calls = script.calls;
        return calls.size() == 4 * 6;
    }));
    std::string const pause = "usleep 1000000";
    for (std::size_t i = 0; i < calls.size(); i += 6) {
        std::string const pid = calls[i].substr(5, calls[i].rfind(' ') - 5);
        Answer const parent = askParent(static_cast<unsigned int>(std::stoul(pid)));
        EXPECT_TRUE(i == 0 || std::count(ended.begin(), ended.end(), parent.second)) << i;
        EXPECT_EQ(Texts(calls.begin() + i, calls.begin() + i + 6),
                  (Texts{"kill " + pid + " 15", pause, pause, pause, "kill " + pid + " 9", pause}));
        ended.push_back(pid);
    }
    for (std::string const& pid : ended) EXPECT_EQ(0, ::kill(std::stoi(pid), SIGKILL));
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
