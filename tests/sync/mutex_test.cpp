#include <thread>

#include <portinglayer/synchronisation.h>
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

TEST(Mutex, LockedTwiceIsFreeAfterTwoUnlocksByItsOwner) {
    PMutex mutex;
    EXPECT_CODE(PERR_OK, mutex.init(true));
    EXPECT_CODE(PERR_OK, mutex.lock());
    EXPECT_CODE(PERR_OK, mutex.lock());
    EXPECT_CODE(PERR_OK, mutex.unlock());
    std::thread([&] { EXPECT_CODE(PERR_MUTEX_UNLOCK, mutex.unlock()); }).join();
    EXPECT_CODE(PERR_OK, mutex.unlock());
    EXPECT_CODE(PERR_MUTEX_UNLOCK, mutex.unlock()) << "nobody holds it";
}
