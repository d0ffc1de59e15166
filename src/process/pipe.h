/// Pipes, and descriptors that must not be taken for a standard stream.
#ifndef PORTINGLAYER_PROCESS_PIPE_H
#define PORTINGLAYER_PROCESS_PIPE_H

#include "fs/descriptor.h"

/// Moves a descriptor, which is close-on-exec, behind the three standard streams, where one of them was
/// closed and it got the place. False, with errno, when the system has no other.
bool _leaveStandardStreams(Descriptor& descriptor);

/// A pipe, both ends close-on-exec and behind the standard streams.
struct Pipe {
    Descriptor readEnd, writeEnd;

    /// False, with errno, when the system refuses.
    bool open();
};

#endif
