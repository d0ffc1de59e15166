/// What a test may not leave behind: descriptors, children, named semaphores, scratch folders.
/// Around each test of every program they are compared; one that leaves something fails. One that
/// takes longer than TEST_SECONDS of the environment, or two minutes, ends the program by SIGALRM.
#ifndef TESTS_SUPPORT_AUDIT_H
#define TESTS_SUPPORT_AUDIT_H

#include <map>
#include <string>

/// Everything of this process that outlives a test when somebody forgets to release it: a line for
/// each thing, with what it is. A child is shown by its id once it has ended, and by 0 before.
using Holdings = std::map<std::string, std::string>;

Holdings currentHoldings();

#endif
