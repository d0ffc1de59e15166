/// Children that run a piece of a test, and waiting for what they do.
#ifndef TESTS_SUPPORT_CHILD_RUN_H
#define TESTS_SUPPORT_CHILD_RUN_H

#include <functional>

#include <sys/types.h>

/// One child, killed and collected at the latest when the object ends.
class ChildRun {
public:
    /// Forks: the child ends with what the work gives, within a minute at the latest.
    explicit ChildRun(std::function<int()> const& work);
    ~ChildRun() { kill(); }
    ChildRun(ChildRun&& o) noexcept : pid(o.pid) { o.pid = 0; }

    /// Ends the child with SIGKILL and collects it.
    void kill();

    /// Waits for its end and gives its exit code, or minus the signal that ended it.
    int wait();

    pid_t pid = 0;  ///< 0 when it was collected
};

/// Looks until something holds; false when it does not within twenty seconds.
bool eventually(std::function<bool()> const& holds);

#endif
