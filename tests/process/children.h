/// Children of a test: real programs, ended and collected when the object goes.
#ifndef TESTS_PROCESS_CHILDREN_H
#define TESTS_PROCESS_CHILDREN_H

#include <chrono>
#include <csignal>
#include <fstream>
#include <iterator>
#include <string>
#include <thread>
#include <vector>

#include <portinglayer/processes.h>
#include <spawn.h>
#include <sys/wait.h>

/// Waits until a condition holds, ten seconds at most.
template <typename Condition>
bool eventually(Condition const& condition) {
    auto const deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (!condition() && std::chrono::steady_clock::now() < deadline)
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    return condition();
}

/// A file of a process; empty when it is gone.
inline std::string factOf(unsigned int pid, std::string const& file) {
    std::ifstream stream("/proc/" + std::to_string(pid) + "/" + file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

/// The state letter of a process; '-' when it is gone.
inline char stateOf(unsigned int pid) {
    std::string const line = factOf(pid, "stat");
    return line.empty() ? '-' : line[line.rfind(')') + 2];
}

inline PString owned(std::string const& ascii) {
    return PString(ascii.c_str(), P_WHOLE_STRING);
}

inline std::wstring shown(PString const& text) {
    return text.ptr() == nullptr ? std::wstring() : std::wstring(text.ptr(), text.len());
}

class Child {
public:
    Child() = default;
    Child(Child const&) = delete;
    Child& operator=(Child const&) = delete;

    /// The running child of a `PProcess`.
    explicit Child(PProcess& process) {
        (void)eventually([&] { return process.getPID(pid) == PERR_OK && becameProgram(); });
    }

    /// Runs the child program with exactly these arguments and this environment.
    explicit Child(std::vector<std::string> arguments, std::vector<std::string> environment = {},
                   std::string const& program = TEST_CHILD) {
        pid_t id = 0;
        (void)posix_spawn(&id, program.c_str(), nullptr, nullptr, pointers(arguments).data(),
                          pointers(environment).data());
        pid = static_cast<unsigned int>(id);
        (void)eventually([&] { return becameProgram(); });
    }

    ~Child() {
        auto const id = static_cast<pid_t>(pid);
        if (id <= 0 || waitpid(id, nullptr, WNOHANG) != 0) return;  // another may bear the id now
        (void)::kill(id, SIGKILL);
        (void)waitpid(id, nullptr, 0);
    }

    unsigned int pid = 0;

private:
    bool becameProgram() const {
        return factOf(pid, "cmdline") != factOf(PProcess::getCurrentPID(), "cmdline") &&
               (stateOf(pid) == 'Z' || !factOf(pid, "cmdline").empty());
    }

    static std::vector<char*> pointers(std::vector<std::string>& texts) {
        std::vector<char*> all;
        for (std::string& text : texts) all.push_back(text.data());
        all.push_back(nullptr);
        return all;
    }
};

#endif
