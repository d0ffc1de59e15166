/// @file
/// Locks that processes share by the name of a file, gone when their holder is.
#ifndef PORTINGLAYER_FILE_LOCKS_H
#define PORTINGLAYER_FILE_LOCKS_H

#include <portinglayer/strings.h>

/// A lock that at most one object holds at a time, among all processes of the machine. The system
/// releases it when its holder ends, in whatever way. It is a `flock` on a file, so it keeps out
/// other objects of this class, in the same process too, and each PFile that is opened with the
/// lock.
///
/// The file is made where it is missing, with mode 0666 less the umask; its content is not touched,
/// and it is never removed. Names become UTF-8 as a whole in every locale; backslashes and white
/// space stay.
/// @warning Leave the file where it is, and lock one that nobody replaces or removes, such as
///          "data.lock" beside "data": a holder keeps the file that it locked, and whoever locks
///          the name afterwards locks the new one. A PReplacement replaces the file it is used on.
///
/// Threads: one object is used by one thread at a time. `lock` is a cancellation point while it
/// waits. Children: they do not inherit the lock. In a forked child the object holds nothing, and
/// the lock ends with its holder also where children live on. (A child made past the handlers of
/// fork, as `_Fork` and `clone` do, does not release it either, but keeps it from ending with its
/// holder until the child has ended or become another program.)
class PORTINGLAYER_EXPORT PFileLock {
public:
    /// Holds nothing.
    PFileLock();

    /// Unlocks.
    virtual ~PFileLock();

    PFileLock(PFileLock const&) = delete;
    PFileLock& operator=(PFileLock const&) = delete;

    /// Takes the lock, waiting for it where another holds it.
    ///
    /// A lock that comes free is taken within 20 ms, in no order among those who wait. Where the
    /// name was removed or replaced meanwhile, what stands there now is locked.
    /// @param name          a regular file, or one to be made
    /// @param milliseconds  how long to wait at most: 0 tries once, PCommand::FOREVER (4294967295)
    ///                      waits without end
    /// @return PERR_OK
    /// @return PERR_INVALID_ARGUMENT  the name is empty or holds a zero character
    /// @return PERR_BAD_FORMAT        UTF-8 cannot hold the name
    /// @return PERR_ALREADY_OPEN      this object holds a lock, and keeps it
    /// @return PERR_LOCKED            the time is over, and another holds the lock
    /// @return PERR_NO_SUCH_FILE      the folder is missing, or a part of its path is no folder
    /// @return PERR_REFUSED           no permission, a read-only system, something else than a
    ///                                regular file, symbolic links in a ring
    /// @return PERR_NO_MEMORY         no memory
    /// @return PERR_SYSTEM            no space for a new file, no descriptors or locks left, a name
    ///                                that is too long
    /// After a failure nothing is held, but for PERR_ALREADY_OPEN.
    /// Blocks: for `milliseconds` at most; a signal ends nothing early.
    [[nodiscard]] int lock(PLiteral const& name, unsigned int milliseconds);

    /// Releases the lock.
    ///
    /// @return PERR_OK
    /// @return PERR_NOT_OPEN  this object holds none, or it was locked by the process that this one
    ///                        was forked from
    [[nodiscard]] int unlock();

private:
    friend struct HeldLocks;  // within the library: those that a forked child gives up

    int attempt(char const* path);
    void release();

    PFileLock* next;  ///< among those that are held
    int fd;           ///< -1 where nothing is held
    int holder;       ///< the process that locked
};

#endif
