// Locks, semaphores and condition variables.

#include "operation.h"

#include <pthread.h>
#include <semaphore.h>
#include <unistd.h>

#include <condition_variable>
#include <mutex>
#include <semaphore>
#include <thread>

#include <portinglayer/synchronisation.h>

namespace {

// The recursive mutexes of C and this library's, in the shape of the standard one.

struct BareLock {
    BareLock() {
        pthread_mutexattr_t attributes;
        pthread_mutexattr_init(&attributes);
        pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE);
        pthread_mutex_init(&mutex, &attributes);
        pthread_mutexattr_destroy(&attributes);
    }
    void lock() { pthread_mutex_lock(&mutex); }
    void unlock() { pthread_mutex_unlock(&mutex); }
    pthread_mutex_t mutex;
};

struct OurLock {
    OurLock() { (void)mutex.init(true); }
    void lock() { (void)mutex.lock(); }
    void unlock() { (void)mutex.unlock(); }
    PMutex mutex;
};

template <typename Lock>
int _lockAndUnlock() {
    static Lock lock;
    lock.lock();
    lock.unlock();
    return 0;
}

void _addLocks(char const* name, int threads) {
    Operation op(name, threads == 1 ? 1.10 : NO_LIMIT, 0, "pthread_mutex_lock, _unlock");
    op.threads(threads).clock(threads == 1 ? Clock::CPU : Clock::WALL);
    op.way(BARE, _lockAndUnlock<BareLock>);
    op.way("std::recursive_mutex", _lockAndUnlock<std::recursive_mutex>);
    WITH_QT(op.way("Qt", _lockAndUnlock<QRecursiveMutex>));
    WITH_BOOST(op.way("Boost", _lockAndUnlock<boost::recursive_mutex>));
    WITH_POCO(op.way("POCO", _lockAndUnlock<Poco::Mutex>));
    WITH_GLIB(op.way("GLib", _lockAndUnlock<GLibLock>));
    op.way(OURS, _lockAndUnlock<OurLock>);
}

void _addSemaphore() {
    static sem_t bare;
    static PSemaphore ours;
    sem_init(&bare, 1, 0);
    (void)ours.init(0, true);

    Operation op("semaphore post and wait", NO_LIMIT, 0, "sem_post, sem_wait");
    op.way(BARE, [] { return sem_post(&bare) + sem_wait(&bare); });
    static std::counting_semaphore<> standard(0);
    op.way("std::counting_semaphore", [] {
        standard.release();
        standard.acquire();
        return 0;
    });
    WITH_QT(static QSemaphore qt; op.way("Qt", [] {
        qt.release();
        qt.acquire();
        return 0;
    }));
    WITH_POCO(static Poco::Semaphore poco(0, 1); op.way("POCO", [] {
        poco.set();
        poco.wait();
        return 0;
    }));
    WITH_LIBUV(static uv_sem_t uv; uv_sem_init(&uv, 0); op.way("libuv", [] {
        uv_sem_post(&uv);
        uv_sem_wait(&uv);
        return 0;
    }));
    op.way(OURS, [] { return ours.post() + ours.wait(); });

    Operation trying("semaphore trywait at zero", NO_LIMIT, true, "sem_trywait");
    trying.way(BARE, [] { return sem_trywait(&bare) == -1; });
    trying.way(OURS, [] { return ours.trywait() == PERR_SEMAPHORE_WAIT; });
}

void _addCondition() {
    static pthread_cond_t bare = PTHREAD_COND_INITIALIZER;
    static std::condition_variable standard;
    static PConditionalVar ours;
    (void)ours.init();
    Operation op("condition notify, nobody waits", NO_LIMIT, 0, "pthread_cond_signal");
    op.way(BARE, [] { return pthread_cond_signal(&bare); });
    op.way("std::condition_variable", [] {
        standard.notify_one();
        return 0;
    });
    op.way(OURS, [] { return ours.notify(); });
}

}  // namespace

void addLocks() {
    // A process of one thread is spared some locking by the C library: that is not what locks are for.
    std::thread(pause).detach();
    _addLocks("lock and unlock", 1);
    _addLocks("lock and unlock, two threads", 2);
    _addSemaphore();
    _addCondition();
}
