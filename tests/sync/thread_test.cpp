#include <memory>

#include <portinglayer/threads.h>
#include <support/child_run.h>
#include <support/expect.h>

namespace {

/// A thread that runs until it is let go; `self` is its handle meanwhile.
struct Thread : testing::Test {
    Thread() {
        EXPECT_CODE(PERR_OK, thread->pcreate(run, this));
        EXPECT_TRUE(eventually([&] { return self != 0; }));
    }
    ~Thread() override {
        end = true;
        EXPECT_TRUE(eventually([&] { return self == 0; })) << "it does not run on";
    }

    static void* run(void* given) {
        auto& test = *static_cast<Thread*>(given);
        test.self = PThread::getCurrentThreadId();
        while (!test.end) (void)PThread::psleep(1);
        test.self = 0;
        return given;
    }

    std::unique_ptr<PThread> thread = std::make_unique<PThread>();
    std::atomic<pthread_t> self = 0;
    std::atomic<bool> end = false;
    void* result = nullptr;
};

}  // namespace

TEST_F(Thread, IsOwnedUntilItIsJoined) {
    EXPECT_TRUE(thread->isAlive());
    EXPECT_EQ(static_cast<unsigned int>(self), thread->getThreadId());
    EXPECT_CODE(PERR_THREAD_EXISTS, thread->pcreate(run, this));
    end = true;
    EXPECT_CODE(PERR_OK, thread->pjoin(result));
    EXPECT_EQ(this, result);
    EXPECT_EQ(0U, thread->getThreadId());
}

TEST_F(Thread, RunsOnWhenItIsDetached) {
    EXPECT_CODE(PERR_OK, thread->pdetach());
    EXPECT_FALSE(thread->isAlive());
    EXPECT_CODE(PERR_THREAD, thread->pjoin(result));
}

TEST_F(Thread, RunsOnWhenItsObjectEnds) {
    thread.reset();
    EXPECT_NE(0U, self);
}

TEST_F(Thread, EndsWhenItIsTerminatedAndIsNotJoined) {
    EXPECT_CODE(PERR_OK, thread->pterminate(nullptr));
    EXPECT_EQ(0U, thread->getThreadId());
    EXPECT_EQ(0, pthread_join(self.exchange(0), &result));
    EXPECT_EQ(PTHREAD_CANCELED, result);
}

TEST(ThreadWithout, HasNothingToJoinDetachOrTerminate) {
    PThread thread;
    void* result = &thread;
    EXPECT_CODE(PERR_THREAD, thread.pjoin(result));
    EXPECT_EQ(&thread, result);
    EXPECT_CODE(PERR_THREAD, thread.pdetach());
    EXPECT_CODE(PERR_THREAD, thread.pterminate(nullptr));
    EXPECT_CODE(PERR_THREAD, thread.pcreate(nullptr, nullptr)) << "without a routine";
}

TEST(Sleep, LastsAsManyMillisecondsAsAskedUnlessThatWrapsOrASignalComes) {
    long long const start = PTime::getTickCount();
    EXPECT_EQ(0, PThread::psleep(4'294'968));
    EXPECT_EQ(0, PThread::psleep(50));
    long long const elapsed = PTime::getTickCountDiff(start, PTime::getTickCount());
    EXPECT_GE(elapsed, 49);
    EXPECT_LT(elapsed, 3000);
    EXPECT_EQ(-1, interrupted([] { return PThread::psleep(30'000); }));
}
