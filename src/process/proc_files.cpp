#include "process/proc_files.h"

#include <cstring>

#include <sys/wait.h>

#include "sync/uncancelled.h"
#include "text/multibyte.h"

void CloseStream::operator()(std::FILE* stream) const {
    Uncancelled const whole;
    (void)std::fclose(stream);
}

ProcStream _openProcStream(char const* path) {
    // Not cancelled in between (the C library's "c"): a thread that ended there would leak a
    // stream.
    return ProcStream(std::fopen(path, "rec"));
}

ProcPath::ProcPath(unsigned int processId, char const* file) {
    (void)std::snprintf(text, sizeof text, "/proc/%u/%s", processId, file);
}

ProcFile::ProcFile(char const* path) : stream(_openProcStream(path)) {
    if (stream == nullptr) return;
    (void)std::setvbuf(stream.get(), buffer, _IOFBF, sizeof buffer);  // without it: slower only
}

std::size_t ProcFile::read(char* block, std::size_t bytes) {
    return std::fread(block, 1, bytes, stream.get());
}

bool ProcFile::failed() const {
    return std::ferror(stream.get()) != 0;
}

char* ProcFile::nextLine() {
    return std::fgets(line, sizeof line, stream.get());
}

char* ProcFile::findLine(char const* key) {
    while (char* const found = nextLine())
        if (_startsWith(found, key)) return found;
    return nullptr;
}

bool _startsWith(char const* line, char const* key) {
    return std::strncmp(line, key, std::strlen(key)) == 0;
}

void _readNumber(char const* line, unsigned int& value) {
    (void)std::sscanf(line, "%*s %u", &value);
}

int _convertText(char const* text, PString& out) {
    wchar_t characters[ProcFile::LINE_BYTES];
    std::size_t const count = _widen(characters, text, ProcFile::LINE_BYTES);
    return count == MULTIBYTE_FAILED ? PERR_CONVERSION : out.set(characters, count);
}

int _readName(char* line, PString& name) {
    // The line end goes first: a conversion reads on where characters have several bytes.
    char* const text = line + std::strlen("Name:");
    text[std::strcspn(text, "\n")] = '\0';
    int const result = _convertText(text, name);
    return result == PERR_OK ? name.trim() : result;
}

void _reapEndedChildren() {
    while (waitpid(0, nullptr, WNOHANG) > 0) {}
}

bool _reapIfEnded(unsigned int processId) {
    return waitpid(static_cast<pid_t>(processId), nullptr, WNOHANG) != 0;
}
