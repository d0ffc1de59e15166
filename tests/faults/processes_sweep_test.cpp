#include <clocale>

#include <faults/sweep.h>
#include <process/children.h>

namespace {

unsigned int const self = PProcess::getCurrentPID();

/// Whatever else fails later on: where memory was the first to run out, the code says so.
void _expectMemoryIsTold(int code) {
    EXPECT_TRUE(!memoryRanOut() || code == PERR_NO_MEMORY) << "gave " << codeName(code);
}

void _collectAll() {
    while (waitpid(-1, nullptr, 0) > 0) continue;
}

}  // namespace

TEST(ProcessesSweep, TextsAreWholeOrCleared) {
    struct {
        char const* name;
        int (*ask)(unsigned int, PString&);
    } const rows[] = {
        {"getName", PProcess::getName},
        {"getPath", PProcess::getPath},
        {"getWorkingDir", PProcess::getWorkingDir},
    };
    for (auto const& row : rows) {
        PString whole, text;
        ASSERT_CODE(PERR_OK, row.ask(self, whole));
        auto const ask = [&] { return row.ask(self, text); };
        auto const before = [&] { text = L"kept"; };
        auto const look = [&](int code) {
            _expectMemoryIsTold(code);
            EXPECT_EQ(code == PERR_OK, text == whole);
            EXPECT_TRUE(code != PERR_NO_MEMORY || text.len() == 0);
        };
        sweep({row.name, {PERR_NOT_FOUND, PERR_NO_MEMORY}, ask, before, look});
    }
}

TEST(ProcessesSweep, EnvironmentLosesNoCharacterForLackOfMemory) {
    ASSERT_NE(nullptr, setlocale(LC_CTYPE, "C.UTF-8"));
    (void)setenv("PLT", "\xC3\xA9\xC3\xA9", 1);
    Child const child;
    Texts entries, whole;
    ASSERT_CODE(PERR_OK, PProcess::getEnvironment(child.pid, whole));
    auto const ask = [&] { return PProcess::getEnvironment(child.pid, entries); };
    auto const before = [&] { entries = Texts(1); };
    auto const look = [&](int code) {
        _expectMemoryIsTold(code);
        ASSERT_LE(entries.size(), whole.size());
        for (std::size_t i = 0; i < entries.size(); ++i) EXPECT_TEXT(view(whole[i]), entries[i]);
    };
    sweep({"getEnvironment", {PERR_NOT_FOUND, PERR_NO_MEMORY}, ask, before, look});
}

TEST(ProcessesSweep, LoadsWithoutTheirFileAreRefused) {
    unsigned int machine = 7, processor = 7;
    auto const askMachine = [&] { return PProcess::getCPUUsage(machine); };
    auto const askProcessor = [&] { return PProcess::getSpecCPUUsage(0, processor); };
    EXPECT_CODE(PERR_IO, runFailing(1, true, askMachine));
    EXPECT_EQ(0U, machine);
    EXPECT_CODE(PERR_OPEN, runFailing(1, true, askProcessor));
    EXPECT_EQ(7U, processor);
}

TEST(ProcessesSweep, AStartedProgramGetsAllThatIsMeantForItOrNeverRuns) {
    Scratch const scratch;
    Texts const added{owned("PLT_ADDED=a-value-that-takes-memory")};
    std::string const script = scratch.write("script", "echo $# $PLT_ADDED >$0.out");
    PString const arguments = owned(script + " a b");
    auto const run = [&] {
        int exitCode = 0;
        PProcess process(L"/bin/sh", arguments, L"/", added);
        int const code = firstFailure({process.start(), process.waitExitCode(exitCode)});
        // The child makes its calls behind the fork: with as many here each gets its turn.
        for (int i = 0; i < 40; ++i) (void)access("/", F_OK);
        return code;
    };
    auto const look = [&](int) {
        _collectAll();
        std::string const said = scratch.read("script.out");
        EXPECT_TRUE(said.empty() || said == "2 a-value-that-takes-memory\n") << said;
        (void)std::filesystem::remove(script + ".out");
    };
    std::set<int> const codes{PERR_NO_PROCESS, PERR_SYSTEM, PERR_NO_MEMORY, PERR_NOT_FOUND};
    sweep({"start, waitExitCode", codes, run, [] {}, look});
}

TEST(ProcessesSweep, AShortcutHoldsNothingWhateverFails) {
    unsigned int pid = 0;
    auto const start = [&] { return PProcess::start(L"/bin/sleep", L"60", pid); };
    auto const before = [&] { pid = 0; };
    auto const look = [&](int code) {
        EXPECT_EQ(code == PERR_OK, pid != 0);
        if (pid != 0) (void)::kill(static_cast<pid_t>(pid), SIGKILL);
        _collectAll();
    };
    std::set<int> const codes{PERR_NO_PROCESS, PERR_NO_MEMORY, PERR_NOT_FOUND};
    sweep({"static start", codes, start, before, look});
}

TEST(ProcessesSweep, ListsTellThatMemoryRanOut) {
    PString first;
    Ids ids, parents;
    ASSERT_CODE(PERR_OK, PProcess::getName(1, first));
    std::function<int()> const lists[] = {
        [&] { return PProcess::listPIDs(ids); },
        [&] { return PProcess::find(first, ids, parents); },
    };
    for (auto const& list : lists) {
        int failures = 0;
        for (int n = 1; n <= 200; ++n) {  // then more of the same follows
            Ids().swap(ids);              // no room is kept either
            Ids().swap(parents);
            _expectMemoryIsTold(runFailing(n, false, list));
            EXPECT_TRUE(parents.size() == ids.size() || parents.empty());
            failures += memoryRanOut() ? 1 : 0;
        }
        EXPECT_GT(failures, 0);
    }
}
