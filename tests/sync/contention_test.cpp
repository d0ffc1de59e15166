#include <thread>

#include <portinglayer/synchronisation.h>
#include <support/expect.h>

TEST(Contention, ForTurnsWakesAllThatWaitOnACondition) {
    PMutex mutex;
    PConditionalVar condition;
    int turn = 0;
    ASSERT_CODE(PERR_OK, mutex.init(true));
    ASSERT_CODE(PERR_OK, condition.init());
    auto const work = [&](int mine) {
        for (int i = 0; i < 2000 && !testing::Test::HasFailure(); ++i) {
            EXPECT_CODE(PERR_OK, mutex.lock());
            while (turn % 4 != mine && !testing::Test::HasFailure())
                EXPECT_CODE(PERR_OK, condition.wait(&mutex, 20'000));
            ++turn;
            EXPECT_CODE(PERR_OK, condition.notifyAll());
            EXPECT_CODE(PERR_OK, mutex.unlock());
        }
    };
    {
        std::jthread const running[] = {std::jthread(work, 0), std::jthread(work, 1),
                                        std::jthread(work, 2), std::jthread(work, 3)};
    }
    EXPECT_EQ(8000, turn);
}
