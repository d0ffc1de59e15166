/// How the bytes of a stream are laid out: markers, and integers most significant byte first.
#ifndef PORTINGLAYER_DATA_WIRE_H
#define PORTINGLAYER_DATA_WIRE_H

#include <cstddef>
#include <cstring>
#include <new>
#include <vector>

#include <portinglayer/data_streams.h>

constexpr unsigned char NUMBER_TAG = 0x07;
constexpr unsigned char STRING_TAG = 0x09;
constexpr unsigned char TEXT_TAG = 0x85;
constexpr unsigned char STRING_LIST_TAG = 0x89;

constexpr std::size_t TAGGED_BYTES = 5;  // a marker and the 4 bytes of a count, length or number

/// The bytes of a value between host and stream order, the same step both ways.
template <typename Integer>
Integer _swapped(Integer value) {
    if (getEndianness() == 0) return value;
    if constexpr (sizeof value == 2)
        return static_cast<Integer>(__builtin_bswap16(static_cast<unsigned short>(value)));
    else if constexpr (sizeof value == 4)
        return static_cast<Integer>(__builtin_bswap32(static_cast<unsigned int>(value)));
    else
        return static_cast<Integer>(__builtin_bswap64(static_cast<unsigned long>(value)));
}

template <typename Integer>
Integer _load(unsigned char const* from) {
    Integer value;
    memcpy(&value, from, sizeof value);
    return _swapped(value);
}

template <typename Integer>
void _store(unsigned char* to, Integer value) {
    value = _swapped(value);
    memcpy(to, &value, sizeof value);
}

/// Bytes from a position to the end of the stream. What is wanted is compared with them, so that no
/// sum of a position and a length from a stream can wrap.
inline std::size_t _left(std::vector<unsigned char> const& bytes, std::size_t offset) {
    return offset < bytes.size() ? bytes.size() - offset : 0;
}

/// Makes the vector longer by `count` zero bytes; returns the first of them, or null where there is
/// no memory for them.
inline unsigned char* _extend(std::vector<unsigned char>& bytes, std::size_t count) noexcept {
    std::size_t const old = bytes.size();
    try {
        bytes.resize(old + count);
    } catch (std::bad_alloc const&) {
        return nullptr;
    }
    return bytes.data() + old;
}

#endif
