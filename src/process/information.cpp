#include <algorithm>
#include <cerrno>
#include <cwchar>
#include <new>
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
constexpr std::size_t STREAM_BUFFER_BYTES = 4096;
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

/// Joins the arguments of a command line. The index at which an argument starts runs on from one
/// chunk to the next: callers know that only the first chunk is cut in the right places.
class CommandLineJoiner {
public:
    explicit CommandLineJoiner(PString& commandLine) : whole(commandLine) {}

    int addChunk(char const* chunk, std::size_t bytes) {
        length = 0;
        for (std::size_t i = 0; i < bytes; ++i) {
            if (chunk[i] != '\0') continue;
            addArgument(chunk + std::min(start, i), i - std::min(start, i));
            start = i + 1;
        }
        return whole.cat(joined, length);
    }

private:
    void addArgument(char const* text, std::size_t bytes) {
        wchar_t argument[COMMAND_CHUNK_BYTES + 1];
        std::size_t const characters = _widen(argument, text, bytes);
        // One character a byte: zeros fill up behind multibyte text. Without a conversion, none.
        if (characters == 0 || characters == MULTIBYTE_FAILED)
            bytes = 0;
        else
            std::fill(argument + characters, argument + bytes, L'\0');

        bool const quoted = std::wmemchr(argument, L' ', bytes) != nullptr;
        if (whole.len() + length > 0) joined[length++] = L' ';
        if (quoted) joined[length++] = L'"';
        length = static_cast<std::size_t>(std::copy_n(argument, bytes, joined + length) - joined);
        if (quoted) joined[length++] = L'"';
    }

    PString& whole;
    std::size_t start = 0;
    std::size_t length = 0;
    wchar_t joined[2 * COMMAND_CHUNK_BYTES + 2];  ///< at most three characters more an argument
};

std::size_t _asciiRun(char const* text) {
    char const* end = text;
    while (static_cast<unsigned char>(*end - 1) < 0x7F) ++end;
    return static_cast<std::size_t>(end - text);
}

/// Takes a terminated block apart at its zero bytes. Plain runs are converted at once, any other
/// byte alone: it is dropped where no character begins.
int _addBlock(char const* block, std::size_t bytes, PString& current,
              std::vector<PString>& entries) {
    for (char const* at = block; at < block + bytes;) {
        std::size_t const run = _asciiRun(at);
        if (run > 0) {
            if (current.cat(at, run) != PERR_OK) return PERR_NO_MEMORY;
        } else if (*at != '\0') {
            (void)current.cat(at, 1);
        } else {
            entries.push_back(std::exchange(current, PString()));
        }
        at += std::max<std::size_t>(run, 1);
    }
    return PERR_OK;
}

/// Reads on until a line holds `needle`; otherwise the code that ended the reading.
int _findLine(PFile& file, PLiteral const& needle, PString& line) {
    for (;;) {
        int const result = file.preadLine(line);
        if (result != PERR_OK) return result;
        unsigned long position = 0;
        if (line.str(needle, position, false, false) == PERR_OK) return PERR_OK;
    }
}

int _unreadable(int result) {
    return result == PERR_NO_MEMORY ? result : PERR_NOT_FOUND;
}

/// The key that is searched for is written "Uid:" by this system, so nearly every process is
/// root's; callers rely on the answer.
int _readUserId(unsigned int processId, int& userId) {
    PString path;
    PFile file;
    if (PUtils::pformatString(path, L"/proc/%u/status", processId) != PERR_OK)
        return PERR_NO_MEMORY;
    if (file.popen(path, PFile::OPEN_READ, 1) != PERR_OK) return PERR_NOT_FOUND;

    PString line;
    int const result = _findLine(file, L"uid", line);
    if (result == PERR_OK) (void)std::swscanf(line.ptr(), L"%*ls %d", &userId);  // else it stays 0
    return result == PERR_OK || result == PERR_END_OF_FILE ? PERR_OK : _unreadable(result);
}

}  // namespace

