/// Pipes.
#ifndef PORTINGLAYER_PROCESS_PIPE_H
#define PORTINGLAYER_PROCESS_PIPE_H

#include "fs/descriptor.h"

/// A pipe, both ends close-on-exec and behind the standard streams.
struct Pipe {
    Descriptor readEnd, writeEnd;

    /// False, with errno, when the system refuses.
    bool open();
};

#endif
