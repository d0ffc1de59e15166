// Locks, semaphores, condition variables, threads and time.

#include "operation.h"

#include <pthread.h>
#include <semaphore.h>
#include <sys/time.h>
#include <unistd.h>

#include <chrono>
#include <condition_variable>
#include <ctime>
#include <mutex>
#include <semaphore>
#include <thread>

#include <portinglayer/synchronisation.h>
#include <portinglayer/threads.h>

#ifdef BENCH_BOOST
#include <boost/thread.hpp>
#endif
#ifdef BENCH_GLIB
#include <glib.h>
#endif
#ifdef BENCH_LIBUV
#include <uv.h>
#endif
#ifdef BENCH_POCO
#include <Poco/Mutex.h>
#include <Poco/Semaphore.h>
#include <Poco/Thread.h>
#endif
#ifdef BENCH_QT
#include <QMutex>
#include <QSemaphore>
#include <QThread>
#endif

namespace {

/// The bare recursive mutex and this library's, in the shape of the standard one.
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

struct OurLock : PMutex {
    OurLock() { (void)init(true); }
};

#ifdef BENCH_GLIB
struct GLibLock {
    GLibLock() { g_rec_mutex_init(&mutex); }
    void lock() { g_rec_mutex_lock(&mutex); }
    void unlock() { g_rec_mutex_unlock(&mutex); }
    GRecMutex mutex;
};
#endif

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
#ifdef BENCH_QT
    op.way("Qt", _lockAndUnlock<QRecursiveMutex>);
#endif
#ifdef BENCH_BOOST
    op.way("Boost", _lockAndUnlock<boost::recursive_mutex>);
#endif
#ifdef BENCH_POCO
    op.way("POCO", _lockAndUnlock<Poco::Mutex>);
#endif
#ifdef BENCH_GLIB
    op.way("GLib", _lockAndUnlock<GLibLock>);
#endif
    op.way(OURS, _lockAndUnlock<OurLock>);
}

void _addSemaphore() {
    Operation op("semaphore post and wait", 1.10, 0, "sem_post, sem_wait");
    static sem_t bare;
    sem_init(&bare, 1, 0);
    op.way(BARE, [] { return sem_post(&bare) + sem_wait(&bare); });
    static std::counting_semaphore<> standard(0);
    op.way("std::counting_semaphore", [] {
        standard.release();
        standard.acquire();
        return 0;
    });
#ifdef BENCH_QT
    static QSemaphore qt;
    op.way("Qt", [] {
        qt.release();
        qt.acquire();
        return 0;
    });
#endif
#ifdef BENCH_POCO
    static Poco::Semaphore poco(0, 1);
    op.way("POCO", [] {
        poco.set();
        poco.wait();
        return 0;
    });
#endif
#ifdef BENCH_LIBUV
    static uv_sem_t uv;
    uv_sem_init(&uv, 0);
    op.way("libuv", [] {
        uv_sem_post(&uv);
        uv_sem_wait(&uv);
        return 0;
    });
#endif
    static PSemaphore ours;
    (void)ours.init(0, true);
    op.way(OURS, [] { return ours.post() + ours.wait(); });

    Operation trying("semaphore trywait at zero", NO_LIMIT, true, "sem_trywait");
    trying.way(BARE, [] { return sem_trywait(&bare) == -1; });
    trying.way(OURS, [] { return ours.trywait() == PERR_SEMAPHORE_WAIT; });
}

void _addCondition() {
    Operation op("condition notify, nobody waits", NO_LIMIT, 0, "pthread_cond_signal");
    static pthread_cond_t bare = PTHREAD_COND_INITIALIZER;
    op.way(BARE, [] { return pthread_cond_signal(&bare); });
    static std::condition_variable standard;
    op.way("std::condition_variable", [] {
        standard.notify_one();
        return 0;
    });
    static PConditionalVar ours;
    (void)ours.init();
    op.way(OURS, [] { return ours.notify(); });
}

void* _echo(void* argument) {
    return argument;
}

/// Creates and joins with a thread class that takes what to run and has `join`.
template <typename Thread>
bool _createAndJoin() {
    bool ran = false;
    Thread thread([&] { ran = true; });
    thread.join();
    return ran;
}

void _addThreads() {
    Operation op("thread create and join", 1.10, true, "pthread_create, _join");
    op.clock(Clock::WALL);
    op.way(BARE, [] {
        pthread_t thread;
        void* result = nullptr;
        pthread_create(&thread, nullptr, _echo, &result);
        pthread_join(thread, &result);
        return result != nullptr;
    });
    op.way("std::thread", _createAndJoin<std::thread>);
#ifdef BENCH_BOOST
    op.way("Boost", _createAndJoin<boost::thread>);
#endif
#ifdef BENCH_QT
    op.way("Qt", [] {
        bool ran = false;
        std::unique_ptr<QThread> const thread(QThread::create([&] { ran = true; }));
        thread->start();
        return thread->wait() && ran;
    });
#endif
#ifdef BENCH_POCO
    op.way("POCO", [] {
        bool ran = false;
        Poco::Thread thread;
        thread.startFunc([&] { ran = true; });
        thread.join();
        return ran;
    });
#endif
#ifdef BENCH_GLIB
    static char block[1];
    op.way("GLib", [] { return g_thread_join(g_thread_new("bench", _echo, block)) != nullptr; });
#endif
    op.way(OURS, [] {
        PThread thread;
        void* result = nullptr;
        (void)thread.pcreate(_echo, &result);
        (void)thread.pjoin(result);
        return result != nullptr;
    });
}

void _addTime() {
    Operation tick("tick", 1.10, true, "clock_gettime");
    tick.way(BARE, [] {
        timespec now{};
        clock_gettime(CLOCK_MONOTONIC, &now);
        return now.tv_sec * 1000 + now.tv_nsec / 1000000 > 0;
    });
    tick.way("std::chrono", [] {
        return std::chrono::steady_clock::now().time_since_epoch() / std::chrono::milliseconds(1) >
               0;
    });
#ifdef BENCH_GLIB
    tick.way("GLib", [] { return g_get_monotonic_time() / 1000 > 0; });
#endif
#ifdef BENCH_LIBUV
    tick.way("libuv", [] { return uv_hrtime() / 1000000 > 0; });
#endif
    tick.way(OURS, [] { return PTime::getTickCount() > 0; });

    Operation calendar("calendar time", 1.10, true, "gettimeofday, localtime");
    calendar.way(BARE, [] {
        timeval now{};
        gettimeofday(&now, nullptr);
        return localtime(&now.tv_sec)->tm_year > 100;
    });
    calendar.way(OURS, [] {
        PTime now{};
        (void)PTime::getTime(now);
        return now.year > 2000;
    });
}

}  // namespace

void addSync() {
    // A process of one thread is spared some locking by the C library: that is not what locks are for.
    std::thread(pause).detach();
    _addLocks("lock and unlock", 1);
    _addLocks("lock and unlock, two threads", 2);
    _addSemaphore();
    _addCondition();
    _addThreads();
    _addTime();
}
