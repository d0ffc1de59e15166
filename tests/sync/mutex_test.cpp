#include <thread>

#include <portinglayer/synchronisation.h>
#include <support/child_run.h>
#include <support/expect.h>

TEST(Mutex, IsInitialisedOnceUntilItIsClosedAndFailsAtOnceWithoutThat) {
    PMutex mutex;
    EXPECT_CODE(PERR_OK, mutex.init(false)) << "the flag means nothing to it";
    EXPECT_CODE(PERR_MUTEX_INITIALISED, mutex.init(true));
    EXPECT_CODE(PERR_OK, mutex.close());
    EXPECT_CODE(PERR_MUTEX, mutex.lock());
    EXPECT_CODE(PERR_MUTEX, mutex.unlock());
    EXPECT_CODE(PERR_MUTEX, mutex.close());
    EXPECT_CODE(PERR_OK, mutex.init(true));
}

TEST(Mutex, LockedTwiceIsFreeAfterTwoUnlocks) {
    PMutex mutex;
    std::atomic<bool> entered = false;
    EXPECT_CODE(PERR_OK, mutex.init(true));
    EXPECT_CODE(PERR_OK, mutex.lock());
    EXPECT_CODE(PERR_OK, mutex.lock());
    std::jthread const other([&] {
        EXPECT_CODE(PERR_OK, mutex.lock());
        entered = true;
        EXPECT_CODE(PERR_OK, mutex.unlock());
    });
    EXPECT_CODE(PERR_OK, mutex.unlock());
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    EXPECT_FALSE(entered);
    EXPECT_CODE(PERR_OK, mutex.unlock());
    EXPECT_TRUE(eventually([&] { return entered.load(); }));
}

TEST(Mutex, IsUnlockedByItsOwnerOnly) {
    PMutex mutex;
    EXPECT_CODE(PERR_OK, mutex.init(true));
    EXPECT_CODE(PERR_OK, mutex.lock());
    std::thread([&] { EXPECT_CODE(PERR_MUTEX_UNLOCK, mutex.unlock()); }).join();
    EXPECT_CODE(PERR_OK, mutex.unlock());
}
