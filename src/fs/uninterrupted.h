/// System calls that a signal ends early.
#ifndef PORTINGLAYER_FS_UNINTERRUPTED_H
#define PORTINGLAYER_FS_UNINTERRUPTED_H

#include <cerrno>

/// Makes a call again for as long as signals end it, and gives its result.
template <typename Call>
auto _uninterrupted(Call const& call) {
    auto result = call();
    while (result == -1 && errno == EINTR) result = call();
    return result;
}

#endif
