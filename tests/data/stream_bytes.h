/// Streams written out in hexadecimal, and the locale that a text is converted in.
#ifndef TESTS_DATA_STREAM_BYTES_H
#define TESTS_DATA_STREAM_BYTES_H

#include <clocale>
#include <cstdio>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <portinglayer/data_streams.h>

using Bytes = std::vector<unsigned char>;

inline Bytes bytes(std::string const& hex) {
    Bytes result;
    std::istringstream in(hex);
    for (unsigned int value; in >> std::hex >> value;)
        result.push_back(static_cast<unsigned char>(value));
    return result;
}

inline std::string hex(Bytes const& bytes) {
    std::string result;
    for (unsigned char const byte : bytes) {
        char digits[4];
        (void)snprintf(digits, sizeof digits, result.empty() ? "%02X" : " %02X", byte);
        result += digits;
    }
    return result;
}

/// Sets the character-type locale and restores what was set before.
struct LocaleGuard {
    explicit LocaleGuard(char const* name) : before(setlocale(LC_CTYPE, nullptr)) {
        EXPECT_NE(setlocale(LC_CTYPE, name), nullptr) << name;
    }
    ~LocaleGuard() { setlocale(LC_CTYPE, before.c_str()); }

    std::string const before;
};

#endif
