/// @file
/// Reading lines with the system calls that the library's line reading is bound to: blocks of 128
/// bytes, and one seek back behind the line feed.
#ifndef PORTINGLAYER_BENCH_BARE_LINES_H
#define PORTINGLAYER_BENCH_BARE_LINES_H

#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <string>

/// Reads the next line into `line`; false at the end of the file.
inline bool bareLine(int fd, std::wstring& line) {
    signed char block[128];
    line.clear();
    bool any = false;
    for (ssize_t got = 0; (got = read(fd, block, sizeof block)) > 0; any = true) {
        auto const bytes = static_cast<std::size_t>(got);
        auto const* const end = static_cast<signed char const*>(memchr(block, '\n', bytes));
        auto const* const stop = end != nullptr ? end : block + bytes;
        std::size_t const before = line.size();
        line.resize(before + static_cast<std::size_t>(stop - block));
        std::copy(static_cast<signed char const*>(block), stop,
                  line.begin() + static_cast<std::ptrdiff_t>(before));
        if (end == nullptr) continue;
        if (auto const behind = block + bytes - (end + 1); behind > 0) lseek(fd, -behind, SEEK_CUR);
        return true;
    }
    return any;
}

#endif
