#include <algorithm>
#include <cerrno>
#include <cwchar>
#include <new>
#include <string>
#include <utility>

#include <sys/resource.h>
#include <unistd.h>

#include <portinglayer/files.h>
#include <portinglayer/processes.h>

#include "process/proc_files.h"
#include "text/multibyte.h"

namespace {

constexpr std::size_t LINK_BYTES = 512;
constexpr std::size_t COMMAND_CHUNK_BYTES = 255;
constexpr std::size_t ENVIRONMENT_BLOCK_BYTES = 128;
constexpr unsigned int KILOBYTE_SHIFT = 10;

int _readLink(char const* link, PString& out) {
    char target[LINK_BYTES + 1];
    ssize_t const length = readlink(link, target, LINK_BYTES);
    if (length < 0) return PERR_NOT_FOUND;
    target[length] = '\0';

    int const result = out.set(target, static_cast<unsigned long>(length));
    if (result != PERR_OK) return result;
    (void)out.trim();  // in place, cannot fail
    return PUtils::fixFileSeparator(out);
}

/// Joins an argument to a command line. It gets as many characters as it has bytes: zeros fill up
/// behind multibyte text. One that the locale cannot convert joins as an empty one.
void _joinArgument(std::wstring& line, char const* text, std::size_t bytes) {
    wchar_t argument[COMMAND_CHUNK_BYTES] = {};
    std::size_t const characters = bytes == 0 ? 0 : _widen(argument, text, bytes);
    if (characters == MULTIBYTE_FAILED) bytes = 0;

    bool const quoted = std::wmemchr(argument, L' ', bytes) != nullptr;
    if (!line.empty()) line += L' ';
    if (quoted) line += L'"';
    line.append(argument, bytes);
    if (quoted) line += L'"';
}

std::size_t _asciiRun(char const* text) {
    char const* end = text;
    while (static_cast<signed char>(*end) > 0) ++end;
    return static_cast<std::size_t>(end - text);
}

/// Converts the byte alone, and drops it where no character begins.
int _addCharacter(char const* at, PString& current) {
    wchar_t character = 0;
    return _widen(&character, at, 1) == 1 ? current.cat(&character, 1) : PERR_OK;
}

/// Takes a terminated block apart at its zero bytes. Plain runs are converted at once, any other
/// byte alone.
int _addBlock(char const* block, std::size_t bytes, PString& current,
              std::vector<PString>& entries) {
    for (char const* at = block; at < block + bytes;) {
        std::size_t const run = _asciiRun(at);
        int result = PERR_OK;
        if (run > 0)
            result = current.cat(at, run);
        else if (*at != '\0')
            result = _addCharacter(at, current);
        else
            entries.push_back(std::exchange(current, PString()));
        if (result != PERR_OK) return result;
        at += std::max<std::size_t>(run, 1);
    }
    return PERR_OK;
}

/// Reads on until a line holds `needle`. PERR_END_OF_FILE where none does, PERR_NOT_FOUND where the
/// file cannot be read, PERR_NO_MEMORY.
int _readLineHolding(PFile& file, PLiteral const& needle, PString& line) {
    unsigned long position = 0;
    int result = file.preadLine(line);
    while (result == PERR_OK && line.str(needle, position, false, false) != PERR_OK)
        result = file.preadLine(line);
    return result == PERR_READ ? PERR_NOT_FOUND : result;
}

/// The key that is searched for is written "Uid:" by this system, so nearly every process is
/// root's; callers rely on the answer.
int _readUserId(unsigned int processId, int& userId) {
    PString path;
    PFile file;
    if (PUtils::pformatString(path, L"/proc/%u/status", processId) != PERR_OK)
        return PERR_NO_MEMORY;
    if (file.popen(path, PFile::OPEN_READ, PFile::UNLOCKED) != PERR_OK) return PERR_NOT_FOUND;

    PString line;
    int const result = _readLineHolding(file, L"uid", line);
    if (result == PERR_END_OF_FILE) return PERR_OK;  // it stays 0
    if (result == PERR_OK) (void)std::swscanf(line.ptr(), L"%*ls %d", &userId);
    return result;
}

}  // namespace

int PProcess::getName(unsigned int processId, PString& name) {
    name.clear();
    _reapEndedChildren();
    ProcFile status(ProcPath(processId, "status"));
    char* const line = status.isOpen() ? status.findLine("Name:") : nullptr;
    if (line == nullptr) return PERR_NOT_FOUND;
    return _readName(line, name) == PERR_OK ? PERR_OK : PERR_NO_MEMORY;
}

int PProcess::getName(PString& name) const {
    return pid == 0 ? PERR_NO_PROCESS : getName(pid, name);
}

int PProcess::getPath(unsigned int processId, PString& path) {
    _reapEndedChildren();
    return _readLink(ProcPath(processId, "exe"), path);
}

int PProcess::getPath(PString& path) const {
    if (pid == 0) return PERR_NO_PROCESS;
    int const result = getPath(pid, path);
    if (result == PERR_OK || result == PERR_NO_PROCESS) return result;
    path = executable;
    return PERR_OK;
}

