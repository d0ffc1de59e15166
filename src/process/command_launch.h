/// How a command becomes a child process.
#ifndef PORTINGLAYER_PROCESS_COMMAND_LAUNCH_H
#define PORTINGLAYER_PROCESS_COMMAND_LAUNCH_H

#include <sys/types.h>

#include "process/command_settings.h"
#include "process/command_streams.h"

/// Starts the program as the settings say, but with these streams, and gives its id and the
/// caller's ends of the pipes; both are written only on success. Codes as PCommand::start. Throws
/// std::bad_alloc.
int _launch(CommandSettings const& settings, StreamModes const& streams, pid_t& child,
            CommandStreams& ours);

#endif
