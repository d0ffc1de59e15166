/// How the bytes of a stream are laid out: markers, and integers most significant byte first.
#ifndef PORTINGLAYER_DATA_WIRE_H
#define PORTINGLAYER_DATA_WIRE_H

#include <cstddef>
#include <type_traits>
#include <utility>
#include <vector>

#include <portinglayer/data_streams.h>

constexpr unsigned char NUMBER_TAG = 0x07;
constexpr unsigned char STRING_TAG = 0x09;
constexpr unsigned char TEXT_TAG = 0x85;
constexpr unsigned char STRING_LIST_TAG = 0x89;

constexpr std::size_t TAGGED_BYTES = 5;  // a marker and the 4 bytes of a count, length or number

// Shifts mean the same on every machine. Written out for each byte, reading is compiled to one
// swapped move, which a loop is not; writing is so either way.

template <typename Bits, std::size_t... INDEX>
Bits _joined(unsigned char const* from, std::index_sequence<INDEX...> /*all its bytes*/) {
    return static_cast<Bits>((... | (Bits{from[INDEX]} << 8U * (sizeof(Bits) - 1 - INDEX))));
}

template <typename Integer>
Integer _load(unsigned char const* from) {
    using Bits = std::make_unsigned_t<Integer>;
    return static_cast<Integer>(_joined<Bits>(from, std::make_index_sequence<sizeof(Bits)>()));
}

template <typename Integer>
void _store(unsigned char* to, Integer value) {
    auto const bits = static_cast<std::make_unsigned_t<Integer>>(value);
    for (std::size_t i = 0; i < sizeof bits; ++i)
        to[i] = static_cast<unsigned char>(bits >> 8U * (sizeof bits - 1 - i));
}

/// Bytes from a position to the end of the stream. What is wanted is compared with them, so that no
/// sum of a position and a length from a stream can wrap.
inline std::size_t _left(std::vector<unsigned char> const& bytes, std::size_t offset) {
    return offset < bytes.size() ? bytes.size() - offset : 0;
}

#endif
