/// A descriptor that is closed when its holder is gone.
#ifndef PORTINGLAYER_FS_DESCRIPTOR_H
#define PORTINGLAYER_FS_DESCRIPTOR_H

#include <fcntl.h>
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

/// Moves a descriptor, which is close-on-exec, behind the three standard streams, where one of them
/// was closed and it got the place: there it would take what the program prints, and be handed to
/// the programs that are started. False, with errno, when the system has no other.
inline bool _leaveStandardStreams(Descriptor& descriptor) {
    if (!descriptor.isOpen() || descriptor.get() > STDERR_FILENO) return true;
    Descriptor moved(fcntl(descriptor.get(), F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
    if (!moved.isOpen()) return false;
    descriptor = std::move(moved);
    return true;
}

#endif
