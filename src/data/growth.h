/// How vectors of the caller grow where a failure is a code: no exception comes out.
#ifndef PORTINGLAYER_DATA_GROWTH_H
#define PORTINGLAYER_DATA_GROWTH_H

#include <cstddef>
#include <new>
#include <type_traits>
#include <utility>
#include <vector>

#include <portinglayer/result_codes.h>

/// Makes the stream longer by `count` zero bytes. Returns the first of them, or null where there is
/// no memory for them.
inline unsigned char* _extend(std::vector<unsigned char>& stream, std::size_t count) noexcept {
    std::size_t const old = stream.size();
    try {
        stream.resize(old + count);
    } catch (std::bad_alloc const&) {
        return nullptr;
    }
    return stream.data() + old;
}

/// Appends what was read to a list.
template <typename Item>
int _appendRead(std::vector<Item>& list, std::type_identity_t<Item>&& item) noexcept {
    try {
        list.push_back(std::move(item));
    } catch (std::bad_alloc const&) {
        return PERR_NO_MEMORY;
    }
    return PERR_OK;
}

#endif
