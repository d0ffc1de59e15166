/// Runs of the child program, and waiting for what they do.
#ifndef TESTS_SUPPORT_CHILD_RUN_H
#define TESTS_SUPPORT_CHILD_RUN_H

#include <functional>
#include <string>
#include <vector>

#include <sys/types.h>

/// One run of the child program, killed and collected at the latest when the object ends.
class ChildRun {
public:
    explicit ChildRun(std::vector<std::string> arguments);

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
