/// Streams as their bytes are written down: "09 85 00 00 00 01 61".
#ifndef TESTS_DATA_BYTES_H
#define TESTS_DATA_BYTES_H

#include <string>
#include <vector>

using Bytes = std::vector<unsigned char>;

inline std::string hex(Bytes const& bytes) {
    std::string text;
    for (unsigned char const byte : bytes) {
        if (!text.empty()) text += ' ';
        text += "0123456789ABCDEF"[byte / 16];
        text += "0123456789ABCDEF"[byte % 16];
    }
    return text;
}

#endif
