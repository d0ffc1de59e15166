#include <functional>
#include <thread>

#include <sys/mman.h>

#include <portinglayer/synchronisation.h>
#include <support/child_run.h>
#include <support/expect.h>
#include <support/scratch.h>

constexpr int ROUNDS = 20'000;

static void _inFourThreads(std::function<void(int)> const& work) {
    std::jthread const running[] = {std::jthread(work, 0), std::jthread(work, 1),
                                    std::jthread(work, 2), std::jthread(work, 3)};
}

TEST(Contention, OfProcessesForANamedLockLosesNoUpdate) {
    std::wstring const name = wide(uniqueName());
    void* const page = mmap(nullptr, 1, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    ASSERT_NE(MAP_FAILED, page);
    int& number = *static_cast<int*>(page);
    PMutex ours(name.c_str()), theirs(name.c_str());
    EXPECT_CODE(PERR_OK, ours.init(true));
    auto const work = [&] {
        int failures = theirs.init(false) != PERR_OK ? 1 : 0;
        for (int i = 0; i < ROUNDS; ++i) {
            failures += theirs.lock() != PERR_OK ? 1 : 0;
            ++number;
            failures += theirs.unlock() != PERR_OK ? 1 : 0;
        }
        return failures;
    };
    ChildRun partners[] = {ChildRun(work), ChildRun(work), ChildRun(work)};
    for (ChildRun& partner : partners) EXPECT_EQ(0, partner.wait());
    EXPECT_EQ(3 * ROUNDS, number);
    EXPECT_EQ(0, munmap(page, 1));
}

TEST(Contention, OfThreadsForALockLosesNoUpdate) {
    PMutex mutex;
    int count = 0;
    ASSERT_CODE(PERR_OK, mutex.init(true));
    _inFourThreads([&](int) {
        for (int i = 0; i < ROUNDS && !testing::Test::HasFailure(); ++i) {
            EXPECT_CODE(PERR_OK, mutex.lock());
            ++count;
            EXPECT_CODE(PERR_OK, mutex.unlock());
        }
    });
    EXPECT_EQ(4 * ROUNDS, count);
}

TEST(Contention, ForTurnsWakesAllThatWaitOnACondition) {
    PMutex mutex;
    PConditionalVar condition;
    int turn = 0;
    ASSERT_CODE(PERR_OK, mutex.init(true));
    ASSERT_CODE(PERR_OK, condition.init());
    _inFourThreads([&](int mine) {
        for (int i = 0; i < 2000 && !testing::Test::HasFailure(); ++i) {
            EXPECT_CODE(PERR_OK, mutex.lock());
            while (turn % 4 != mine && !testing::Test::HasFailure())
                EXPECT_CODE(PERR_OK, condition.wait(&mutex, 20'000));
            ++turn;
            EXPECT_CODE(PERR_OK, condition.notifyAll());
            EXPECT_CODE(PERR_OK, mutex.unlock());
        }
    });
    EXPECT_EQ(8000, turn);
}
