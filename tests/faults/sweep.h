/// Every operation with its n-th watched call failing, n = 1, 2, ... until none is left to fail, once
/// and lasting. Whatever fails: the code is one of those that the operation documents, nothing is
/// held afterwards, and the same object then works.
#ifndef TESTS_FAULTS_SWEEP_H
#define TESTS_FAULTS_SWEEP_H

#include <functional>
#include <set>

#include <gtest/gtest.h>
#include <unistd.h>

#include <faults/injection.h>
#include <portinglayer/result_codes.h>

struct Fault {
    int nth;
    bool lasting;
    bool fired = false;

    /// Runs an operation with the failure. A forked child that comes back from a failed launch ends
    /// here: the tests belong to the parent.
    template <typename Operation>
    int operator()(Operation const& operation) {
        pid_t const self = getpid();
        injection::arm(nth, lasting);
        int const code = operation();
        fired = injection::disarm();
        if (getpid() != self) _exit(1);
        return code;
    }
};

using Codes = std::set<int>;
using Scenario = std::function<int(Fault&)>;

/// Sweeps a scenario, which gives the code of the operation it ran under the failure, and prints how
/// many points were swept. `codes` are those that the operation documents, PERR_OK aside.
void sweep(char const* name, Codes const& codes, Scenario const& scenario);

/// The scenario of an operation that leaves no object behind.
template <typename Operation>
Scenario plain(Operation const& operation) {
    return [operation](Fault& fault) {
        int const code = fault(operation);
        EXPECT_EQ(operation(), PERR_OK) << "and then works";
        return code;
    };
}

/// Takes steps in order up to the first that fails.
template <typename... Step>
int steps(Step const&... step) {
    int code = PERR_OK;
    (void)(((code = step()) == PERR_OK) && ...);
    return code;
}

#endif
