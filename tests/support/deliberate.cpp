/// Faults on purpose, asked for by variables of the environment: `self_test` sees each reported.
#include <cstdlib>

#include <gtest/gtest.h>
#include <unistd.h>

TEST(Deliberate, Fault) {
    auto const asked = [](char const* fault) { return std::getenv(fault) != nullptr; };
    EXPECT_FALSE(asked("FAILURE"));
    if (asked("CRASH")) std::abort();
    if (asked("HANG")) (void)pause();
    if (asked("DESCRIPTOR")) (void)dup(STDERR_FILENO);
    if (asked("CHILD") && fork() == 0) _exit(0);
}
