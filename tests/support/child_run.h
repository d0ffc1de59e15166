/// Children that run a piece of the test, waiting for what others do, and signals meanwhile.
#ifndef TESTS_SUPPORT_CHILD_RUN_H
#define TESTS_SUPPORT_CHILD_RUN_H

#include <atomic>
#include <csignal>
#include <cstdlib>
#include <functional>
#include <stdexcept>
#include <thread>
#include <utility>

#include <gtest/gtest.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

/// One forked child, killed and collected at the latest when the object ends.
class ChildRun {
public:
    /// The child ends with what the work gives, within a minute at the latest.
    explicit ChildRun(std::function<int()> const& work) : pid(fork()) {
        if (pid < 0) throw std::runtime_error("no child");
        if (pid > 0) return;
        (void)alarm(60);
        _exit(work());
    }
    ChildRun(ChildRun&& o) noexcept : pid(std::exchange(o.pid, 0)) {}
    ~ChildRun() {
        if (pid <= 0) return;
        (void)kill(pid, SIGKILL);
        (void)wait();
    }

    /// Waits for its end and gives its exit code, or minus the signal that ended it.
    int wait() {
        int status = 0;
        (void)waitpid(std::exchange(pid, 0), &status, 0);
        return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
    }

    pid_t pid;  ///< 0 when it was collected
};

/// Looks until something holds; false when it does not within twenty seconds or so.
inline bool eventually(std::function<bool()> const& holds) {
    int looks = 0;
    for (; looks < 10'000 && !holds(); ++looks)
        std::this_thread::sleep_for(std::chrono::milliseconds(2));  // some tests replace usleep
    return looks < 10'000;
}

inline std::atomic<int> interruptions = 0;

/// Makes a call that blocks or takes a while and gives its result; meanwhile every 2 ms a signal
/// comes to the first thread of the program, so call it there. Its handler has nothing restarted.
template <class Call>
auto interrupted(Call const& call) {
    struct sigaction ours {
    }, theirs{};
    ours.sa_handler = [](int) { ++interruptions < 15'000 ? void() : std::abort(); };  // 30 s
    itimerval const often{{0, 2000}, {0, 2000}}, never{};
    interruptions = 0;
    (void)sigaction(SIGALRM, &ours, &theirs);
    (void)setitimer(ITIMER_REAL, &often, nullptr);
    auto const result = call();
    (void)setitimer(ITIMER_REAL, &never, nullptr);
    (void)sigaction(SIGALRM, &theirs, nullptr);
    EXPECT_GT(interruptions, 0) << "it was over before a signal came";
    return result;
}

#endif
