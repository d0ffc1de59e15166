/// Part of a text as it stands: what is around it must not count.
#ifndef TESTS_TEXT_VIEW_H
#define TESTS_TEXT_VIEW_H

#include <portinglayer/strings.h>

struct View : PLiteral {
    View(wchar_t const* characters, unsigned long count) {
        text = characters;
        length = count;
    }
};

#endif
