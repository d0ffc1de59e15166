/// Children of a test: real programs, ended and collected when the object goes.
#ifndef TESTS_PROCESS_CHILDREN_H
#define TESTS_PROCESS_CHILDREN_H

#include <functional>
#include <string>
#include <vector>

#include <portinglayer/processes.h>

/// Waits until a condition holds, ten seconds at most.
bool eventually(std::function<bool()> const& condition);

/// Text of a test's own.
PString owned(std::string const& ascii);

/// The state letter of a process; '-' when it is gone.
char stateOf(unsigned int pid);

/// A child of this process that runs, or of a `PProcess` that a test started.
class Child {
public:
    explicit Child(unsigned int id) : pid(id) {}
    /// Runs `program` with exactly these arguments and this environment.
    explicit Child(std::vector<std::string> arguments, std::vector<std::string> environment = {},
                   std::string const& program = TEST_CHILD);
    ~Child();
    Child(Child const&) = delete;
    Child& operator=(Child const&) = delete;

    int waitExitCode() const;  ///< how it ended; -1 when it was not by itself

    unsigned int const pid;
};

/// The process id of a `PProcess`, once its child has become the test's child program.
unsigned int startedId(PProcess& process);

#endif