int PProcess::getCmdLine(unsigned int processId, PString& commandLine) try {
    ProcFile file(ProcPath(processId, "cmdline"));
    if (!file.isOpen()) return PERR_NOT_FOUND;
    commandLine.clear();

    std::wstring line;
    char chunk[COMMAND_CHUNK_BYTES];
    std::size_t start = 0;
    while (std::size_t const got = file.read(chunk, sizeof chunk)) {
        // Where an argument starts runs on from one chunk to the next: callers know that only the
        // first chunk is cut in the right places.
        for (std::size_t i = 0; i < got; ++i) {
            if (chunk[i] != '\0') continue;
            if (start > i) start = i;
            _joinArgument(line, chunk + start, i - start);
            start = i + 1;
        }
    }
    int const result = commandLine.set(line.data(), line.size());
    return file.failed() ? PERR_NOT_FOUND : result;
} catch (std::bad_alloc const&) {
    return PERR_NO_MEMORY;
}

int PProcess::getCmdLine(PString& commandLine) const {
    if (pid == 0) return PERR_NO_PROCESS;
    int const result = getCmdLine(pid, commandLine);
    if (result == PERR_OK || result == PERR_NO_PROCESS) return result;
    commandLine = arguments;
    return PERR_OK;
}

int PProcess::getWorkingDir(unsigned int processId, PString& dir) {
    ProcPath const path(processId, "cwd");
    ProcStream const stream = _openProcStream(path);  // only a folder that opens is reported
    return stream == nullptr ? PERR_NOT_FOUND : _readLink(path, dir);
}

int PProcess::getWorkingDir(PString& dir) const {
    return pid == 0 ? PERR_NO_PROCESS : getWorkingDir(pid, dir);
}

int PProcess::getPriority(unsigned int processId, int& value) {
    errno = 0;
    int const nice = getpriority(PRIO_PROCESS, processId);
    if (nice == -1 && errno != 0) return PERR_NOT_FOUND;
    value = nice;
    return PERR_OK;
}

int PProcess::getPriority(int& value) const {
    return pid == 0 ? PERR_NO_PROCESS : getPriority(pid, value);
}

int PProcess::getEnvironment(unsigned int processId, std::vector<PString>& environment) try {
    environment.clear();
    ProcFile file(ProcPath(processId, "environ"));
    if (!file.isOpen()) return PERR_NOT_FOUND;

    PString current;
    char block[ENVIRONMENT_BLOCK_BYTES + 1];
    while (std::size_t const got = file.read(block, ENVIRONMENT_BLOCK_BYTES)) {
        block[got] = '\0';
        int const result = _addBlock(block, got, current, environment);
        if (result != PERR_OK) return result;
    }
    return file.failed() ? PERR_NOT_FOUND : PERR_OK;
} catch (std::bad_alloc const&) {
    return PERR_NO_MEMORY;
}

int PProcess::getEnvironment(std::vector<PString>& entries) const {
    return pid == 0 ? PERR_NO_PROCESS : getEnvironment(pid, entries);
}

int PProcess::getMemoryUsage(unsigned int processId, unsigned long long& bytes) {
    ProcFile status(ProcPath(processId, "status"));
    if (!status.isOpen()) return PERR_NO_PROCESS;  // this query alone says so
    char const* const line = status.findLine("VmRSS:");
    if (line == nullptr) return PERR_NOT_FOUND;

    unsigned int kilobytes = 0;
    _readNumber(line, kilobytes);
    bytes = static_cast<unsigned long long>(kilobytes) << KILOBYTE_SHIFT;
    return PERR_OK;
}

int PProcess::getMemoryUsage(unsigned long long& bytes) const {
    bytes = 0;
    return getMemoryUsage(pid, bytes);
}

int PProcess::getParentPID(unsigned int processId, unsigned int& parentId) {
    parentId = 0;
    ProcFile status(ProcPath(processId, "status"));
    char const* const line = status.isOpen() ? status.findLine("PPid:") : nullptr;
    if (line == nullptr) return PERR_NOT_FOUND;
    _readNumber(line, parentId);
    return PERR_OK;
}

int PProcess::getUserName(unsigned int const& processId, PString& name) {
    int userId = 0;
    int result = _readUserId(processId, userId);
    if (result != PERR_OK) return result;
    if (userId == 0) return name.set(L"root", P_WHOLE_STRING);

    PString needle;
    PFile accounts;
    if (PUtils::pformatString(needle, L":%d:", userId) != PERR_OK) return PERR_NO_MEMORY;
    if (accounts.popen(L"/etc/passwd", PFile::OPEN_READ, PFile::UNLOCKED) != PERR_OK)
        return PERR_NOT_FOUND;

    PString line;
    result = _readLineHolding(accounts, needle, line);
    if (result == PERR_END_OF_FILE) return PERR_OK;  // an unknown user leaves the name alone
    if (result != PERR_OK) return result;
    wchar_t const* const first = line.ptr() + std::wcsspn(line.ptr(), L":");
    return name.set(first, std::wcscspn(first, L":"));
}

int PProcess::getFreeMemory(unsigned long long& bytes) {
    bytes = 0;
    ProcFile report("/proc/meminfo");
    if (!report.isOpen()) return PERR_IO;

    (void)report.takeFirstLines({"MemFree:", "Buffers:", "Cached:"},
                                [&](std::size_t, char const* line) {
                                    unsigned int kilobytes = 0;
                                    _readNumber(line, kilobytes);
                                    bytes += kilobytes;
                                });
    bytes <<= KILOBYTE_SHIFT;
    return PERR_OK;
}

int PProcess::getCurrentEnvironment(std::vector<PString>& environment) {
    return getEnvironment(getCurrentPID(), environment);
}
