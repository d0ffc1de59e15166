/// A fault on purpose, named by FAULT of the environment: `self_test` sees each reported.
#include <csignal>
#include <cstdlib>

#include <gtest/gtest.h>
#include <unistd.h>

TEST(Deliberate, Fault) {
    std::string const fault = std::getenv("FAULT");
    EXPECT_NE(fault, "failure");
    if (fault == "crash") (void)std::raise(SIGSEGV);
    if (fault == "hang") (void)pause();
    if (fault == "descriptor") (void)dup(STDERR_FILENO);
    if (fault == "child" && fork() == 0) _exit(0);
}
