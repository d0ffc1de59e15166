/// Whether processes of a group run.
#ifndef PORTINGLAYER_PROCESS_PROCESS_GROUP_H
#define PORTINGLAYER_PROCESS_PROCESS_GROUP_H

#include <sys/types.h>

/// Finds a process of the group that has not ended. 0 when none is left; the id of the caller when
/// the system does not tell, so that nobody takes the group for gone.
pid_t _runningMember(pid_t group);

#endif
