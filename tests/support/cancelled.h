/// Threads that are asked to end while they work.
#ifndef TESTS_SUPPORT_CANCELLED_H
#define TESTS_SUPPORT_CANCELLED_H

#include <functional>
#include <thread>

#include <pthread.h>

/// Whether a thread that was asked to end does so within an operation, its cancellation point.
inline bool endsACancelledThread(std::function<void()> const& operation) {
    bool behind = false;
    std::thread([&] {
        (void)pthread_cancel(pthread_self());
        operation();
        behind = true;
    }).join();
    return !behind;
}

#endif
