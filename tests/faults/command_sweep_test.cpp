// What a command is refused by the system: its code is a documented one, no child, descriptor or
// block is left, and the same object works afterwards.
#include <csignal>
#include <optional>

#include <faults/interpose.h>
#include <faults/sweep.h>
#include <portinglayer/commands.h>
#include <sys/syscall.h>
#include <sys/wait.h>

namespace {

std::set<int> const CODES{PERR_NO_MEMORY, PERR_SYSTEM, PERR_NO_SUCH_FILE, PERR_NOT_SUPPORTED,
                          PERR_REFUSED,   PERR_WRITE,  PERR_READ,         PERR_KILL};

struct Swept : PCommand {
    Swept() : PCommand(L"cat") {}

    int set() {
        return firstFailure(
            {addArgument(L"-"), setEnvironment(L"NAME", L"a value that takes memory"),
             setWorkingDir(L"/usr/share/../../usr/share"), setStreams(PIPED, PIPED, DISCARDED)});
    }
    int talk() {
        char byte = 'b';
        int const started = start();
        if (started != PERR_OK) return started;
        int const written = writeInput(&byte, 1);
        int const read = written == PERR_OK ? readOutput(&byte, 1, done) : written;
        return firstFailure({written, read, signal(SIGCONT), end(ending, 0)});
    }
    int runs() { return run("input", output, errors, ending, FOREVER); }

    std::string output, errors;
    unsigned long done = 0;
    PEnding ending{};
};

}  // namespace

TEST(CommandSweep, EachFailureHasItsCodeAndLeavesAnObjectThatWorks) {
    std::optional<Swept> command;
    bool writing = false;
    auto const fresh = [&] { command.emplace(); };
    auto const talk = [&] { return firstFailure({command->set(), command->talk()}); };
    auto const run = [&] { return command->runs(); };
    auto const works = [&](int) {
        (void)command->end(command->ending, 0);
        while (waitpid(-1, nullptr, 0) > 0) continue;  // where even that was refused
        EXPECT_CODE(PERR_OK, firstFailure({talk(), run()}));
        command.reset();
    };
    auto const ran = [&](int code) {
        writing = writing || code == PERR_WRITE;
        works(code);
    };
    // The end walks over all processes: more of the same follows.
    sweep({"PCommand", CODES, talk, fresh, works, 90, true});
    sweep({"PCommand::run", CODES, run, fresh, ran, 1000, true});
    EXPECT_TRUE(writing) << "was never told to have failed";
}

// What every call of a kind is refused with; 0 where it is made.
static int opening, waiting;

static bool _isRefused(int error) {
    if (error != 0) errno = error;
    return error != 0;
}

TEST(CommandSweep, ASystemThatCannotHoldChildrenIsToldBeforeOneIsStarted) {
    auto const startWhile = [](int& calls, int error) {
        Swept command;
        calls = error;
        int const code = command.start();
        calls = 0;
        EXPECT_EQ(-1, waitpid(-1, nullptr, 0));
        return code;
    };
    EXPECT_CODE(PERR_NOT_SUPPORTED, startWhile(opening, ENOSYS));
    EXPECT_CODE(PERR_NOT_SUPPORTED, startWhile(opening, EPERM)) << "a filter of calls";
    EXPECT_CODE(PERR_NOT_SUPPORTED, startWhile(waiting, EINVAL)) << "no waiting by them";
    EXPECT_CODE(PERR_SYSTEM, startWhile(opening, EMFILE));
    EXPECT_CODE(PERR_NO_MEMORY, startWhile(opening, ENOMEM));
}

// clang-format off
INTERPOSE(pipe2, if (failsNow()) return -1)
INTERPOSE(waitid, if (failsNow() || _isRefused(waiting)) return -1)
INTERPOSE(ppoll, if (failsNow()) return -1)
INTERPOSE(syscall, if (failsNow() || _isRefused(a == SYS_pidfd_open ? opening : 0)) return -1)
INTERPOSE(faccessat, if (failsNow()) return -1)
INTERPOSE(posix_spawn, if (failsNow()) return EIO)
INTERPOSE(posix_spawn_file_actions_adddup2, if (failsNow()) return EIO)
INTERPOSE(posix_spawn_file_actions_addchdir_np, if (failsNow()) return EIO)
INTERPOSE(killpg, EXPECT_GT(int(a), 1); if (failsNow() || int(a) <= 1) return -1)
// clang-format on
