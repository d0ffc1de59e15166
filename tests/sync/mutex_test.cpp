#include <portinglayer/synchronisation.h>

#include "waiting.h"

static_assert(sizeof(PMutex) == 40 && std::has_virtual_destructor_v<PMutex>);

using Mutex = Blocking;

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
