/// What a test may not leave behind: descriptors, children, named semaphores, scratch folders.
#ifndef TESTS_SUPPORT_AUDIT_H
#define TESTS_SUPPORT_AUDIT_H

#include <map>
#include <string>

/// Everything of this process that outlives a test when somebody forgets to release it: a line for
/// each thing, with what it is.
using Holdings = std::map<std::string, std::string>;

Holdings currentHoldings();

/// Compares around each test and fails the one that leaves something behind; ends the program by
/// SIGALRM in one that takes longer than TEST_SECONDS of the environment, or two minutes.
void installAudit();

#endif
