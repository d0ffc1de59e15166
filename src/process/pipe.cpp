#include "process/pipe.h"

#include <fcntl.h>
#include <unistd.h>

bool Pipe::open() {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) return false;
    readEnd = Descriptor(ends[0]);
    writeEnd = Descriptor(ends[1]);
    return _leaveStandardStreams(readEnd) && _leaveStandardStreams(writeEnd);
}
