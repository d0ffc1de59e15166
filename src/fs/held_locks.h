/// The locks on files that this process holds, for its forked children to give up.
#ifndef PORTINGLAYER_FS_HELD_LOCKS_H
#define PORTINGLAYER_FS_HELD_LOCKS_H

#include <portinglayer/file_locks.h>

#include "fs/descriptor.h"

/// A forked child has a copy of every descriptor, and as long as one copy is open the lock does not
/// end with its holder: each child closes its copies before anything else is run in it. Nothing but
/// the list is changed while its mutex is held, so that no fork waits for a file.
struct HeldLocks {
    /// Has forks watched from now on. False without memory for it.
    static bool watchForks();

    /// How often the process was forked.
    static unsigned int forks();

    /// Adds a lock and hands it the file that was opened for it since `forks` were counted. False
    /// when a child forked meanwhile has the file, too: nothing is added.
    static bool add(PFileLock& lock, Descriptor& file, unsigned int forks);

    /// Takes a lock out and closes its descriptor.
    static void close(PFileLock& lock);

private:
    static void giveUp();
};

#endif
