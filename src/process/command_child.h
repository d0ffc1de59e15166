/// The child of a command: held by a process descriptor, awaited, signalled and ended.
#ifndef PORTINGLAYER_PROCESS_COMMAND_CHILD_H
#define PORTINGLAYER_PROCESS_COMMAND_CHILD_H

#include <sys/types.h>

#include <portinglayer/commands.h>

#include "fs/descriptor.h"
#include "sync/deadline.h"

/// Tells before anything is started whether a child could be held: PERR_OK or the code of `start`.
int _canHoldChildren();

/// The latest child. What it is signalled or awaited through is its process descriptor, and its
/// group is signalled only while the child, collected or not, is known to keep the id of the group
/// in use.
class CommandChild {
public:
    /// Holds a child that was just started. On PERR_SYSTEM and PERR_NO_MEMORY it could not be held:
    /// it was killed and collected, and what was held before stays.
    int hold(pid_t child, bool leadsGroup);

    /// Whether a child was started that nobody has collected.
    bool isHeld();

    /// A descriptor that becomes readable when the child has ended.
    int descriptor() const { return process.get(); }
    pid_t id() const { return pid; }  ///< 0 before the first

    /// Collects the child if it ends in time.
    int await(PEnding& how, Deadline const& until);
    int signal(int number) const;
    int end(PEnding& how, Deadline const& grace);

    /// Kills what runs of the group, in the foreground the child alone.
    int kill();

private:
    int collect(PEnding& how);
    int signalGroup(int number);
    /// Waits until neither the child nor another of its group runs. Collects none.
    int awaitGroup(Deadline const& until);

    Descriptor process;  ///< open from a start to the next, but for a child that was lost at once
    pid_t pid = 0;
    bool grouped = false;      ///< the child leads a group
    bool uncollected = false;  ///< as far as is known here
    bool collected = false;    ///< by this object, as `ending` says
    PEnding ending{};
};

#endif
