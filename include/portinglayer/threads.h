/// @file
/// Threads, sleeping, the time of day and a tick count.
#ifndef PORTINGLAYER_THREADS_H
#define PORTINGLAYER_THREADS_H

#include <memory>

#include <sys/types.h>

#include <portinglayer/export.h>
#include <portinglayer/result_codes.h>

/// Owns at most one system thread at a time. It has two states, without thread (at first) and with
/// thread (after a successful `pcreate`); any of `pjoin`, `pdetach` and `pterminate` leads back to
/// the first, whatever it returns, and a new thread may then be started. Destroying the object
/// detaches an owned thread, which keeps running. A thread routine that throws ends the whole
/// program, as with any system thread.
///
/// Threads: an object is driven by one controlling thread; its operations take no lock. `psleep`
/// and `getCurrentThreadId` may be called from any thread. Only `pjoin` and `psleep` are
/// cancellation points.
class PORTINGLAYER_EXPORT PThread {
public:
    /// Makes an object without thread.
    PThread();

    /// Detaches an owned thread, which keeps running; a failure is ignored.
    virtual ~PThread();

    PThread(PThread const&) = delete;
    PThread& operator=(PThread const&) = delete;

    /// Starts a joinable thread, with the system's default attributes, that runs `func(arg)`.
    ///
    /// @warning The new thread reads `func` and `arg` out of this object when it begins to run:
    ///          keep the object alive, and start no second thread with it, until the routine has
    ///          begun (for instance until it has posted a semaphore), even after `pdetach`.
    /// @param func  the routine of the thread; its result is the thread's result
    /// @param arg   passed to it as it is; stays the caller's
    /// @return PERR_OK             the thread was started and is owned
    /// @return PERR_THREAD_EXISTS  a thread is owned already; nothing changes
    /// @return PERR_THREAD         `func` is null, or the thread could not be created or its handle
    ///                             allocated; without thread
    [[nodiscard]] int pcreate(void* (*func)(void*), void* arg);

    /// Waits for the owned thread to end and takes its result; afterwards without thread.
    ///
    /// @param[out] result  what the routine returned; written only on success
    /// @return PERR_OK           joined
    /// @return PERR_THREAD       no thread was owned
    /// @return PERR_THREAD_JOIN  the system refused, such as for a thread that joins itself; the
    ///                           thread is no longer owned and stays unjoined
    ///
    /// Blocks: until the thread ends, and is a cancellation point while it waits: where the calling
    /// thread is cancelled here, the other one goes on, no longer owned and unjoined.
    [[nodiscard]] int pjoin(void*& result);

    /// Lets the owned thread run on by itself; afterwards without thread.
    ///
    /// @return PERR_OK             the system releases the thread when it ends
    /// @return PERR_THREAD         no thread was owned
    /// @return PERR_THREAD_DETACH  the system refused; the thread is no longer owned
    [[nodiscard]] int pdetach();

    /// Requests the cancellation of the owned thread; afterwards without thread.
    ///
    /// The thread ends when it reaches a cancellation point, later than this call returns.
    /// @warning The cancelled thread is neither joined nor detached: the system keeps what it holds
    ///          (its stack among it) until the process ends. Prefer to ask the routine to return,
    ///          and `pjoin` it. Where cancelling is a must, let a cleanup handler of the routine
    ///          detach the thread (`pthread_cleanup_push`, `pthread_detach(pthread_self())`): a
    ///          thread detached earlier may be gone when the request comes, which then meets a
    ///          stranger that has its handle.
    /// @param arg  unused
    /// @return PERR_OK             the request was delivered
    /// @return PERR_THREAD         no thread was owned
    /// @return PERR_THREAD_CANCEL  the system refused; the thread is no longer owned
    [[nodiscard]] int pterminate(void* arg);

    /// Tells whether the owned thread still exists to the system.
    ///
    /// The answer may be outdated as soon as it is given.
    /// @warning A thread that has ended but was not joined may still count as existing, as it does
    ///          with the current C library: let the routine itself report that it is done, or
    ///          `pjoin` it.
    /// @return false without a thread
    bool isAlive() const;

    /// Gives the low 32 bits of the owned thread's system handle, 0 without a thread. Two threads
    /// may share them: for messages, not for telling threads apart.
    unsigned int getThreadId();

    /// Gives the system handle of the calling thread.
    static pthread_t getCurrentThreadId();

    /// Does nothing: the name is accepted and ignored.
    void setName(char const* name);

    /// Makes the calling thread sleep.
    ///
    /// @warning The length is counted in microseconds in 32 bits: above 4294967 milliseconds it
    ///          wraps and the sleep is far too short. Sleep longer in several calls.
    /// @param milliseconds  how long; 0 returns at once
    /// @return 0   slept at least that long
    /// @return -1  a signal interrupted the sleep, the rest of which is not slept
    ///
    /// Blocks: yes, and is a cancellation point.
    static int psleep(unsigned int milliseconds);

    /// The routine that every new thread begins with; not for callers.
    ///
    /// @param pair  a routine and its argument, in this order
    /// @return what the routine returned
    static void* _proxyThreadProc(void* pair);

private:
    struct Start {
        void* (*threadFunc)(void*);
        void* threadArg;
    };

    Start start;  ///< read by the new thread, hence here and not on a stack
    std::unique_ptr<pthread_t> threadHandle;  ///< null without a thread
};

/// A moment as the local calendar shows it, and a tick count for measuring. A plain record that
/// `getTime` fills; there is nothing to release.
class PORTINGLAYER_EXPORT PTime {
public:
    /// Fills the record with the present moment in the time zone of the process.
    ///
    /// @warning The system's conversion shares one result area in the whole process: serialise
    ///          concurrent calls, and calls of localtime or gmtime beside them, with a lock.
    /// @param[out] time  every member is written
    /// @return PERR_OK  always
    [[nodiscard]] static int getTime(PTime& time);

    /// Gives the milliseconds of a clock that only moves forward, from an arbitrary beginning (the
    /// start of the machine); where that clock cannot be read, the milliseconds since 1970.
    ///
    /// Threads: from any.
    static long long getTickCount();

    /// Gives `end` - `start` in milliseconds, negative when `end` is the earlier one.
    ///
    /// Threads: from any.
    static long long getTickCountDiff(long long start, long long end);

    int milliseconds;             ///< 0 to 999, of the current second
    int second;                   ///< 0 to 60
    int minute;                   ///< 0 to 59
    int hour;                     ///< 0 to 23
    int day;                      ///< of the month, 1 to 31
    int month;                    ///< 1 to 12, January is 1
    int year;                     ///< in full, such as 2024
    int weekDay;                  ///< 0 to 6, Sunday is 0
    int yearDay;                  ///< 0 to 365, 1 January is 0
    long long epochMilliseconds;  ///< since 1970-01-01 00:00 UTC
};

#endif
