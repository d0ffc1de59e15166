/// @file
/// Locks, condition variables and semaphores, within a process and between processes.
#ifndef PORTINGLAYER_SYNCHRONISATION_H
#define PORTINGLAYER_SYNCHRONISATION_H

#include <memory>

#include <semaphore.h>
#include <sys/types.h>

#include <portinglayer/export.h>
#include <portinglayer/result_codes.h>
#include <portinglayer/strings.h>

/// A lock, in one of two forms chosen at construction. The unnamed form is a recursive mutex of
/// this process: its owner may lock it again and unlocks it as often. The named form is a system
/// semaphore with initial value 1, shared by every process that opens the same name: it has no
/// owner and no recursion. A lock has two states, without handle (at first, and after `close`) and
/// with handle (after a successful `init`); without handle it excludes nothing.
///
/// Threads: `lock` and `unlock` from any, at the same time; `init`, `close` and the destructor must
/// not overlap any other call on the same object. Only `lock` of the named form is a cancellation
/// point.
class PORTINGLAYER_EXPORT PMutex {
public:
    /// Makes an unnamed lock, without handle.
    PMutex();

    /// Makes a named lock, without handle.
    ///
    /// The name is copied as multibyte text of the current locale, cut to as many bytes as it has
    /// characters (so keep to ASCII), and neither checked nor changed further: the caller gives
    /// what the system takes as a semaphore name, a slash first and none after it. A name that is
    /// empty, cannot be converted, or finds no memory is kept as an invalid one, which `init`
    /// reports.
    /// @param name  the system-wide name, such as L"/product-lock"
    explicit PMutex(PLiteral const& name);

    /// Closes the lock as `close` does, its result ignored, and releases the stored name.
    ///
    /// @warning Destroying an initialised named lock removes its name from the system: keep the
    ///          object alive for as long as other processes have yet to open the name. A forked
    ///          child that calls `exit`, as one of a failed PProcess::start does, destroys static
    ///          objects, too: keep named locks local.
    virtual ~PMutex();

    PMutex(PMutex const&) = delete;
    PMutex& operator=(PMutex const&) = delete;

    /// Creates the unnamed lock, or creates or opens the named one.
    ///
    /// A created name is free (unlocked) and open to processes of the same user and group (mode
    /// 0770, less the process's umask: under the common 022 to the user's only). When the system
    /// answers that a name of 13 characters or more is too long, the stored name is cut for good to
    /// its first 13 characters and tried once more.
    /// @warning Long names that agree in their first 13 characters may so become one lock, and
    ///          names of 257 bytes and more are refused without a cut: keep names within 13
    ///          characters.
    /// @param create  named form: true creates the name, which must not exist yet; false opens an
    ///                existing one. The unnamed form ignores it.
    /// @return PERR_OK                 the object holds a handle
    /// @return PERR_MUTEX_INITIALISED  it held one already, which is left as it is
    /// @return PERR_MUTEX_EXISTS       the name to be created exists; no handle
    /// @return PERR_MUTEX_NOT_FOUND    the name to be opened does not exist; no handle
    /// @return PERR_NOT_SUPPORTED      the system has no named semaphores; no handle
    /// @return PERR_MUTEX              the name is invalid or refused, or the lock could not be
    ///                                 allocated or created; no handle
    [[nodiscard]] int init(bool create);

    /// Acquires the lock, waiting without limit while another holds it.
    ///
    /// @warning The named form does not know its holder: a second `lock` by the holding thread
    ///          waits for ever. Lock a named lock once, and use an unnamed one where recursion is
    ///          needed.
    /// @return PERR_OK          the caller holds the lock
    /// @return PERR_MUTEX       there is no handle; returns at once, nothing is locked
    /// @return PERR_MUTEX_LOCK  the system refused; for the named form also a wait interrupted by a
    ///                          signal, which is not repeated. The lock is not held.
    ///
    /// Blocks: yes; the named form is a cancellation point, and a thread cancelled there has not
    /// locked.
    [[nodiscard]] int lock();

