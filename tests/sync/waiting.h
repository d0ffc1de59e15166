/// What the tests of this folder do with threads that wait.
#ifndef TESTS_SYNC_WAITING_H
#define TESTS_SYNC_WAITING_H

#include <atomic>
#include <csignal>
#include <functional>
#include <thread>
#include <vector>

#include <gtest/gtest.h>
#include <support/child_run.h>
#include <unistd.h>

using Codes = std::vector<int>;

/// A test in which something may block: the program is ended when it blocks for a minute.
struct Blocking : testing::Test {
    Blocking() { alarm(60); }
    ~Blocking() override { alarm(0); }
};

/// Runs the same in several threads at once, numbered from 0, and waits for all.
inline void together(int threads, std::function<void(int)> const& work) {
    std::vector<std::jthread> running;
    for (int i = 0; i < threads; ++i) running.emplace_back(work, i);
}

/// What a blocking call returns when a signal interrupts it.
inline int interrupted(std::function<int()> const& call) {
    struct sigaction handler {};
    handler.sa_handler = [](int) {};  // not restarting
    (void)sigaction(SIGUSR1, &handler, nullptr);
    std::atomic<int> result = 1;
    std::jthread caller([&] { result = call(); });
    for (; result == 1; usleep(1000))  // again and again: it may come too early
        (void)pthread_kill(caller.native_handle(), SIGUSR1);
    return result;
}

#endif
