#include <portinglayer/synchronisation.h>

#include "waiting.h"

static_assert(sizeof(PMutex) == 40 && std::has_virtual_destructor_v<PMutex>);
static_assert(sizeof(PSemaphore) == 32 && std::has_virtual_destructor_v<PSemaphore>);

using Mutex = testing::Test;
using Semaphore = testing::Test;

TEST_F(Mutex, IsUsedBetweenInitAndCloseAndLockedTwiceIsHeldUntilTheSecondUnlock) {
    PMutex mutex;
    for (bool create : {true, false}) {
        EXPECT_EQ((Codes{mutex.lock(), mutex.unlock(), mutex.close()}), Codes(3, PERR_MUTEX));
        EXPECT_EQ((Codes{mutex.init(create), mutex.init(create)}),
                  (Codes{PERR_OK, PERR_MUTEX_INITIALISED}));
        int number = 0;
        together(4, [&](int) {
            for (int i = 0; i < 20'000; ++i) {
                int const result = mutex.lock() + mutex.lock() + mutex.unlock();
                number += result == PERR_OK ? 1 : 0;
                (void)mutex.unlock();
            }
        });
        EXPECT_EQ(number, 80'000);
        EXPECT_EQ(mutex.close(), PERR_OK);
    }
}

TEST_F(Semaphore, IsUsedBetweenInitAndCloseAndCountsUpToTheGreatestInt) {
    PSemaphore s;
    int value = 7;
    for (bool create : {true, false}) {
        EXPECT_EQ((Codes{s.post(), s.wait(), s.wait(1), s.trywait(), s.getValue(value), s.close()}),
                  Codes(6, PERR_SEMAPHORE));
        EXPECT_EQ(
            (Codes{value, s.init(7, create), s.init(5, create), s.getValue(value), s.close()}),
            (Codes{7, PERR_OK, PERR_SEMAPHORE_INITIALISED, PERR_OK, PERR_OK}));
        EXPECT_EQ(value, 7);
    }
    EXPECT_EQ(
        (Codes{s.init(2'147'483'648, true), s.init(0, true), s.close(), s.init(2'147'483'647, true),
               s.post()}),
        (Codes{PERR_SEMAPHORE, PERR_SEMAPHORE_INITIALISED, PERR_OK, PERR_OK, PERR_SEMAPHORE_POST}));
}

TEST_F(Semaphore, TryAndTimedWaitTakeAtOnceOrNotAtAll) {
    PSemaphore s;
    EXPECT_EQ((Codes{s.init(2, true), s.trywait(), s.wait(4'294'967'295), s.trywait(),
                     s.wait(4'294'967'295), s.wait(5999), s.post(), s.wait()}),
              (Codes{PERR_OK, PERR_OK, PERR_OK, PERR_SEMAPHORE_WAIT, PERR_SEMAPHORE_TIMEOUT,
                     PERR_SEMAPHORE_TIMEOUT, PERR_OK, PERR_OK}));
}
