/// Every operation with its n-th watched call failing, n = 1, 2, ... until none is left to fail, once
/// and lasting. Whatever fails: the code is one of those that the operation documents, nothing is
/// held afterwards, and the same object then works. Watched are the allocations and the calls of the
/// C library that the portability layer makes: the program defines them all, so that its own
/// definitions win, and passes each on to the real one. While they are watched, no pause takes time.
#ifndef TESTS_FAULTS_SWEEP_H
#define TESTS_FAULTS_SWEEP_H

#include <functional>
#include <initializer_list>
#include <set>

#include <gtest/gtest.h>
#include <portinglayer/result_codes.h>

using Codes = std::set<int>;

/// Sweeps an operation, which works when nothing fails, and prints how many points were swept.
/// `codes` are those that it documents, PERR_OK aside; `before` comes, unwatched, before each run;
/// `most` ends the sweep of what makes calls without end.
void sweep(
    char const* name, Codes const& codes, std::function<int()> const& operation,
    std::function<void()> const& before = [] {}, int most = 10'000);

/// The first failure of calls made one after the other, the later ones in spite of it.
int first(std::initializer_list<int> codes);

#endif
