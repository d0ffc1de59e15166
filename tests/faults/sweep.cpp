#include <faults/sweep.h>

#include <cstdio>

#include <sys/wait.h>

#include <support/audit.h>

namespace {

constexpr int MOST_POINTS = 5000;

/// One run with one failure; false when no call was left to fail.
bool _runOnce(char const* name, Codes const& codes, Scenario const& scenario, Fault fault) {
    SCOPED_TRACE(testing::Message()
                 << name << ", call " << fault.nth << (fault.lasting ? "..." : ""));
    Holdings const before = currentHoldings();
    long const blocks = injection::liveBlocks();
    int const code = scenario(fault);
    EXPECT_EQ(injection::liveBlocks(), blocks) << "blocks held";
    while (waitpid(-1, nullptr, 0) > 0) continue;
    EXPECT_EQ(currentHoldings(), before);
    EXPECT_TRUE(code == PERR_OK || (fault.fired && codes.contains(code))) << code;
    return fault.fired;
}

}  // namespace

void sweep(char const* name, Codes const& codes, Scenario const& scenario) {
    int points = 0;
    for (bool const lasting : {false, true}) {
        int n = 1;
        while (n < MOST_POINTS && _runOnce(name, codes, scenario, {n, lasting})) ++n;
        ASSERT_LT(n, MOST_POINTS) << name << " never ends";
        points += n - 1;
        if (testing::Test::HasFailure()) return;
    }
    std::printf("%-40s | %5d points\n", name, points);
    (void)std::fflush(stdout);  // a child that ends through exit would print it again
}
