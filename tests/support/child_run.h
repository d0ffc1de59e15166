/// Children that run a piece of the test, and waiting for what others do.
#ifndef TESTS_SUPPORT_CHILD_RUN_H
#define TESTS_SUPPORT_CHILD_RUN_H

#include <csignal>
#include <functional>
#include <stdexcept>
#include <thread>
#include <utility>

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
    for (int looks = 0; looks < 10'000; ++looks) {
        if (holds()) return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(2));  // some tests replace usleep
    }
    return false;
}

#endif
