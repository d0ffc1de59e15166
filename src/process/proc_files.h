/// How the process files of the system are opened, read by line, and how ended children are reaped.
#ifndef PORTINGLAYER_PROCESS_PROC_FILES_H
#define PORTINGLAYER_PROCESS_PROC_FILES_H

#include <cstddef>
#include <cstdio>
#include <memory>

#include <portinglayer/strings.h>

struct CloseStream {
    void operator()(std::FILE* stream) const { (void)std::fclose(stream); }
};

using ProcStream = std::unique_ptr<std::FILE, CloseStream>;

/// Opens for reading, close-on-exec from the start, so that a program started meanwhile on another
/// thread inherits nothing. Null when the file cannot be opened.
ProcStream _openProcStream(char const* path);

/// The path "/proc/ENTRY/FILE".
class ProcPath {
public:
    ProcPath(unsigned int processId, char const* file);
    ProcPath(char const* entry, char const* file);

    operator char const*() const { return text; }

private:
    static constexpr std::size_t PATH_BYTES = 128;

    char text[PATH_BYTES];
};

/// A file read line by line, each call giving at most 255 bytes: a longer line comes in pieces.
class ProcLines {
public:
    explicit ProcLines(char const* path);

    bool isOpen() const { return stream != nullptr; }

    /// The next line with its line end, valid until the next call; null at the end of the file or
    /// when it cannot be read any further.
    char const* next();

    /// The next line that begins with `key`; the lines before it are skipped. Null without one.
    char const* find(char const* key);

private:
    static constexpr std::size_t LINE_BYTES = 256;
    static constexpr std::size_t BUFFER_BYTES = 4096;

    char line[LINE_BYTES];
    char
        buffer[BUFFER_BYTES];  ///< of the stream: spares it an allocation and the call for its size
    ProcStream stream;         ///< closed before its buffer goes
};

/// Whether a line begins with a key.
bool _startsWith(char const* line, char const* key);

/// Reads the whole number that follows the key of a line such as "VmRSS:     1000 kB"; `value` is
/// left alone without one.
void _readNumber(char const* line, unsigned int& value);

/// Reads the name of a "Name:" line without the white space around it.
int _readName(char const* line, PString& name);

/// Collects every ended child of the calling process without waiting, and drops how they ended.
void _reapEndedChildren();

#endif
