/// How a finished buffer becomes the characters of a string without another copy.
#ifndef PORTINGLAYER_TEXT_ADOPTED_TEXT_H
#define PORTINGLAYER_TEXT_ADOPTED_TEXT_H

#include <memory>

#include <portinglayer/strings.h>

struct AdoptedText {
    /// Makes `buffer` the content of `to`. It has room for exactly `length` characters and their
    /// terminator, which it holds: strings have no spare capacity.
    static void give(PString& to, std::unique_ptr<wchar_t[]> buffer, unsigned long length) {
        to.clear();
        to.text = buffer.release();
        to.length = length;
    }
};

#endif
