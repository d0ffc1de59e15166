/// Buffers for text that a caller may give any length.
#ifndef PORTINGLAYER_TEXT_ALLOCATION_H
#define PORTINGLAYER_TEXT_ALLOCATION_H

#include <cstddef>
#include <cstdint>
#include <new>

/// Allocates `first + second + spare` uninitialised characters with array new. Null when no memory
/// is left, and when the sum wraps or is more than any object can hold. Inline, or copies call it.
template <typename Character>
inline Character* _newText(std::size_t first, std::size_t second, std::size_t spare) {
    constexpr std::size_t MOST = PTRDIFF_MAX / sizeof(Character);
    if (spare > MOST || first > MOST - spare || second > MOST - spare - first) return nullptr;
    try {
        // The nothrow form calls this one: a tenth of the time of copying 64 characters.
        return new Character[first + second + spare];
    } catch (std::bad_alloc const&) {
        return nullptr;
    }
}

#endif
