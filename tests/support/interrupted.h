/// Signals while something blocks.
#ifndef TESTS_SUPPORT_INTERRUPTED_H
#define TESTS_SUPPORT_INTERRUPTED_H

#include <atomic>
#include <csignal>
#include <cstdlib>

#include <gtest/gtest.h>
#include <sys/time.h>

inline std::atomic<int> interruptions = 0;

/// Makes a call that blocks or takes a while and gives its result; meanwhile every 2 ms a signal
/// comes to the first thread of the program, so call it there. Its handler has nothing restarted.
template <class Call>
auto interrupted(Call const& call) {
    struct sigaction ours {
    }, theirs{};
    ours.sa_handler = [](int) { ++interruptions < 15'000 ? void() : std::abort(); };  // 30 s
    itimerval const often{{0, 2000}, {0, 2000}};
    itimerval limit{};
    interruptions = 0;
    (void)sigaction(SIGALRM, &ours, &theirs);
    (void)setitimer(ITIMER_REAL, &often, &limit);
    auto const result = call();
    (void)setitimer(ITIMER_REAL, &limit, nullptr);  // that of the test
    (void)sigaction(SIGALRM, &theirs, nullptr);
    EXPECT_GT(interruptions, 0) << "it was over before a signal came";
    return result;
}

#endif
