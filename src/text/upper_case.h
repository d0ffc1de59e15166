/// Upper case in the locale, remembered.
#ifndef PORTINGLAYER_TEXT_UPPER_CASE_H
#define PORTINGLAYER_TEXT_UPPER_CASE_H

#include <cwctype>

/// Upper case of the characters seen before: a text uses few, and asking the locale for each costs
/// more than comparing. An empty slot reads as character 0, which is its own upper case.
class UpperCase {
public:
    UpperCase() { upper[0] = L'\0'; }  // the others are written before they are read

    bool knows(wchar_t c) const { return seen[slotOf(c)] == c; }

    wchar_t operator()(wchar_t c) {
        unsigned const slot = slotOf(c);
        if (!knows(c)) {
            seen[slot] = c;
            upper[slot] = ask(c);
        }
        return upper[slot];
    }

    static wchar_t ask(wchar_t c) { return static_cast<wchar_t>(towupper(static_cast<wint_t>(c))); }

private:
    static constexpr unsigned SLOTS = 128;
    static unsigned slotOf(wchar_t c) { return static_cast<unsigned>(c) % SLOTS; }

    wchar_t seen[SLOTS] = {};
    wchar_t upper[SLOTS];
};

#endif
