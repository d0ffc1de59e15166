/// What the one program that includes this sees instead of the system, for what a healthy system
/// will not do: its own functions come before those of the C library.
#ifndef TESTS_FAULTS_PROCESS_SCRIPT_H
#define TESTS_FAULTS_PROCESS_SCRIPT_H

#include <cstdarg>
#include <cstdio>
#include <map>
#include <string>
#include <vector>

#include <dlfcn.h>
#include <support/scratch.h>
#include <unistd.h>

/// While one exists, pauses and signals are recorded instead of done, and its files stand in for
/// those of the system.
struct ProcessScript {
    ProcessScript() { active = this; }
    ~ProcessScript() { active = nullptr; }

    struct File {
        std::string standIn;
        std::vector<std::string> contents;
    };

    /// `path` reads as the first content, and from each pause on as the next one; without any it
    /// does not exist.
    void file(std::string const& path, std::vector<std::string> const& contents) {
        files[path] = {std::to_string(files.size()), contents};
        advance(files[path]);
    }

    void advance(File& file) const {
        if (file.contents.empty()) return;
        (void)scratch.write(file.standIn, file.contents.front());
        file.contents.erase(file.contents.begin());
    }

    static int record(std::string const& call) {
        active->calls.push_back(call);
        for (auto& [path, file] : active->files) active->advance(file);
        return 0;
    }

    static std::string standIn(char const* path) {
        bool const scripted = active != nullptr && active->files.count(path) != 0;
        return scripted ? active->scratch.path(active->files[path].standIn) : path;
    }

    static inline ProcessScript* active = nullptr;
    std::vector<std::string> calls;  ///< such as "sleep 1", "usleep 400000", "kill 17 9"
    bool forkFails = false;
    Scratch scratch;
    std::map<std::string, File> files;
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
    return static_cast<unsigned int>(ProcessScript::record("sleep " + std::to_string(seconds)));
}

int usleep(useconds_t microseconds) {
    return ProcessScript::record("usleep " + std::to_string(microseconds));
}

int kill(pid_t pid, int signal) noexcept {
    if (ProcessScript::active == nullptr) return systems(&kill, "kill")(pid, signal);
    return ProcessScript::record("kill " + std::to_string(pid) + " " + std::to_string(signal));
}

pid_t fork() noexcept {
    bool const fails = ProcessScript::active != nullptr && ProcessScript::active->forkFails;
    return fails ? -1 : systems(&fork, "fork")();
}
}

#endif
