/// Upper case in the locale, remembered.
#ifndef PORTINGLAYER_TEXT_UPPER_CASE_H
#define PORTINGLAYER_TEXT_UPPER_CASE_H

#include <cwctype>

/// Upper case of the characters seen before: a text uses few, and asking the locale for each costs
/// more than comparing. An empty slot reads as character 0, which is its own upper case.
class UpperCase {
public:
    wchar_t operator()(wchar_t c) {
        Slot& slot = slots[static_cast<unsigned>(c) % SLOTS];
        if (slot.character != c) slot = {c, ask(c)};
        return slot.upper;
    }

    static wchar_t ask(wchar_t c) { return static_cast<wchar_t>(towupper(static_cast<wint_t>(c))); }

private:
    static constexpr unsigned SLOTS = 128;
    struct Slot {
        wchar_t character;
        wchar_t upper;
    };
    Slot slots[SLOTS] = {};
};

#endif