    /// Releases the lock once.
    ///
    /// The named form may be released by any thread of any process, held or not.
    /// @warning Releasing a named lock that is not held admits two holders at once later. Unlock
    ///          only after a `lock` that returned PERR_OK.
    /// @return PERR_OK            released (the unnamed form: one level of it)
    /// @return PERR_MUTEX         there is no handle; nothing is released
    /// @return PERR_MUTEX_UNLOCK  the system refused, for the unnamed form when the caller is not
    ///                            the owner; the lock stays as it was
    [[nodiscard]] int unlock();

    /// Gives the handle back; the object may then be initialised again.
    ///
    /// The named form also removes the name from the system, whoever created it: processes that
    /// hold it open go on sharing it, but none can open it any more.
    /// @warning The first process that closes a shared name removes it for those that have not
    ///          opened it yet; a close that comes late removes a newer lock or semaphore of that
    ///          name. Close when every partner has opened it, or is done, and before anyone creates
    ///          it again.
    /// @return PERR_OK           released, also when the name was gone already; the object is
    ///                           without handle
    /// @return PERR_MUTEX        there was no handle
    /// @return PERR_MUTEX_CLOSE  the system refused (the unnamed form: it is still locked); the
    ///                           object is without handle all the same
    [[nodiscard]] int close();

private:
    friend class PConditionalVar;

    bool named;                       ///< made with a name, valid or not
    std::unique_ptr<char[]> semName;  ///< null for the unnamed form and for an invalid name
    std::unique_ptr<pthread_mutex_t> mutexHandle;  ///< the unnamed form's handle
    sem_t* semHandle;                              ///< the named form's handle
};

/// A condition variable of this process, waited on with an unnamed `PMutex` that the caller holds
/// locked, once, around the wait and the check of what is waited for. It has two states, without
/// handle (at first, and after `close`) and with handle (after a successful `init`). A wait may
/// also end without a notification, so callers repeat it until what they wait for holds.
///
/// Threads: `wait`, `notify` and `notifyAll` from any, at the same time; `init`, `close` and the
/// destructor must not overlap any other call on the same object. Only the waits are cancellation
/// points.
/// @warning All threads that wait at the same time pass the same mutex; with different ones the
///          system's behaviour is undefined. Give each mutex a condition variable of its own.
class PORTINGLAYER_EXPORT PConditionalVar {
public:
    /// Makes a condition variable without handle.
    PConditionalVar();

    /// Closes the condition variable as `close` does, its result ignored.
    virtual ~PConditionalVar();

    PConditionalVar(PConditionalVar const&) = delete;
    PConditionalVar& operator=(PConditionalVar const&) = delete;

    /// Creates the condition variable.
    ///
    /// @return PERR_OK                     the object holds a handle
    /// @return PERR_CONDITION_INITIALISED  it held one already, which is left as it is
    /// @return PERR_CONDITION              it could not be allocated or created; no handle
    [[nodiscard]] int init();

    /// Releases the mutex, waits for a notification without limit, and locks the mutex again.
    ///
    /// @warning A mutex locked twice by the caller is released only once and so stays locked while
    ///          waiting: hold it exactly once.
    /// @param mutex  an unnamed, initialised mutex that the calling thread has locked; stays the
    ///               caller's
    /// @return PERR_OK                              woken, or ended without cause; the mutex is
    ///                                              locked
    /// @return PERR_INVALID_ARGUMENT                `mutex` is null
    /// @return PERR_CONDITION_NAMED_MUTEX           `mutex` is of the named form; neither object is
    ///                                              touched
    /// @return PERR_CONDITION_MUTEX_NOT_INITIALISED `mutex` has no handle
    /// @return PERR_CONDITION                       this object has no handle
    /// @return PERR_CONDITION_WAIT                  the system refused, such as for a mutex that
    ///                                              the caller does not hold; the mutex is as it
    ///                                              was
    ///
    /// Blocks: yes, and is a cancellation point: a thread cancelled here unwinds with the mutex
    /// locked.
    [[nodiscard]] int wait(PMutex* mutex);

