#include <thread>

#include <portinglayer/synchronisation.h>
#include <support/child_run.h>
#include <support/expect.h>

using std::chrono::milliseconds;
using std::chrono::steady_clock;

struct Condition : testing::Test {
    Condition() {
        EXPECT_CODE(PERR_OK, mutex.init(true));
        EXPECT_CODE(PERR_OK, condition.init());
    }

    PMutex mutex;
    PConditionalVar condition;
};

TEST_F(Condition, IsInitialisedOnceUntilItIsClosed) {
    EXPECT_CODE(PERR_CONDITION_INITIALISED, condition.init());
    EXPECT_CODE(PERR_OK, condition.close());
    EXPECT_CODE(PERR_MUTEX, condition.close()) << "with the code of a mutex";
    EXPECT_CODE(PERR_CONDITION, condition.notify());
    EXPECT_CODE(PERR_CONDITION, condition.notifyAll());
    EXPECT_CODE(PERR_OK, condition.init());
    EXPECT_CODE(PERR_OK, condition.notify());
}

TEST_F(Condition, LooksAtTheMutexBeforeItself) {
    PMutex named(L"/never-created"), without;
    PConditionalVar none;
    EXPECT_CODE(PERR_INVALID_ARGUMENT, none.wait(nullptr));
    EXPECT_CODE(PERR_CONDITION_NAMED_MUTEX, none.wait(&named));
    EXPECT_CODE(PERR_CONDITION_MUTEX_NOT_INITIALISED, none.wait(&without));
    EXPECT_CODE(PERR_CONDITION, none.wait(&mutex));
    EXPECT_CODE(PERR_CONDITION, none.wait(&mutex, 1));
}

TEST_F(Condition, IsWaitedForAsLongAsAskedInSpiteOfSignals) {
    EXPECT_CODE(PERR_OK, mutex.lock());
    auto const start = steady_clock::now();
    EXPECT_CODE(PERR_CONDITION_TIMEOUT, condition.wait(&mutex, 0));
    EXPECT_CODE(PERR_CONDITION_TIMEOUT, interrupted([&] { return condition.wait(&mutex, 50); }));
    EXPECT_GE(steady_clock::now() - start, milliseconds(49));
    EXPECT_LT(steady_clock::now() - start, milliseconds(3000));
    EXPECT_CODE(PERR_OK, mutex.unlock());
}

TEST_F(Condition, WakesAWaiter) {
    std::atomic<bool> woken = false;
    std::jthread const waiter([&] {
        EXPECT_CODE(PERR_OK, mutex.lock());
        EXPECT_CODE(PERR_OK, condition.wait(&mutex));
        woken = true;
        EXPECT_CODE(PERR_OK, mutex.unlock());
    });
    EXPECT_TRUE(eventually([&] { return condition.notify() == PERR_OK && woken; }));
}
