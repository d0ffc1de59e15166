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

/// One fact by the library.
template <typename Fact>
Fact _ours(int (*get)(unsigned int, Fact&)) {
    return out<Fact>(get, self);
}

constexpr int NO_ITEM = -1;

/// A fact that is text: the bare way, the item of libproc2 and the library's operation.
template <typename Bare>
void _addText(char const* name, Bare bare, [[maybe_unused]] int item,
              int (*ours)(unsigned int, PString&)) {
    Operation op(std::string("process ") + name, 1.15, bare(), "the same reads");
    op.way(BARE, bare);
    WITH_PROC2(if (item != NO_ITEM) op.way("libproc2", [=] {
        return std::string(proc2Item(static_cast<pids_item>(item)).result.str);
    }));
    op.way(
        OURS, [=] { return _ours(ours); },
        [](PString const& text) {
            std::string bytes = bytesOf(text);
            std::erase(bytes, '"');  // stands around arguments with a space, such as a filter
            return bytes;
        });
}

void _addParent() {
    Operation op("process parent", 1.15, static_cast<unsigned int>(getppid()), "the same reads");
    op.way(BARE, [] { return _statusNumber("PPid:"); });
    WITH_PROC2(op.way("libproc2", [] { return proc2Item(PIDS_ID_PPID).result.s_int; }));
    op.way(OURS, [] { return _ours<unsigned int>(PProcess::getParentPID); });
}

void _addMemory() {
    Operation op("process memory", 1.15, true, "the same reads");
    op.way(BARE, [] { return _statusNumber("VmRSS:") > 0; });
    WITH_PROC2(op.way("libproc2", [] { return proc2Item(PIDS_VM_RSS).result.ul_int > 0; }));
    op.way(OURS, [] { return _ours<unsigned long long>(PProcess::getMemoryUsage) > 0; });
}

void _addPriority() {
    Operation op("process priority", 1.15, getpriority(PRIO_PROCESS, self), "getpriority");
    op.way(BARE, [] {
        errno = 0;
        return getpriority(PRIO_PROCESS, self);
    });
    WITH_PROC2(op.way("libproc2", [] { return proc2Item(PIDS_NICE).result.s_int; }));
    op.way(OURS, [] { return _ours<int>(PProcess::getPriority); });
}

void _addRunning() {
    Operation op("process is running", 1.15, true, "the same reads");
    op.way(BARE, _reaping([] { return _statusLine("State:")[0] != 'Z'; }));
    op.way(OURS, [] { return _ours<bool>(PProcess::isRunning); });
}

void _addEnvironment() {
    Operation op("process environment", 3.5, _environment(), "the same reads");
    op.way(BARE, _environment);
    WITH_PROC2(op.way("libproc2", [] {
        std::size_t entries = 0;
        for (char** at = proc2Item(PIDS_ENVIRON_V).result.strv; *at != nullptr; ++at) ++entries;
        return entries;
    }));
    op.way(OURS, [] { return _ours<std::vector<PString>>(PProcess::getEnvironment).size(); });
}

void _addFreeMemory() {
    Operation op("free memory", 1.15, true, "the same reads");
    op.way(BARE, _freeMemory);
    WITH_PROC2(op.way("libproc2", [] {
        meminfo_info* info = nullptr;
        procps_meminfo_new(&info);
        bool const any = procps_meminfo_get(info, MEMINFO_MEM_FREE)->result.ul_int > 0;
        procps_meminfo_unref(&info);
        return any;
    }));
    op.way(OURS, [] { return out<unsigned long long>(PProcess::getFreeMemory) > 0; });
}

}  // namespace

void addProcessFacts() {
    auto const workingFolder = [] {
        File const file = _openProc("cwd");
        return _link("cwd");
    };
    _addText("name", _reaping([] { return _statusLine("Name:"); }), PIDS_CMD, PProcess::getName);
    _addText("path", _reaping([] { return _link("exe"); }), PIDS_EXE, PProcess::getPath);
    _addText("command line", _commandLine, PIDS_CMDLINE, PProcess::getCmdLine);
    _addText("working folder", workingFolder, NO_ITEM, PProcess::getWorkingDir);
    _addText("user name", _userName, NO_ITEM,
             [](unsigned int pid, PString& name) { return PProcess::getUserName(pid, name); });
    _addParent();
    _addMemory();
    _addPriority();
    _addRunning();
    _addEnvironment();
    _addFreeMemory();
}
