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

struct Child {
    Child() : process(L"", L"") {}

    /// Runs until the program has begun; one that ends by itself is not waited for so.
    explicit Child(std::string const& arguments, std::string const& program = TEST_CHILD,
                   std::vector<PString> const& environment = {})
        : process(owned(program), owned(arguments), environment) {
        (void)process.start();
        (void)eventually([&] {
            return process.getPID(pid) == PERR_OK &&
                   factOf(pid, "cmdline").find(program + '\0') == 0;
        });
    }

    ~Child() {
        auto const id = static_cast<pid_t>(pid);
        if (id <= 0 || waitpid(id, nullptr, WNOHANG) != 0) return;  // another may bear the id now
        (void)::kill(id, SIGKILL);
        (void)waitpid(id, nullptr, 0);
    }

    PProcess process;
    unsigned int pid = 0;
};

#endif
