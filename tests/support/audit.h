/// What a test may not leave behind: descriptors, children, named semaphores, scratch folders.
/// Around each test of every program they are compared; one that leaves something fails. One that
/// takes longer than TEST_SECONDS of the environment, or two minutes, ends the program by SIGALRM.
#ifndef TESTS_SUPPORT_AUDIT_H
#define TESTS_SUPPORT_AUDIT_H

#include <set>
#include <string>

/// What this process holds: a line for each thing. One child is shown, by its id once it has ended.
std::set<std::string> currentHoldings();

#endif
