#include <thread>

#include <portinglayer/synchronisation.h>
#include <support/child_run.h>
#include <support/expect.h>

static_assert(sizeof(PMutex) == 40 && std::has_virtual_destructor_v<PMutex>);
static_assert(!std::is_copy_constructible_v<PMutex> && !std::is_copy_assignable_v<PMutex>);

TEST(Mutex, WithoutInitFailsAtOnce) {
    PMutex mutex;
    EXPECT_CODE(PERR_MUTEX, mutex.lock());
    EXPECT_CODE(PERR_MUTEX, mutex.unlock());
    EXPECT_CODE(PERR_MUTEX, mutex.close());
}

TEST(Mutex, IsInitialisedOnceUntilItIsClosed) {
    PMutex mutex;
    EXPECT_CODE(PERR_OK, mutex.init(false)) << "the flag means nothing to it";
    EXPECT_CODE(PERR_MUTEX_INITIALISED, mutex.init(true));
    EXPECT_CODE(PERR_OK, mutex.close());
    EXPECT_CODE(PERR_MUTEX, mutex.lock());
    EXPECT_CODE(PERR_OK, mutex.init(true));
    EXPECT_CODE(PERR_OK, mutex.lock());
    EXPECT_CODE(PERR_OK, mutex.unlock());
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

TEST(Mutex, IsWaitedForInSpiteOfSignals) {
    PMutex mutex;
    EXPECT_CODE(PERR_OK, mutex.init(true));
    std::atomic<bool> held = false;
    std::jthread const holder([&] {
        EXPECT_CODE(PERR_OK, mutex.lock());
        held = true;
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        EXPECT_CODE(PERR_OK, mutex.unlock());
    });
    EXPECT_TRUE(eventually([&] { return held.load(); }));
    EXPECT_CODE(PERR_OK, interrupted([&] { return mutex.lock(); }));
    EXPECT_CODE(PERR_OK, mutex.unlock());
}
