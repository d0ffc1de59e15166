#include "process/pipe.h"

#include <fcntl.h>
#include <unistd.h>

bool _leaveStandardStreams(Descriptor& descriptor) {
    if (!descriptor.isOpen() || descriptor.get() > STDERR_FILENO) return true;
    Descriptor moved(fcntl(descriptor.get(), F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
    if (!moved.isOpen()) return false;
    descriptor = std::move(moved);
    return true;
}

bool Pipe::open() {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) return false;
    readEnd = Descriptor(ends[0]);
    writeEnd = Descriptor(ends[1]);
    return _leaveStandardStreams(readEnd) && _leaveStandardStreams(writeEnd);
}
