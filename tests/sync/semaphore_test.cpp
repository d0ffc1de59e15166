#include <chrono>

#include <portinglayer/synchronisation.h>
#include <support/child_run.h>
#include <support/expect.h>

TEST(Semaphore, IsInitialisedOnceUntilItIsClosedAndFailsAtOnceWithoutThat) {
    PSemaphore semaphore;
    int value = 7;
    EXPECT_CODE(PERR_OK, semaphore.init(1, false)) << "the flag means nothing to the unnamed form";
    EXPECT_CODE(PERR_SEMAPHORE_INITIALISED, semaphore.init(1, true));
    EXPECT_CODE(PERR_OK, semaphore.close());
    EXPECT_CODE(PERR_SEMAPHORE, semaphore.post());
    EXPECT_CODE(PERR_SEMAPHORE, semaphore.wait());
    EXPECT_CODE(PERR_SEMAPHORE, semaphore.wait(1));
    EXPECT_CODE(PERR_SEMAPHORE, semaphore.trywait());
    EXPECT_CODE(PERR_SEMAPHORE, semaphore.getValue(value));
    EXPECT_EQ(7, value);
    EXPECT_CODE(PERR_SEMAPHORE, semaphore.close());
    EXPECT_CODE(PERR_SEMAPHORE, semaphore.init(2'147'483'648, true)) << "too large a count";
    EXPECT_CODE(PERR_SEMAPHORE_INITIALISED, semaphore.init(0, true)) << "the refused handle stays";
}

TEST(Semaphore, IsTakenAsOftenAsItsCount) {
    PSemaphore semaphore;
    int value = 0;
    EXPECT_CODE(PERR_OK, semaphore.init(2, true));
    EXPECT_CODE(PERR_OK, semaphore.wait());
    EXPECT_CODE(PERR_OK, semaphore.getValue(value));
    EXPECT_EQ(1, value);
    EXPECT_CODE(PERR_OK, semaphore.trywait());
    EXPECT_CODE(PERR_SEMAPHORE_WAIT, semaphore.trywait());
    EXPECT_CODE(PERR_OK, semaphore.post());
    EXPECT_CODE(PERR_OK, semaphore.wait(5999));
}

TEST(Semaphore, WithALimitIsNotWaitedForAndWithoutUntilASignalComes) {
    PSemaphore semaphore;
    EXPECT_CODE(PERR_OK, semaphore.init(0, true));
    auto const start = std::chrono::steady_clock::now();
    EXPECT_CODE(PERR_SEMAPHORE_TIMEOUT, semaphore.wait(5999));
    EXPECT_CODE(PERR_SEMAPHORE_TIMEOUT, semaphore.wait(4'294'967'295));
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(3));
    EXPECT_CODE(PERR_SEMAPHORE_WAIT, interrupted([&] { return semaphore.wait(); }));
}
