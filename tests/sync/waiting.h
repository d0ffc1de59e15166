/// What the tests of this folder do with threads that wait.
#ifndef TESTS_SYNC_WAITING_H
#define TESTS_SYNC_WAITING_H

#include <atomic>
#include <functional>
#include <thread>
#include <vector>

#include <gtest/gtest.h>
#include <support/child_run.h>
#include <support/interrupted.h>

using Codes = std::vector<int>;

/// Runs the same in several threads at once, numbered from 0, and waits for all.
inline void together(int threads, std::function<void(int)> const& work) {
    std::vector<std::jthread> running;
    for (int i = 0; i < threads; ++i) running.emplace_back(work, i);
}

#endif