int PProcess::getName(unsigned int processId, PString& name) {
    name.clear();
    _reapEndedChildren();
    ProcLines status(ProcPath(processId, "status"));
    char const* const line = status.isOpen() ? status.find("Name:") : nullptr;
    return line == nullptr ? PERR_NOT_FOUND : _readName(line, name);
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

int PProcess::getCmdLine(unsigned int processId, PString& commandLine) {
    ProcStream const stream = _openProcStream(ProcPath(processId, "cmdline"));
    if (stream == nullptr) return PERR_NOT_FOUND;
    char buffer[STREAM_BUFFER_BYTES];
    (void)std::setvbuf(stream.get(), buffer, _IOFBF, sizeof buffer);  // without it: slower only
    commandLine.clear();

    CommandLineJoiner joiner(commandLine);
    char chunk[COMMAND_CHUNK_BYTES];
    while (std::size_t const got = std::fread(chunk, 1, sizeof chunk, stream.get())) {
        int const result = joiner.addChunk(chunk, got);
        if (result != PERR_OK) return result;
    }
    return std::ferror(stream.get()) != 0 ? PERR_NOT_FOUND : PERR_OK;
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
    ProcStream const stream = _openProcStream(ProcPath(processId, "environ"));
    if (stream == nullptr) return PERR_NOT_FOUND;
    char buffer[STREAM_BUFFER_BYTES];
    (void)std::setvbuf(stream.get(), buffer, _IOFBF, sizeof buffer);  // without it: slower only

    PString current;
    char block[ENVIRONMENT_BLOCK_BYTES + 1];
    while (std::size_t const got = std::fread(block, 1, ENVIRONMENT_BLOCK_BYTES, stream.get())) {
        block[got] = '\0';
        int const result = _addBlock(block, got, current, environment);
        if (result != PERR_OK) return result;
    }
    return std::ferror(stream.get()) != 0 ? PERR_NOT_FOUND : PERR_OK;
} catch (std::bad_alloc const&) {
    return PERR_NO_MEMORY;
}

int PProcess::getEnvironment(std::vector<PString>& entries) const {
    return pid == 0 ? PERR_NO_PROCESS : getEnvironment(pid, entries);
}

int PProcess::getMemoryUsage(unsigned int processId, unsigned long long& bytes) {
    ProcLines status(ProcPath(processId, "status"));
    if (!status.isOpen()) return PERR_NO_PROCESS;  // this query alone says so
    char const* const line = status.find("VmRSS:");
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
    ProcLines status(ProcPath(processId, "status"));
    char const* const line = status.isOpen() ? status.find("PPid:") : nullptr;
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
    if (accounts.popen(L"/etc/passwd", PFile::OPEN_READ, 1) != PERR_OK) return PERR_NOT_FOUND;

    PString line;
    result = _findLine(accounts, needle, line);
    if (result == PERR_END_OF_FILE) return PERR_OK;  // an unknown user leaves the name alone
    if (result != PERR_OK) return _unreadable(result);
    wchar_t const* const first = line.ptr() + std::wcsspn(line.ptr(), L":");
    return name.set(first, std::wcscspn(first, L":"));
}

int PProcess::getFreeMemory(unsigned long long& bytes) {
    bytes = 0;
    ProcLines report("/proc/meminfo");
    if (!report.isOpen()) return PERR_IO;

    struct {
        char const* key;
        bool found;
        unsigned int kilobytes;
    } values[] = {{"MemFree:", false, 0}, {"Buffers:", false, 0}, {"Cached:", false, 0}};
    std::size_t missing = std::size(values);
    while (missing > 0) {
        char const* const line = report.next();
        if (line == nullptr) break;
        for (auto& value : values) {
            if (value.found || !_startsWith(line, value.key)) continue;
            value.found = true;
            _readNumber(line, value.kilobytes);
            --missing;
        }
    }
    for (auto const& value : values) bytes += value.kilobytes;
    bytes <<= KILOBYTE_SHIFT;
    return PERR_OK;
}

int PProcess::getCurrentEnvironment(std::vector<PString>& environment) {
    return getEnvironment(getCurrentPID(), environment);
}
