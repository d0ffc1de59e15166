#include <portinglayer/synchronisation.h>

#include "waiting.h"

static_assert(sizeof(PConditionalVar) == 16 && std::has_virtual_destructor_v<PConditionalVar>);

namespace {

struct Condition : testing::Test {
    Condition() { EXPECT_EQ(mutex.init(true), PERR_OK); }

    PMutex mutex;
    PConditionalVar condition;
};

}  // namespace

TEST_F(Condition, ChecksTheMutexThenItself) {
    PMutex fresh;
    PMutex named(L"/never-created");
    PMutex* const mutexes[] = {nullptr, &named, &fresh, &mutex};
    int const refused[] = {PERR_INVALID_ARGUMENT, PERR_CONDITION_NAMED_MUTEX,
                           PERR_CONDITION_MUTEX_NOT_INITIALISED, PERR_CONDITION};
    for (int i = 0; i < 4; ++i)
        EXPECT_EQ((Codes{condition.wait(mutexes[i]), condition.wait(mutexes[i], 1)}),
                  Codes(2, refused[i]));
    for (int round = 0; round < 2; ++round)
        EXPECT_EQ((Codes{condition.notify(), condition.notifyAll(), condition.close(),
                         condition.init(), condition.init(), condition.close()}),
                  (Codes{PERR_CONDITION, PERR_CONDITION, PERR_MUTEX, PERR_OK,
                         PERR_CONDITION_INITIALISED, PERR_OK}));
}

TEST_F(Condition, TimedWaitEndsAtItsLimitWithTheMutexLocked) {
    using namespace std::chrono;
    ASSERT_EQ(condition.init(), PERR_OK);
    for (unsigned int limit : {0U, 20U, 999U, 1100U}) {  // 999 nearly always carries into seconds
        auto const start = system_clock::now();
        EXPECT_EQ((Codes{mutex.lock(), condition.wait(&mutex, limit), mutex.unlock()}),
                  (Codes{PERR_OK, PERR_CONDITION_TIMEOUT, PERR_OK}));
        auto const waited = (system_clock::now() - start) / 1ms;
        EXPECT_TRUE(waited >= limit && waited < limit + 700) << limit << ": " << waited;
    }
}

TEST_F(Condition, WakesOneOrAllThatWaitForTheirTurn) {
    ASSERT_EQ(condition.init(), PERR_OK);
    for (int players : {2, 4}) {
        int turn = 0;
        together(players, [&](int mine) {
            for (int i = 0; i < 1000; ++i) {
                (void)mutex.lock();
                while (turn % players != mine)
                    (void)(mine == 0 ? condition.wait(&mutex) : condition.wait(&mutex, 30'000));
                ++turn;
                EXPECT_EQ(players == 2 ? condition.notify() : condition.notifyAll(), PERR_OK);
                (void)mutex.unlock();
            }
        });
        EXPECT_EQ(turn, players * 1000);
    }
}
