#include <faults/sweep.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <utility>

#include <unistd.h>

namespace {

/// Which call fails, -1 for none, 0 where nothing is watched, and what has come of it.
thread_local struct {
    int nth, calls;
    bool lasting, fired, isAllocation;
} fault;

std::atomic<long> liveBlocks{0};

/// The blocks and the descriptors that are held; of these as many as there are below the free one.
std::pair<long, int> _held() {
    int const descriptor = dup(0);
    (void)close(descriptor);
    return {liveBlocks, descriptor};
}

/// Whether the operation makes as many as `nth` watched calls, which fails; none does for -1.
bool _sweepPoint(Sweep const& swept, int nth, bool lasting) {
    swept.before();
    int const code = runFailing(nth, lasting, swept.operation);
    bool const failed = fault.fired;
    bool const mayFail = nth > 0;  // also where only a child came as far
    EXPECT_TRUE(code == PERR_OK || (mayFail && swept.codes.contains(code)))
        << "gave " << codeName(code);
    swept.after(code);
    return failed;
}

}  // namespace

void sweep(Sweep const& swept) {
    int points = 0;
    SCOPED_TRACE(swept.name);
    (void)_sweepPoint(swept, -1, false);
    for (bool const lasting : {false, true})
        for (int n = 1; n <= swept.most; ++n, ++points) {
            SCOPED_TRACE(testing::Message() << "failing: call " << n << (lasting ? " and on" : ""));
            auto const held = _held();
            if (!_sweepPoint(swept, n, lasting)) break;
            (void)_sweepPoint(swept, -1, false);
            EXPECT_EQ(held, _held()) << "blocks of memory, the lowest free descriptor";
            if (testing::Test::HasFailure()) return;
        }
    EXPECT_GT(points, 0) << "nothing is watched";
    std::printf("%-40s | %5d points\n", swept.name, points);
    (void)std::fflush(stdout);  // a child that ends through exit would print it again
}

int firstFailure(std::initializer_list<int> codes) {
    for (int const code : codes)
        if (code != PERR_OK) return code;
    return PERR_OK;
}

int runFailing(int nth, bool lasting, std::function<int()> const& operation) {
    pid_t const self = getpid();
    fault = {nth, 0, lasting, false, false};
    int const code = operation();
    fault.nth = 0;
    if (getpid() != self) _exit(2);  // the child of a failed launch: the tests are the parent's
    return code;
}

bool isWatching() {
    return fault.nth != 0;
}

bool memoryRanOut() {
    return fault.isAllocation;
}

bool failsNow(bool isAllocation) {
    if (fault.nth == 0) return false;
    ++fault.calls;
    bool const fails = fault.calls == fault.nth || (fault.calls > fault.nth && fault.lasting);
    if (fails && !fault.fired) fault.isAllocation = isAllocation;
    fault.fired = fault.fired || fails;
    errno = fails ? EIO : errno;
    return fails;
}

void countBlocks(long change) {
    liveBlocks += change;
}
