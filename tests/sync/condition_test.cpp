#include <thread>

#include <portinglayer/synchronisation.h>
#include <support/child_run.h>
#include <support/expect.h>
#include <sync/system_times.h>

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
    struct {
        char const* what;
        PMutex* mutex;
        int code;
    } const rows[] = {
        {"no mutex", nullptr, PERR_INVALID_ARGUMENT},
        {"a named one", &named, PERR_CONDITION_NAMED_MUTEX},
        {"one without handle", &without, PERR_CONDITION_MUTEX_NOT_INITIALISED},
        {"a good one", &mutex, PERR_CONDITION},
    };
    for (auto const& row : rows) {
        SCOPED_TRACE(row.what);
        EXPECT_CODE(row.code, none.wait(row.mutex));
        EXPECT_CODE(row.code, none.wait(row.mutex, 1));
    }
}

TEST_F(Condition, IsWaitedForAsLongAsAskedInSpiteOfSignals) {
    EXPECT_CODE(PERR_OK, mutex.lock());
    for (unsigned int const asked : {0U, 50U}) {
        SCOPED_TRACE(asked);
        auto const start = steady_clock::now();
        auto const wait = [&] { return condition.wait(&mutex, asked); };
        EXPECT_CODE(PERR_CONDITION_TIMEOUT, asked == 0 ? wait() : interrupted(wait));
        EXPECT_GE(steady_clock::now() - start, milliseconds(asked) - milliseconds(1));
        EXPECT_LT(steady_clock::now() - start, milliseconds(asked + 3000));
    }
    EXPECT_CODE(PERR_OK, mutex.unlock());
}

TEST_F(Condition, HasADeadlineThatCarriesIntoSeconds) {
    timespec const now{.tv_sec = 10, .tv_nsec = 600'000'000};
    timespec const deadline = _toTimespec(_fromTimespec(now) + milliseconds(1500));
    EXPECT_EQ(12, deadline.tv_sec);
    EXPECT_EQ(100'000'000, deadline.tv_nsec);
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

TEST_F(Condition, WakesAllThatWait) {
    std::atomic<int> waiting = 0;
    auto const wait = [&] {
        EXPECT_CODE(PERR_OK, mutex.lock());
        ++waiting;
        EXPECT_CODE(PERR_OK, condition.wait(&mutex, 20'000));
        EXPECT_CODE(PERR_OK, mutex.unlock());
    };
    std::jthread const one(wait), other(wait);
    EXPECT_TRUE(eventually([&] { return waiting == 2; }));
    EXPECT_CODE(PERR_OK, mutex.lock());  // when both have given it away
    EXPECT_CODE(PERR_OK, condition.notifyAll());
    EXPECT_CODE(PERR_OK, mutex.unlock());
}
