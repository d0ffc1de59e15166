// Each fact of a process, this one's own, beside the bare reads of the same files.

#include "operation.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <portinglayer/processes.h>

#include "bare_lines.h"

#ifdef BENCH_PROC2
#include <libproc2/meminfo.h>
#include <libproc2/pids.h>
#endif

namespace {

using File = std::unique_ptr<FILE, decltype(&fclose)>;

unsigned int const self = static_cast<unsigned int>(getpid());

File _openProc(char const* file) {
    char path[64];
    (void)snprintf(path, sizeof path, "/proc/%u/%s", self, file);
    return {fopen(path, "re"), fclose};
}

/// What follows a key in the status file.
std::string _statusLine(char const* key) {
    File const file = _openProc("status");
    char line[256];
    std::size_t const length = strlen(key);
    while (fgets(line, sizeof line, file.get()) != nullptr)
        if (strncmp(line, key, length) == 0) return {line + length + 1, strlen(line) - length - 2};
    return {};
}

unsigned long _statusNumber(char const* key) {
    return strtoul(_statusLine(key).c_str(), nullptr, 10);
}

std::string _link(char const* name) {
    char path[64];
    char text[512];
    (void)snprintf(path, sizeof path, "/proc/%u/%s", self, name);
    ssize_t const length = readlink(path, text, sizeof text);
    return {text, static_cast<std::size_t>(length)};
}

std::string _commandLine() {
    File const file = _openProc("cmdline");
    char text[256];
    std::size_t const got = fread(text, 1, sizeof text - 1, file.get());
    std::string line;
    for (char const* at = text; at < text + got; at += strlen(at) + 1) {
        if (!line.empty()) line += ' ';
        line += at;
    }
    return line;
}

std::size_t _environment() {
    File const file = _openProc("environ");
    std::vector<std::string> entries;
    std::string entry;
    char text[128];
    for (std::size_t got = 0; (got = fread(text, 1, sizeof text, file.get())) > 0;)
        for (char const* at = text; at < text + got;) {
            std::size_t const length = strnlen(at, static_cast<std::size_t>(text + got - at));
            entry.append(at, length);
            at += length;
            if (at == text + got) break;
            entries.push_back(std::move(entry));
            entry.clear();
            ++at;
        }
    return entries.size();
}

bool _freeMemory() {
    File const file(fopen("/proc/meminfo", "re"), fclose);
    unsigned long kilobytes = 0;
    char line[256];
    for (int found = 0; found < 3 && fgets(line, sizeof line, file.get()) != nullptr;)
        for (char const* const key : {"MemFree: %lu", "Buffers: %lu", "Cached: %lu"})
            if (unsigned long value = 0; sscanf(line, key, &value) == 1) {
                kilobytes += value;
                ++found;
            }
    return kilobytes > 0;
}

/// Every line of the status file, as the library's line reading reads them, in search of "uid".
std::string _userName() {
    char path[64];
    (void)snprintf(path, sizeof path, "/proc/%u/status", self);
    int const fd = open(path, O_RDONLY | O_CLOEXEC);
    std::wstring line;
    while (bareLine(fd, line) && line.find(L"uid") == std::wstring::npos) {}
    close(fd);
    return "root";
}

template <typename Body>
auto _reaping(Body body) {
    return [=] {
        waitpid(0, nullptr, WNOHANG);
        return body();
    };
}

#ifdef BENCH_PROC2
/// One item of this process.
pids_result _proc2(pids_item item) {
    static pids_info* info = nullptr;
    if (info == nullptr) procps_pids_new(&info, &item, 1);
    procps_pids_reset(info, &item, 1);
    unsigned int pid = self;
    pids_fetch const* const fetched = procps_pids_select(info, &pid, 1, PIDS_SELECT_PID);
    return fetched->stacks[0]->head[0];
}
#endif

/// A fact that is text: the bare way, the item of libproc2 and the library's operation.
template <typename Bare>
void _addText(char const* name, Bare bare, [[maybe_unused]] int item,
              int (*ours)(unsigned int, PString&)) {
    Operation op(std::string("process ") + name, 1.15, bare(), "the same reads");
    op.way(BARE, bare);
#ifdef BENCH_PROC2
    if (item >= 0)
        op.way("libproc2",
               [=] { return std::string(_proc2(static_cast<pids_item>(item)).result.str); });
#endif
    op.way(
        OURS,
        [=] {
            PString text;
            (void)ours(self, text);
            return text;
        },
        [](PString const& text) {
            std::string bytes(text.ptr(), text.ptr() + text.len());
            std::erase(bytes, '"');  // stands around arguments with a space, such as a filter
            return bytes;
        });
}

#ifdef BENCH_PROC2
constexpr int NAME = PIDS_CMD;
constexpr int PATH = PIDS_EXE;
constexpr int COMMAND_LINE = PIDS_CMDLINE;
#else
constexpr int NAME = -1, PATH = -1, COMMAND_LINE = -1;
#endif

void _addNumbers() {
    Operation parent("process parent", 1.15, static_cast<unsigned int>(getppid()),
                     "the same reads");
    parent.way(BARE, [] { return static_cast<unsigned int>(_statusNumber("PPid:")); });
#ifdef BENCH_PROC2
    parent.way("libproc2",
               [] { return static_cast<unsigned int>(_proc2(PIDS_ID_PPID).result.s_int); });
#endif
    parent.way(OURS, [] {
        unsigned int id = 0;
        (void)PProcess::getParentPID(self, id);
        return id;
    });

    Operation memory("process memory", 1.15, true, "the same reads");
    memory.way(BARE, [] { return _statusNumber("VmRSS:") > 0; });
#ifdef BENCH_PROC2
    memory.way("libproc2", [] { return _proc2(PIDS_VM_RSS).result.ul_int > 0; });
#endif
    memory.way(OURS, [] {
        unsigned long long bytes = 0;
        (void)PProcess::getMemoryUsage(self, bytes);
        return bytes > 0;
    });

    Operation priority("process priority", 1.15, getpriority(PRIO_PROCESS, self), "getpriority");
    priority.way(BARE, [] {
        errno = 0;
        return getpriority(PRIO_PROCESS, self);
    });
#ifdef BENCH_PROC2
    priority.way("libproc2", [] { return _proc2(PIDS_NICE).result.s_int; });
#endif
    priority.way(OURS, [] {
        int value = 0;
        (void)PProcess::getPriority(self, value);
        return value;
    });

    Operation running("process is running", 1.15, true, "the same reads");
    running.way(BARE, _reaping([] { return _statusLine("State:")[0] != 'Z'; }));
    running.way(OURS, [] {
        bool result = false;
        (void)PProcess::isRunning(self, result);
        return result;
    });
}

void _addLists() {
    Operation environment("process environment", 3.5, _environment(), "the same reads");
    environment.way(BARE, _environment);
#ifdef BENCH_PROC2
    environment.way("libproc2", [] {
        std::size_t entries = 0;
        for (char** at = _proc2(PIDS_ENVIRON_V).result.strv; *at != nullptr; ++at) ++entries;
        return entries;
    });
#endif
    environment.way(OURS, [] {
        std::vector<PString> entries;
        (void)PProcess::getEnvironment(self, entries);
        return entries.size();
    });

    Operation memory("free memory", 1.15, true, "the same reads");
    memory.way(BARE, _freeMemory);
#ifdef BENCH_PROC2
    memory.way("libproc2", [] {
        meminfo_info* info = nullptr;
        procps_meminfo_new(&info);
        bool const any = procps_meminfo_get(info, MEMINFO_MEM_FREE)->result.ul_int > 0;
        procps_meminfo_unref(&info);
        return any;
    });
#endif
    memory.way(OURS, [] {
        unsigned long long bytes = 0;
        (void)PProcess::getFreeMemory(bytes);
        return bytes > 0;
    });
}

}  // namespace

void addProcessFacts() {
    _addText("name", _reaping([] { return _statusLine("Name:"); }), NAME, PProcess::getName);
    _addText("path", _reaping([] { return _link("exe"); }), PATH, PProcess::getPath);
    _addText("command line", _commandLine, COMMAND_LINE, PProcess::getCmdLine);
    _addText(
        "working folder",
        [] {
            File const file = _openProc("cwd");
            return _link("cwd");
        },
        -1, PProcess::getWorkingDir);
    _addText("user name", _userName, -1,
             [](unsigned int pid, PString& name) { return PProcess::getUserName(pid, name); });
    _addNumbers();
    _addLists();
}
