/// A descriptor that is closed when its holder is gone.
#ifndef PORTINGLAYER_FS_DESCRIPTOR_H
#define PORTINGLAYER_FS_DESCRIPTOR_H

#include <unistd.h>

#include <utility>

#include "sync/uncancelled.h"

/// Closing it is no cancellation point.
class Descriptor {
public:
    explicit Descriptor(int number = -1) : fd(number) {}
    Descriptor(Descriptor&& o) noexcept : fd(std::exchange(o.fd, -1)) {}
    Descriptor& operator=(Descriptor&& o) noexcept {
        std::swap(fd, o.fd);
        return *this;
    }
    ~Descriptor() { (void)close(); }

    int get() const { return fd; }
    bool isOpen() const { return fd != -1; }

    /// Hands it over to the caller, who closes it.
    int release() { return std::exchange(fd, -1); }

    /// What the system says of it; the descriptor is gone in any case.
    int close() {
        Uncancelled const untilClosed;
        return fd == -1 ? 0 : ::close(std::exchange(fd, -1));
    }

private:
    int fd;
};

#endif
