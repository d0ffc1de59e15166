/// Children of a test: real programs, ended and collected when the object goes.
#ifndef TESTS_PROCESS_CHILDREN_H
#define TESTS_PROCESS_CHILDREN_H

#include <csignal>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include <portinglayer/processes.h>
#include <support/child_run.h>
#include <sys/wait.h>

/// A file of a process; empty when it is gone.
inline std::string factOf(unsigned int pid, std::string const& file) {
    std::ifstream stream("/proc/" + std::to_string(pid) + "/" + file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

inline PString owned(std::string const& ascii) {
    return PString(ascii.c_str(), P_WHOLE_STRING);
}

inline std::wstring shown(PString const& text) {
    return text.ptr() == nullptr ? std::wstring() : std::wstring(text.ptr(), text.len());
}

struct Child {
    /// Starts a program and waits until it has begun; nothing without arguments.
    explicit Child(std::string const& arguments = "", std::string const& program = TEST_CHILD,
                   std::vector<PString> const& environment = {})
        : process(owned(program), owned(arguments), environment) {
        if (arguments.empty()) return;
        (void)process.start();
        (void)eventually([&] { return process.getPID(pid) == PERR_OK && began(program); });
    }

    ~Child() {
        auto const id = static_cast<pid_t>(pid);
        if (id <= 0 || waitpid(id, nullptr, WNOHANG) != 0) return;  // another may bear the id now
        end();
        (void)waitpid(id, nullptr, 0);
    }

    bool began(std::string const& program) const {
        return factOf(pid, "cmdline").find(program + '\0') == 0;
    }

    void end() const { (void)::kill(static_cast<pid_t>(pid), SIGKILL); }

    PProcess process;
    unsigned int pid = 0;
};

#endif
