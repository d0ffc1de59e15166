#include <clocale>

#include <faults/sweep.h>
#include <process/children.h>

namespace {

unsigned int const self = PProcess::getCurrentPID();

/// Whatever else fails later on: where memory was the first to run out, the code says so.
void _expectMemoryIsTold(int code) {
    EXPECT_TRUE(!memoryRanOut() || code == PERR_NO_MEMORY) << "gave " << codeName(code);
}

/// A text is whole, empty without memory, and as `unreached` says where the system does not tell.
void _expectText(PString const& whole, wchar_t const* unreached, int code, PString const& text) {
    _expectMemoryIsTold(code);
    if (code == PERR_OK)
        EXPECT_TEXT(view(whole), text);
    else
        EXPECT_TEXT(code == PERR_NO_MEMORY ? L"" : unreached, text);
}

void _collectAll() {
    while (waitpid(-1, nullptr, 0) > 0) continue;
}

}  // namespace

TEST(ProcessesSweep, TextsAreWholeOrCleared) {
    std::set<int> const codes{PERR_NOT_FOUND, PERR_NO_MEMORY};
    PString text, name, path, folder;
    ASSERT_CODE(PERR_OK, PProcess::getName(self, name));
    ASSERT_CODE(PERR_OK, PProcess::getPath(self, path));
    ASSERT_CODE(PERR_OK, PProcess::getWorkingDir(self, folder));
    auto const before = [&] { text = L"kept"; };
    sweep({"getName", codes, [&] { return PProcess::getName(self, text); }, before,
           [&](int code) { _expectText(name, L"", code, text); }});
    sweep({"getPath", codes, [&] { return PProcess::getPath(self, text); }, before,
           [&](int code) { _expectText(path, L"kept", code, text); }});
    sweep({"getWorkingDir", codes, [&] { return PProcess::getWorkingDir(self, text); }, before,
           [&](int code) { _expectText(folder, L"kept", code, text); }});
}

TEST(ProcessesSweep, EnvironmentLosesNoCharacterForLackOfMemory) {
    ASSERT_NE(nullptr, setlocale(LC_CTYPE, "C.UTF-8"));
    PString entry;
    ASSERT_CODE(PERR_OK, entry.set("PLT=\xC3\xA9\xE3\x81\x82", 9));
    unsigned int pid = 0;
    Texts entries, whole;
    ASSERT_CODE(PERR_OK, PProcess::start(L"/bin/sleep", L"60", Texts{entry}, pid));
    ASSERT_TRUE(eventually([&] {
        if (PProcess::getEnvironment(pid, whole) != PERR_OK) return false;
        return !whole.empty() && whole.back() == L"PLT=\xE9\x3042";
    }));
    sweep({"getEnvironment",
           {PERR_NOT_FOUND, PERR_NO_MEMORY},
           [&] { return PProcess::getEnvironment(pid, entries); },
           [&] { entries = Texts(1); },
           [&](int code) {
               _expectMemoryIsTold(code);
               ASSERT_LE(entries.size(), whole.size());
               for (std::size_t i = 0; i < entries.size(); ++i)
                   EXPECT_TEXT(view(whole[i]), entries[i]);
           }});
    EXPECT_EQ(0, ::kill(static_cast<pid_t>(pid), SIGKILL));
    _collectAll();
}

TEST(ProcessesSweep, NumbersAreGivenOrCleared) {
    unsigned int parent = 0, percent = 0;
    unsigned long long memory = 0;
    sweep({"getParentPID",
           {PERR_NOT_FOUND},
           [&] { return PProcess::getParentPID(self, parent); },
           [&] { parent = 7; },
           [&](int code) { EXPECT_EQ(code != PERR_OK, parent == 0); }});
    sweep({"getMemoryUsage",
           {PERR_NOT_FOUND, PERR_NO_PROCESS},
           [&] { return PProcess::getMemoryUsage(self, memory); },
           [&] { memory = 7; },
           [&](int code) { EXPECT_EQ(code != PERR_OK, memory == 7); }});
    sweep({"getCPUUsage of the machine",
           {PERR_IO},
           [&] { return PProcess::getCPUUsage(percent); },
           [&] { percent = 7; },
           [&](int code) { EXPECT_TRUE(code == PERR_OK || percent == 0); }});
    sweep({"getSpecCPUUsage",
           {PERR_OPEN, PERR_SYSTEM},
           [&] { return PProcess::getSpecCPUUsage(0, percent); },
           [&] { percent = 7; },
           [&](int code) { EXPECT_TRUE(code == PERR_OK || percent == 7); }});
}

TEST(ProcessesSweep, AStartedProgramGetsAllThatIsMeantForItOrNeverRuns) {
    Scratch const scratch;
    std::string const report = scratch.path("report");
    Texts const added{owned("PLT_ADDED=a-value-that-takes-memory")};
    PString const arguments =
        owned(scratch.write("script", "echo $# $PLT_ADDED >" + report) + " a b");
    sweep({"start, waitExitCode",
           {PERR_NO_PROCESS, PERR_SYSTEM, PERR_NO_MEMORY, PERR_NOT_FOUND},
           [&] {
               int exitCode = 0;
               PProcess process(L"/bin/sh", arguments, L"/", added);
               int const code = firstFailure({process.start(), process.waitExitCode(exitCode)});
               // The child makes its calls behind the fork: with as many here each gets its turn.
               for (int i = 0; i < 40; ++i) (void)access("/", F_OK);
               return code;
           },
           [&] {
               _collectAll();
               (void)std::filesystem::remove(report);
           },
           [&](int) {
               _collectAll();
               std::string const ran = scratch.read("report");
               EXPECT_TRUE(ran.empty() || ran == "2 a-value-that-takes-memory\n") << ran;
           }});
}

TEST(ProcessesSweep, AShortcutHoldsNothingWhateverFails) {
    unsigned int pid = 0;
    sweep({"static start",
           {PERR_NO_PROCESS, PERR_NO_MEMORY, PERR_NOT_FOUND},
           [&] { return PProcess::start(L"/bin/sleep", L"60", pid); },
           [&] { pid = 0; },
           [&](int code) {
               EXPECT_EQ(code == PERR_OK, pid != 0);
               if (pid != 0) (void)::kill(static_cast<pid_t>(pid), SIGKILL);
               _collectAll();
           }});
}

TEST(ProcessesSweep, ListsTellThatMemoryRanOut) {
    Scratch const scratch;
    std::string const name = "a-name-that-is-cut-" + std::to_string(getpid());
    ASSERT_EQ(0, symlink("/bin/sleep", scratch.path(name).c_str()));
    Child const last(owned("60"), scratch.path(name));
    PString const wanted = owned(name);
    Ids ids, parents;
    for (auto const& [what, list] :
         {std::pair<char const*, std::function<int()>>("listPIDs",
                                                       [&] { return PProcess::listPIDs(ids); }),
          {"find", [&] { return PProcess::find(wanted, ids, parents); }}}) {
        EXPECT_CODE(PERR_OK, runFailing(-1, false, list));
        int const calls = watchedCalls();
        for (int n = calls - 40; n <= calls; ++n) {  // before them, more of the same
            SCOPED_TRACE(testing::Message() << what << ' ' << n);
            Ids().swap(ids);  // no room is kept either
            Ids().swap(parents);
            _expectMemoryIsTold(runFailing(n, false, list));
            EXPECT_TRUE(parents.size() == ids.size() || parents.empty());
        }
    }
}
