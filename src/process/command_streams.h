/// The caller's ends of the streams of a command.
#ifndef PORTINGLAYER_PROCESS_COMMAND_STREAMS_H
#define PORTINGLAYER_PROCESS_COMMAND_STREAMS_H

#include <array>
#include <string>

#include <sys/types.h>

#include "fs/descriptor.h"
#include "sync/deadline.h"

/// Input, output and errors of the child, in the order of their numbers; closed where they are not
/// piped.
using CommandStreams = std::array<Descriptor, 3>;

/// As the system's write and read, but that no signal ends them early, nor does a SIGPIPE come of a
/// pipe that nobody reads.
ssize_t _writeSome(Descriptor const& to, char const* bytes, std::size_t length);
ssize_t _readSome(Descriptor const& from, char* buffer, std::size_t length);

/// Feeds a child and reads both of its outputs at once, until they have ended and the child too.
class CommandExchange {
public:
    /// Streams that end are closed. `process` is a descriptor that becomes readable when the child
    /// has ended. What is given has to outlive the object.
    CommandExchange(CommandStreams& pipes, int process, std::string const& bytes)
        : streams(pipes), child(process), input(bytes) {}

    /// PERR_PROCESS_RUNNING when the time is over, otherwise codes as PCommand::run.
    int go(Deadline const& until);

    std::string output, errors;  ///< what was read

private:
    bool isDone() const;
    int step(Deadline const& until);
    int feed();
    static int take(Descriptor& stream, std::string& text);

    CommandStreams& streams;
    int child;  ///< negative when it has ended
    std::string const& input;
    std::size_t written = 0;
};

#endif
