/// The lock, and the semaphore with count 1: used alike, with codes of their own.
#ifndef TESTS_SYNC_LOCKS_H
#define TESTS_SYNC_LOCKS_H

#include <portinglayer/synchronisation.h>
#include <support/expect.h>
#include <support/scratch.h>

struct Lock : PMutex {
    using PMutex::PMutex;
    int enter() { return lock(); }
    int leave() { return unlock(); }

    static constexpr int REFUSED = PERR_MUTEX;
    static constexpr int EXISTS = PERR_MUTEX_EXISTS;
    static constexpr int MISSING = PERR_MUTEX_NOT_FOUND;
    static constexpr int INITIALISED = PERR_MUTEX_INITIALISED;
    static constexpr int INTERRUPTED = PERR_MUTEX_LOCK;
};

struct One : PSemaphore {
    using PSemaphore::PSemaphore;
    int init(bool create) { return PSemaphore::init(1, create); }
    int enter() { return wait(); }
    int leave() { return post(); }

    static constexpr int REFUSED = PERR_SEMAPHORE;
    static constexpr int EXISTS = PERR_SEMAPHORE_EXISTS;
    static constexpr int MISSING = PERR_SEMAPHORE_NOT_FOUND;
    static constexpr int INITIALISED = PERR_SEMAPHORE_INITIALISED;
    static constexpr int INTERRUPTED = PERR_SEMAPHORE_WAIT;
};

template <class Kind>
struct Named : testing::Test {
    std::wstring const name = wide(uniqueName());
};

using Kinds = testing::Types<Lock, One>;

#endif
