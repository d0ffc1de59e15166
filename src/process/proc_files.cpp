#include "process/proc_files.h"

#include <cstring>

#include <sys/wait.h>

ProcStream _openProcStream(char const* path) {
    return ProcStream(std::fopen(path, "re"));
}

ProcPath::ProcPath(unsigned int processId, char const* file) {
    (void)std::snprintf(text, sizeof text, "/proc/%u/%s", processId, file);
}

ProcPath::ProcPath(char const* entry, char const* file) {
    (void)std::snprintf(text, sizeof text, "/proc/%s/%s", entry, file);
}

ProcLines::ProcLines(char const* path) : stream(_openProcStream(path)) {
    if (stream == nullptr) return;
    (void)std::setvbuf(stream.get(), buffer, _IOFBF, sizeof buffer);  // without it: slower only
}

char const* ProcLines::next() {
    return std::fgets(line, sizeof line, stream.get());
}

char const* ProcLines::find(char const* key) {
    while (char const* const found = next())
        if (_startsWith(found, key)) return found;
    return nullptr;
}

bool _startsWith(char const* line, char const* key) {
    return std::strncmp(line, key, std::strlen(key)) == 0;
}

void _readNumber(char const* line, unsigned int& value) {
    (void)std::sscanf(line, "%*s %u", &value);
}

int _readName(char const* line, PString& name) {
    // The line end is left out here: behind multibyte text `trim` would not reach it.
    char const* const text = line + std::strlen("Name:");
    int const result = name.set(text, std::strcspn(text, "\n"));
    return result == PERR_OK ? name.trim() : result;
}

void _reapEndedChildren() {
    while (waitpid(0, nullptr, WNOHANG) > 0) {}
}