    /// As `wait(mutex)`, but for no longer than a limit.
    ///
    /// The limit is turned into a time of the real-time clock when the wait begins.
    /// @warning A real-time clock that is set meanwhile shortens or lengthens the wait: measure
    ///          with PTime::getTickCount where the length matters.
    /// @param mutex         as above
    /// @param milliseconds  the longest wait; 0 gives up at once
    /// @return PERR_CONDITION_TIMEOUT  the limit passed first; the mutex is locked
    /// @return the codes of `wait(mutex)` in the same order of checks, each with the same state
    ///
    /// Blocks: yes, and is a cancellation point, as above.
    [[nodiscard]] int wait(PMutex* mutex, unsigned int milliseconds);

    /// Wakes one waiting thread, if any waits; a notification is not kept for later waits.
    ///
    /// @return PERR_OK                the system took it
    /// @return PERR_CONDITION         there is no handle
    /// @return PERR_CONDITION_NOTIFY  the system refused
    [[nodiscard]] int notify();

    /// Wakes all waiting threads, if any wait; a notification is not kept for later waits.
    ///
    /// @return PERR_OK                the system took it
    /// @return PERR_CONDITION         there is no handle
    /// @return PERR_CONDITION_NOTIFY  the system refused
    [[nodiscard]] int notifyAll();

    /// Gives the handle back; the object may then be initialised again.
    ///
    /// @warning Closing while a thread still waits blocks until that thread's wait ends by itself,
    ///          as nobody can notify it through the object any more: notify all waiters and join
    ///          them first.
    /// @return PERR_OK               released; the object is without handle
    /// @return PERR_MUTEX            there was no handle (the code that a mutex gives, shared on
    ///                               purpose)
    /// @return PERR_CONDITION_CLOSE  the system refused; the object is without handle all the same
    [[nodiscard]] int close();

private:
    [[nodiscard]] int checkWait(PMutex const* mutex) const;

    std::unique_ptr<pthread_cond_t> condHandle;
};

/// A counting semaphore, in one of two forms chosen at construction: the named form is shared by
/// every process that opens the same name, the unnamed form lives in memory that the object owns.
/// It has two states, without handle (at first, and after `close`) and with handle (after a
/// successful `init`, and for the unnamed form also after one that the system refused).
///
/// Threads: `post`, `wait`, `trywait` and `getValue` from any, at the same time; `init`, `close`
/// and the destructor must not overlap any other call on the same object. Only the waits are
/// cancellation points.
class PORTINGLAYER_EXPORT PSemaphore {
public:
    /// Makes an unnamed semaphore, without handle.
    PSemaphore();

    /// Makes a named semaphore, without handle.
    ///
    /// The name is copied as multibyte text of the current locale, cut to as many bytes as it has
    /// characters (so keep to ASCII), and neither checked nor changed further: the caller gives
    /// what the system takes as a semaphore name, a slash first and none after it. A name that is
    /// empty, cannot be converted, or finds no memory is kept as an invalid one, which `init`
    /// reports.
    /// @param name  the system-wide name, such as L"/product-slots"
    explicit PSemaphore(PLiteral const& name);

    /// Closes the semaphore as `close` does, its result ignored, and releases the stored name.
    ///
    /// @warning Destroying an initialised named semaphore removes its name from the system: keep
    ///          the object alive for as long as other processes have yet to open the name. A forked
    ///          child that calls `exit`, as one of a failed PProcess::start does, destroys static
    ///          objects, too: keep named semaphores local.
    virtual ~PSemaphore();

    PSemaphore(PSemaphore const&) = delete;
    PSemaphore& operator=(PSemaphore const&) = delete;

