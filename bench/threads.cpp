// Threads and time.

#include "operation.h"

#include <pthread.h>
#include <sys/time.h>

#include <chrono>
#include <ctime>
#include <thread>

#include <portinglayer/threads.h>

namespace {

char argument;

void* _echo(void* given) {
    return given;
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
        pthread_create(&thread, nullptr, _echo, &argument);
        pthread_join(thread, &result);
        return result == &argument;
    });
    op.way("std::thread", _createAndJoin<std::thread>);
    WITH_BOOST(op.way("Boost", _createAndJoin<boost::thread>));
    WITH_QT(op.way("Qt", [] {
        bool ran = false;
        std::unique_ptr<QThread> const thread(QThread::create([&] { ran = true; }));
        thread->start();
        return thread->wait() && ran;
    }));
    WITH_POCO(op.way("POCO", [] {
        bool ran = false;
        Poco::Thread thread;
        thread.startFunc([&] { ran = true; });
        thread.join();
        return ran;
    }));
    WITH_GLIB(op.way("GLib", [] {
        return g_thread_join(g_thread_new("bench", _echo, &argument)) == &argument;
    }));
    op.way(OURS, [] {
        PThread thread;
        void* result = nullptr;
        (void)thread.pcreate(_echo, &argument);
        (void)thread.pjoin(result);
        return result == &argument;
    });
}

void _addTick() {
    using namespace std::chrono;
    Operation op("tick", 1.10, true, "clock_gettime");
    op.way(BARE, [] {
        timespec now{};
        clock_gettime(CLOCK_MONOTONIC, &now);
        return now.tv_sec * 1000 + now.tv_nsec / 1000000 > 0;
    });
    op.way("std::chrono",
           [] { return steady_clock::now().time_since_epoch() / milliseconds(1) > 0; });
    WITH_GLIB(op.way("GLib", [] { return g_get_monotonic_time() / 1000 > 0; }));
    WITH_LIBUV(op.way("libuv", [] { return uv_hrtime() / 1000000 > 0; }));
    op.way(OURS, [] { return PTime::getTickCount() > 0; });
}

void _addCalendar() {
    Operation op("calendar time", 1.10, true, "gettimeofday, localtime");
    op.way(BARE, [] {
        timeval now{};
        gettimeofday(&now, nullptr);
        return localtime(&now.tv_sec)->tm_year > 100;
    });
    op.way(OURS, [] { return out<PTime>(PTime::getTime).year > 2000; });
}

}  // namespace

void addThreads() {
    _addThreads();
    _addTick();
    _addCalendar();
}
