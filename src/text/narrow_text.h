/// The multibyte copy of a text, for the duration of a system call.
#ifndef PORTINGLAYER_TEXT_NARROW_TEXT_H
#define PORTINGLAYER_TEXT_NARROW_TEXT_H

#include <cstddef>
#include <memory>

#include <portinglayer/strings.h>

/// Holds a text converted exactly as `PLiteral::ascii` would (same cut, same failures), in a buffer
/// on the stack when it is short, and releases it. Names given to the system go through it.
class NarrowText {
public:
    explicit NarrowText(PLiteral const& text);
    NarrowText(NarrowText const&) = delete;
    NarrowText& operator=(NarrowText const&) = delete;

    /// The terminated copy; null when the text is empty, cannot be converted, or no memory is left.
    char const* get() const { return copy; }

private:
    static constexpr std::size_t SHORT_BYTES = 512;

    char* copy = nullptr;
    std::unique_ptr<char[]> longBuffer;
    char shortBuffer[SHORT_BYTES];
};

#endif
