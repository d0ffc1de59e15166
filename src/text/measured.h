/// The lengths that callers give beside a text.
#ifndef PORTINGLAYER_TEXT_MEASURED_H
#define PORTINGLAYER_TEXT_MEASURED_H

#include <cstring>
#include <cwchar>

#include <portinglayer/strings.h>

/// The length that `n` stands for; nothing of a null text is read.
inline unsigned long _measured(wchar_t const* s, unsigned long n = P_WHOLE_STRING) {
    if (s == nullptr) return 0;
    return n == P_WHOLE_STRING ? wcslen(s) : n;
}

inline unsigned long _measured(char const* s, unsigned long n) {
    if (s == nullptr) return 0;
    return n == P_WHOLE_STRING ? strlen(s) : n;
}

#endif
