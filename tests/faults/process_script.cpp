#include "faults/process_script.h"

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <fstream>
#include <map>

#include <dlfcn.h>
#include <fcntl.h>
#include <support/scratch.h>
#include <unistd.h>

namespace {

struct Scripted {
    std::string standIn;
    std::vector<std::string> contents;
};

ProcessScript* active = nullptr;
std::map<std::string, Scripted> files;

void _write(Scripted& file) {
    if (file.contents.empty()) return;  // stays as it is
    std::ofstream(file.standIn, std::ios::binary) << file.contents.front();
    file.contents.erase(file.contents.begin());
}

int _record(std::string const& call) {
    active->calls.push_back(call);
    for (auto& [path, file] : files) _write(file);
    return 0;
}

char const* _standIn(char const* path) {
    auto const found = active == nullptr ? files.end() : files.find(path);
    return found == files.end() ? path : found->second.standIn.c_str();
}

template <typename Function>
Function* _system(Function*, char const* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

}  // namespace

ProcessScript::ProcessScript() {
    active = this;
}

ProcessScript::~ProcessScript() {
    for (auto const& [path, file] : files) (void)unlink(file.standIn.c_str());
    files.clear();
    active = nullptr;
}

void ProcessScript::file(std::string const& path, std::vector<std::string> contents) {
    Scripted& file = files[path];
    file = {"/tmp/" + uniqueName(), std::move(contents)};
    _write(file);
}

extern "C" {

FILE* fopen(char const* path, char const* mode) {
    return _system(&fopen, "fopen")(_standIn(path), mode);
}

int open(char const* path, int flags, ...) {
    va_list arguments;
    va_start(arguments, flags);
    auto const mode = va_arg(arguments, mode_t);  // without one: never looked at
    va_end(arguments);
    return _system(&open, "open")(_standIn(path), flags, mode);
}

unsigned int sleep(unsigned int seconds) {
    if (active == nullptr) return _system(&sleep, "sleep")(seconds);
    return static_cast<unsigned int>(_record("sleep " + std::to_string(seconds)));
}

int usleep(useconds_t microseconds) {
    if (active == nullptr) return _system(&usleep, "usleep")(microseconds);
    return _record("usleep " + std::to_string(microseconds));
}

int kill(pid_t pid, int signal) {
    if (active == nullptr) return _system(&kill, "kill")(pid, signal);
    return _record("kill " + std::to_string(pid) + " " + std::to_string(signal));
}

pid_t fork() {
    if (active == nullptr || !active->forkFails) return _system(&fork, "fork")();
    errno = EAGAIN;
    return -1;
}

}  // extern "C"
