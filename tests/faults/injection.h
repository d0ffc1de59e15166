/// Makes the n-th watched call of a piece of code fail. Watched are the allocations and the calls of
/// the C library that the portability layer makes: the test program defines them all, so that its
/// own definitions win, and passes each on to the real one.
#ifndef TESTS_FAULTS_INJECTION_H
#define TESTS_FAULTS_INJECTION_H

namespace injection {

/// From now on, in this thread, the n-th watched call fails; with `lasting` every later one too.
void arm(int nth, bool lasting);

/// Ends that. True when a call was made to fail.
bool disarm();

/// Blocks that the allocation operators handed out and that were not given back.
long liveBlocks();

}  // namespace injection

#endif
