#include <memory>

#include <portinglayer/threads.h>

#include "waiting.h"

static_assert(sizeof(PThread) == 32 && std::has_virtual_destructor_v<PThread>);

namespace {

struct Thread : testing::Test {
    void start() {
        self = 0;
        end = false;
        ASSERT_EQ(thread->pcreate(run, this), PERR_OK);
        EXPECT_TRUE(eventually([&] { return self != 0; }));
    }

    /// A routine that tells which thread it is and runs until it is told to end.
    static void* run(void* given) {
        auto* const test = static_cast<Thread*>(given);
        for (test->self = PThread::getCurrentThreadId(); !test->end;) (void)PThread::psleep(1);
        test->self = 0;
        return given;
    }

    void expectNoThread() {
        EXPECT_EQ((Codes{thread->pjoin(result), thread->pdetach(), thread->pterminate(nullptr)}),
                  Codes(3, PERR_THREAD));
        EXPECT_TRUE(thread->getThreadId() == 0 && !thread->isAlive());
    }

    std::atomic<pthread_t> self = 0;
    std::atomic<bool> end = false;
    std::unique_ptr<PThread> thread = std::make_unique<PThread>();
    void* result = nullptr;
};

}  // namespace

TEST_F(Thread, RunsTheRoutineUntilJoinedAndMayStartAnother) {
    EXPECT_EQ(thread->pcreate(nullptr, this), PERR_THREAD);
    for (int round = 0; round < 2; ++round) {
        expectNoThread();
        start();
        EXPECT_EQ(thread->pcreate(run, nullptr), PERR_THREAD_EXISTS);
        EXPECT_TRUE(thread->isAlive());
        EXPECT_EQ(thread->getThreadId(), static_cast<unsigned int>(self));
        end = true;
        EXPECT_EQ(thread->pjoin(result), PERR_OK);
        EXPECT_EQ(result, this);
    }
    expectNoThread();
}

TEST_F(Thread, RunsOnWhenDetachedOrWhenItsObjectEnds) {
    for (bool detach : {true, false}) {
        start();
        EXPECT_EQ(detach ? thread->pdetach() : PERR_OK, PERR_OK);
        thread = std::make_unique<PThread>();
        end = true;
        EXPECT_TRUE(eventually([&] { return self == 0; }));
    }
}

TEST_F(Thread, TerminatingCancelsAndLeavesTheThreadUnjoined) {
    start();
    EXPECT_EQ(thread->pterminate(nullptr), PERR_OK);
    expectNoThread();
    EXPECT_EQ(pthread_join(self, &result), 0);
    EXPECT_TRUE(result == PTHREAD_CANCELED);
}
