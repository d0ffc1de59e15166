/// How the process files of the system are opened and read, and how ended children are reaped.
#ifndef PORTINGLAYER_PROCESS_PROC_FILES_H
#define PORTINGLAYER_PROCESS_PROC_FILES_H

#include <cstddef>
#include <cstdio>
#include <memory>

#include <portinglayer/strings.h>

struct CloseStream {
    void operator()(std::FILE* stream) const;
};

using ProcStream = std::unique_ptr<std::FILE, CloseStream>;

/// Opens for reading, close-on-exec from the start, so that a program started meanwhile on another
/// thread inherits nothing. Null when the file cannot be opened.
ProcStream _openProcStream(char const* path);

/// The path "/proc/PROCESS/FILE".
class ProcPath {
public:
    ProcPath(unsigned int processId, char const* file);

    operator char const*() const { return text; }

private:
    static constexpr std::size_t PATH_BYTES = 32;

    char text[PATH_BYTES];
};

/// Whether a line begins with a key.
bool _startsWith(char const* line, char const* key);

/// A file that is read from its beginning to its end, in blocks or by line, each line call giving
/// at most 255 bytes: a longer line comes in pieces.
class ProcFile {
public:
    static constexpr std::size_t LINE_BYTES = 256;

    explicit ProcFile(char const* path);
    ProcFile(ProcFile const&) = delete;  // the stream points into its buffer
    ProcFile& operator=(ProcFile const&) = delete;

    bool isOpen() const { return stream != nullptr; }

    /// Reads a block: fewer bytes than asked for at the end of the file or after a failure.
    std::size_t read(char* block, std::size_t bytes);
    bool failed() const;

    /// The next line with its line end, the caller's until the next call; null at the end of the
    /// file or when it cannot be read any further.
    char* nextLine();

    /// The next line that begins with `key`; the lines before it are skipped. Null without one.
    char* findLine(char const* key);

    /// Gives the first line of each key to `take(index of the key, line)`, in the order of the
    /// file, and reads no further than needed. False when a key has no line.
    template <std::size_t COUNT, class Take>
    bool takeFirstLines(char const* const (&keys)[COUNT], Take const& take) {
        bool taken[COUNT] = {};
        for (std::size_t missing = COUNT; missing > 0;) {
            char* const next = nextLine();
            if (next == nullptr) return false;
            for (std::size_t i = 0; i < COUNT; ++i) {
                if (taken[i] || !_startsWith(next, keys[i])) continue;
                taken[i] = true;
                --missing;
                take(i, next);
            }
        }
        return true;
    }

private:
    static constexpr std::size_t BUFFER_BYTES = 4096;

    char line[LINE_BYTES];
    char buffer[BUFFER_BYTES];  ///< spares the stream an allocation and the call for its size
    ProcStream stream;          ///< closed before its buffer goes
};

/// Reads the whole number that follows the key of a line such as "VmRSS:     1000 kB"; `value` is
/// left alone without one.
void _readNumber(char const* line, unsigned int& value);

/// Makes characters of a terminated text of at most 255 bytes, exactly as many as it has.
/// PERR_CONVERSION where the locale cannot, with `out` left alone; PERR_NO_MEMORY, with `out`
/// empty.
int _convertText(char const* text, PString& out);

/// Reads the name of a "Name:" line without the white space around it, cutting the line at its end;
/// codes as `_convertText`.
int _readName(char* line, PString& name);

/// Collects every ended child of the calling process without waiting, and drops how they ended.
void _reapEndedChildren();

/// Collects one child if it has ended, without waiting. False only while it runs.
bool _reapIfEnded(unsigned int processId);

#endif
