/// The sweep of failures: an operation with its n-th watched call failing, n = 1, 2, ... until none
/// is left, once with that call alone failing and once with every later one too. A watched call is
/// an allocation or one of those in sweep.cpp.
#ifndef TESTS_FAULTS_SWEEP_H
#define TESTS_FAULTS_SWEEP_H

#include <functional>
#include <initializer_list>
#include <set>

#include <gtest/gtest.h>
#include <support/expect.h>

/// What is swept: each run gives PERR_OK or one of `codes`, leaves no block of memory and no
/// descriptor behind, and the same operation works right afterwards.
struct Sweep {
    char const* name;
    std::set<int> codes;  ///< those it documents, PERR_OK aside
    std::function<int()> operation;
    std::function<void()> before = [] {};              ///< unwatched, before each run
    std::function<void(int code)> after = [](int) {};  ///< unwatched: looks at the outputs
    int most = 10'000;         ///< ends the sweep of what makes calls without end
    bool tellsMemory = false;  ///< gives PERR_NO_MEMORY where an allocation is the first to fail
};

void sweep(Sweep const& swept);

/// The first failure of calls made one after the other, the later ones in spite of it.
int firstFailure(std::initializer_list<int> codes);

/// Runs an operation with its n-th watched call failing, and every later one where `lasting`.
int runFailing(int nth, bool lasting, std::function<int()> const& operation);

/// Whether the first failure of the last run was an allocation.
bool memoryRanOut();

/// For the watched calls: whether this one is to fail.
bool failsNow(bool isAllocation = false);

#endif
