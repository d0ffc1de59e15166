/// What the one program that includes this sees instead of the system, for what a healthy system
/// will not do: its own functions come before those of the C library.
#ifndef TESTS_FAULTS_PROCESS_SCRIPT_H
#define TESTS_FAULTS_PROCESS_SCRIPT_H

#include <algorithm>
#include <cstdio>
#include <map>
#include <string>
#include <vector>

#include <dlfcn.h>
#include <support/scratch.h>
#include <unistd.h>

using Texts = std::vector<std::string>;
using Files = std::map<std::string, Texts>;

/// While one exists, pauses and signals are recorded instead of done, and its files stand in for
/// those of the system: each reads as its first text, and from each pause on as its next one;
/// without any it does not exist.
struct ProcessScript {
    explicit ProcessScript(Files const& given = {}) : files(given) {
        active = this;
        show();
    }
    ~ProcessScript() { active = nullptr; }

    void show() const {
        for (auto const& [path, texts] : files)
            if (!texts.empty())
                (void)scratch.write(flat(path), texts[std::min(calls.size(), texts.size() - 1)]);
    }

    static int record(std::string const& call, unsigned int argument) {
        active->calls.push_back(call + " " + std::to_string(argument));
        active->show();
        return 0;
    }

    static std::string flat(std::string path) {
        std::replace(path.begin(), path.end(), '/', '-');
        return path;
    }

    static std::string standIn(char const* path) {
        bool const scripted = active != nullptr && active->files.count(path) != 0;
        return scripted ? active->scratch.path(flat(path)) : path;
    }

    static inline ProcessScript* active = nullptr;
    Files const files;
    Texts calls;  ///< such as "sleep 1", "usleep 400000", "kill 9"
    bool forkFails = false;
    Scratch scratch;
};

/// The system's function behind one of those below.
template <typename Function>
Function* systems(Function*, char const* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

extern "C" {
FILE* fopen(char const* path, char const* mode) {
    return systems(&fopen, "fopen")(ProcessScript::standIn(path).c_str(), mode);
}
int scriptedOpen(char const* path, int flags, mode_t mode) __asm__("open");  // elsewhere variadic
int scriptedOpen(char const* path, int flags, mode_t mode) {
    return systems(&scriptedOpen, "open")(ProcessScript::standIn(path).c_str(), flags, mode);
}
unsigned int sleep(unsigned int seconds) {
    return static_cast<unsigned int>(ProcessScript::record("sleep", seconds));
}
int usleep(useconds_t microseconds) {
    return ProcessScript::record("usleep", microseconds);
}
int kill(pid_t pid, int signal) noexcept {
    if (ProcessScript::active == nullptr) return systems(&kill, "kill")(pid, signal);
    return ProcessScript::record("kill", static_cast<unsigned int>(signal));
}
pid_t fork() noexcept {
    bool const fails = ProcessScript::active != nullptr && ProcessScript::active->forkFails;
    return fails ? -1 : systems(&fork, "fork")();
}
}

#endif
