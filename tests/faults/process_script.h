/// What the one program that includes this sees instead of the system, for what a healthy system
/// will not do: its own functions come before those of the C library.
#ifndef TESTS_FAULTS_PROCESS_SCRIPT_H
#define TESTS_FAULTS_PROCESS_SCRIPT_H

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <fstream>
#include <map>
#include <string>
#include <vector>

#include <dlfcn.h>
#include <fcntl.h>
#include <support/scratch.h>
#include <unistd.h>

/// While one exists, pauses and signals are recorded instead of done, and its files stand in for
/// those of the system.
class ProcessScript {
public:
    ProcessScript() { active = this; }
    ~ProcessScript() { active = nullptr; }

    /// `path` reads as the first content, and from each pause on as the next one; without any it
    /// does not exist.
    void file(std::string const& path, std::vector<std::string> contents) {
        files[path] = std::move(contents);
        advance(path);
    }

    static int record(std::string const& call) {
        active->calls.push_back(call);
        for (auto const& [path, contents] : active->files) active->advance(path);
        return 0;
    }

    static std::string standIn(char const* path) {
        bool const scripted = active != nullptr && active->files.count(path) != 0;
        return scripted ? active->nameOf(path) : path;
    }

    static inline ProcessScript* active = nullptr;
    std::vector<std::string> calls;  ///< such as "sleep 1", "usleep 400000", "kill 17 9"
    bool forkFails = false;

private:
    std::string nameOf(std::string const& path) const {
        return scratch.path(std::to_string(std::hash<std::string>()(path)));
    }

    void advance(std::string const& path) {
        auto& contents = files[path];
        if (contents.empty()) return;
        (void)scratch.write(nameOf(path).substr(scratch.dir().size() + 1), contents.front());
        contents.erase(contents.begin());
    }

    Scratch scratch;
    std::map<std::string, std::vector<std::string>> files;
};

template <typename Function>
Function* systems(Function*, char const* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

extern "C" {

FILE* fopen(char const* path, char const* mode) {
    return systems(&fopen, "fopen")(ProcessScript::standIn(path).c_str(), mode);
}

int open(char const* path, int flags, ...) {
    va_list arguments;
    va_start(arguments, flags);
    auto const mode = va_arg(arguments, mode_t);  // without one: never looked at
    va_end(arguments);
    return systems(&open, "open")(ProcessScript::standIn(path).c_str(), flags, mode);
}

unsigned int sleep(unsigned int seconds) {
    if (ProcessScript::active == nullptr) return systems(&sleep, "sleep")(seconds);
    return static_cast<unsigned int>(ProcessScript::record("sleep " + std::to_string(seconds)));
}

int usleep(useconds_t microseconds) {
    if (ProcessScript::active == nullptr) return systems(&usleep, "usleep")(microseconds);
    return ProcessScript::record("usleep " + std::to_string(microseconds));
}

int kill(pid_t pid, int signal) noexcept {
    if (ProcessScript::active == nullptr) return systems(&kill, "kill")(pid, signal);
    return ProcessScript::record("kill " + std::to_string(pid) + " " + std::to_string(signal));
}

pid_t fork() noexcept {
    if (ProcessScript::active == nullptr || !ProcessScript::active->forkFails)
        return systems(&fork, "fork")();
    errno = EAGAIN;
    return -1;
}

}  // extern "C"

#endif
