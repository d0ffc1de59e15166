/// Children of a test: real programs, started by the library.
#ifndef TESTS_PROCESS_CHILDREN_H
#define TESTS_PROCESS_CHILDREN_H

#include <algorithm>
#include <filesystem>
#include <vector>

#include <portinglayer/portinglayer.h>
#include <support/cancelled.h>
#include <support/child_run.h>
#include <support/expect.h>
#include <support/scratch.h>

using Ids = std::vector<unsigned int>;
using Texts = std::vector<PString>;

inline PString owned(std::string const& ascii) {
    return PString(ascii.c_str(), P_WHOLE_STRING);
}

/// A shell's arguments: the command stands behind tabs, since spaces would take it apart.
inline PString shell(std::string command) {
    std::replace(command.begin(), command.end(), ' ', '\t');
    return owned("-c " + command);
}

/// A child that runs its program, and is gone when the object ends.
class Child {
public:
    explicit Child(PString const& arguments = owned("60"),
                   std::string const& program = "/bin/sleep")
        : process(owned(program), arguments) {
        if (process.start() != PERR_OK || process.getPID(pid) != PERR_OK ||
            static_cast<int>(pid) < 1)
            throw std::runtime_error("no child");  // its id would mean others
        // Emulation and valgrind stand in for what /proc/self says.
        PString const ours = owned(std::filesystem::read_symlink("/proc/thread-self/exe"));
        PString path, line;
        EXPECT_TRUE(eventually([&] {
            return PProcess::getPath(pid, path) == PERR_OK && path != ours &&
                   PProcess::getCmdLine(pid, line) == PERR_OK && line.len() > 0;
        }));
    }
    Child(Child const&) = delete;
    ~Child() {
        if (waitpid(id(), nullptr, WNOHANG) != 0) return;  // another may bear the id now
        (void)::kill(id(), SIGKILL);
        (void)waitpid(id(), nullptr, 0);
    }

    /// Ends it, but leaves its exit code with the system.
    void end() const {
        siginfo_t ended{};
        (void)::kill(id(), SIGKILL);
        (void)waitid(P_PID, pid, &ended, WEXITED | WNOWAIT);
    }

    PProcess process;
    unsigned int pid = 0;

private:
    pid_t id() const { return static_cast<pid_t>(pid); }
};

/// The id of a process that has ended and was collected.
inline unsigned int endedProcess() {
    return Child().pid;
}

/// Starts a program and gives the exit code that it ends with.
inline int runToEnd(PProcess&& process) {
    int exitCode = -1;
    EXPECT_CODE(PERR_OK, process.start());
    EXPECT_CODE(PERR_OK, process.waitExitCode(exitCode));
    return exitCode;
}

inline bool operator==(PEnding const& one, PEnding const& other) {
    return one.exitCode == other.exitCode && one.signal == other.signal;
}

constexpr int DISCARDED = PCommand::DISCARDED, PIPED = PCommand::PIPED;
constexpr unsigned int FOREVER = PCommand::FOREVER;

/// A program with its arguments, ended with its group at the latest when the object ends.
struct Command : PCommand {
    explicit Command(wchar_t const* program, std::initializer_list<wchar_t const*> arguments = {})
        : PCommand(program) {
        for (wchar_t const* const argument : arguments) EXPECT_CODE(PERR_OK, addArgument(argument));
    }
    ~Command() { (void)end(ending, 0); }

    /// What the program writes when it is run with `input`.
    std::string outputOf(std::string const& input = "") {
        EXPECT_CODE(PERR_OK, run(input, output, errors, ending, 20'000));
        return output;
    }
    /// What comes next of a piped output, nothing at its end.
    std::string read() {
        char buffer[4096];
        unsigned long done = 0;
        return readOutput(buffer, sizeof buffer, done) == PERR_OK ? std::string(buffer, done) : "";
    }
    void startAndHear(std::string const& said) {
        ASSERT_CODE(PERR_OK, setStreams(PIPED, PIPED, DISCARDED));
        ASSERT_CODE(PERR_OK, start());
        ASSERT_EQ(said, read());
    }

    std::string output = "kept", errors = "kept";
    PEnding ending{7, 7};
};

struct Shell : Command {
    explicit Shell(std::wstring const& script) : Command(L"sh", {L"-c", script.c_str()}) {}
};

#endif
