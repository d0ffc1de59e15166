/// Every operation with its n-th watched call failing, n = 1, 2, ... until none is left to fail, once
/// and lasting. Whatever fails: the code is one of those that the operation documents, nothing is
/// held afterwards, and the same object then works. Watched are the allocations and the calls of the
/// C library that the portability layer makes: the program defines them all, so that its own
/// definitions win, and passes each on to the real one.
#ifndef TESTS_FAULTS_SWEEP_H
#define TESTS_FAULTS_SWEEP_H

#include <functional>
#include <initializer_list>
#include <set>

#include <gtest/gtest.h>
#include <portinglayer/result_codes.h>

using Codes = std::set<int>;
using Operation = std::function<int()>;

struct Fault {
    int nth;
    bool lasting;
    bool fired = false;

    /// Runs an operation of this thread with the failure.
    int operator()(Operation const& operation);
};

using Scenario = std::function<int(Fault&)>;

/// Sweeps a scenario, which gives the code of the operation it ran under the failure, and prints how
/// many points were swept. `codes` are those that the operation documents, PERR_OK aside.
void sweep(char const* name, Codes const& codes, Scenario const& scenario);

/// Likewise an operation that leaves nothing behind: it works right after its failure.
void sweep(char const* name, Codes const& codes, Operation const& operation);

/// An operation under the failure, then again without.
int withAndWithout(Fault& fault, Operation const& operation);

/// The scenario of the use of an object, which is then used again.
template <typename Object, typename... Given>
Scenario reused(std::function<int(Object&)> const& use, Given const&... given) {
    return [=](Fault& fault) {
        Object object(given...);
        return withAndWithout(fault, [&] { return use(object); });
    };
}

/// The first failure of calls made one after the other, the later ones in spite of it.
int first(std::initializer_list<int> codes);

#endif
