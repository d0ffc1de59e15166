/// Children of a test: real programs, started by the library.
#ifndef TESTS_PROCESS_CHILDREN_H
#define TESTS_PROCESS_CHILDREN_H

#include <algorithm>
#include <filesystem>
#include <vector>

#include <portinglayer/processes.h>
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

#endif