    /// Creates the unnamed semaphore, or creates or opens the named one.
    ///
    /// A created name is open to processes of the same user and group (mode 0770, less the
    /// process's umask: under the common 022 to the user's only). When the system answers that a
    /// name of 13 characters or more is too long, the stored name is cut for good to its first 13
    /// characters and tried once more.
    /// @warning Long names that agree in their first 13 characters may so become one semaphore, and
    ///          names of 257 bytes and more are refused without a cut: keep names within 13
    ///          characters.
    /// @param value   the initial count; unused when an existing name is opened
    /// @param create  named form: true creates the name, which must not exist yet; false opens an
    ///                existing one. The unnamed form ignores it.
    /// @return PERR_OK                     the object holds a handle
    /// @return PERR_SEMAPHORE_INITIALISED  it held one already, which is left as it is
    /// @return PERR_SEMAPHORE_EXISTS       the name to be created exists; no handle
    /// @return PERR_SEMAPHORE_NOT_FOUND    the name to be opened does not exist; no handle
    /// @return PERR_NO_MEMORY              the unnamed semaphore could not be allocated; no handle
    /// @return PERR_NOT_SUPPORTED          the system has no such semaphores; the named form is
    ///                                     without handle, the unnamed form keeps its unusable one
    /// @return PERR_SEMAPHORE              the name is invalid or refused, no handle; or the
    ///                                     initial count was refused, such as one above 2147483647
    /// @warning After PERR_SEMAPHORE or PERR_NOT_SUPPORTED the unnamed form keeps the refused
    ///          handle, on which nothing but `close` may be called: `close` it before another
    ///          `init`.
    [[nodiscard]] int init(unsigned int value, bool create);

    /// Adds one to the count and so lets one waiter go on.
    ///
    /// @return PERR_OK              added
    /// @return PERR_SEMAPHORE       there is no handle
    /// @return PERR_SEMAPHORE_POST  the system refused: the count is at its greatest value;
    ///                              unchanged
    [[nodiscard]] int post();

    /// Takes one from the count, waiting without limit while it is zero.
    ///
    /// @return PERR_OK              taken
    /// @return PERR_SEMAPHORE       there is no handle; returns at once
    /// @return PERR_SEMAPHORE_WAIT  the system refused, or a signal interrupted the wait, which is
    ///                              not repeated; nothing taken
    ///
    /// Blocks: yes, and is a cancellation point; a thread cancelled there has taken nothing.
    [[nodiscard]] int wait();

    /// Takes one from the count if that is possible now. It never waits, whatever the argument.
    ///
    /// @warning The argument is not a length of time from now: it is read as a moment, that many
    ///          milliseconds after the beginning of 1970, which has always passed. To wait for some
    ///          time, call this or `trywait` repeatedly with pauses, or wait on a PConditionalVar
    ///          with a limit.
    /// @param milliseconds  without effect on the result
    /// @return PERR_OK                 taken
    /// @return PERR_SEMAPHORE          there is no handle
    /// @return PERR_SEMAPHORE_TIMEOUT  the count is zero; nothing taken
    /// @return PERR_SEMAPHORE_WAIT     the system refused for another reason; nothing taken
    ///
    /// Blocks: no, but is a cancellation point, as above.
    [[nodiscard]] int wait(unsigned int milliseconds);

    /// Takes one from the count if that is possible now, and never waits.
    ///
    /// @return PERR_OK              taken
    /// @return PERR_SEMAPHORE       there is no handle
    /// @return PERR_SEMAPHORE_WAIT  the count is zero, or the system refused; nothing taken
    [[nodiscard]] int trywait();

    /// Reads the count, which other threads and processes may have changed by the time it is used.
    ///
    /// @param[out] value  the count, 0 or more; written only on success
    /// @return PERR_OK               read
    /// @return PERR_SEMAPHORE        there is no handle
    /// @return PERR_SEMAPHORE_VALUE  the system refused
    [[nodiscard]] int getValue(int& value);

    /// Gives the handle back; the object may then be initialised again.
    ///
    /// The named form also removes the name from the system, whoever created it: processes that
    /// hold it open go on sharing it, but none can open it any more. No thread may be waiting on
    /// the unnamed form.
    /// @warning The first process that closes a shared name removes it for those that have not
    ///          opened it yet; a close that comes late removes a newer lock or semaphore of that
    ///          name. Close when every partner has opened it, or is done, and before anyone creates
    ///          it again.
    /// @return PERR_OK               released, also when the name was gone already; the object is
    ///                               without handle
    /// @return PERR_SEMAPHORE        there was no handle
    /// @return PERR_SEMAPHORE_CLOSE  the system refused; the object is without handle all the same
    [[nodiscard]] int close();

private:
    bool named;                       ///< made with a name, valid or not
    std::unique_ptr<char[]> semName;  ///< null for the unnamed form and for an invalid name
    sem_t* semHandle;  ///< of the named form from the system; of the unnamed form owned
};

#endif
