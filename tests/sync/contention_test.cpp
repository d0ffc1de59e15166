#include <functional>
#include <thread>

#include <support/child_run.h>
#include <sync/locks.h>
#include <sys/mman.h>

namespace {

template <class Kind>
struct Contended : Named<Kind> {};

/// Adds 20000 to the number and gives how many calls failed.
template <class Kind>
int hammer(Kind& object, int& number) {
    int failures = 0;
    for (int i = 0; i < 20'000; ++i) {
        failures += object.enter() != PERR_OK;
        ++number;
        failures += object.leave() != PERR_OK;
    }
    return failures;
}

void inFourThreads(std::function<void(int)> const& work) {
    std::jthread const running[] = {std::jthread(work, 0), std::jthread(work, 1),
                                    std::jthread(work, 2), std::jthread(work, 3)};
}

}  // namespace

TYPED_TEST_SUITE(Contended, Kinds, );

TYPED_TEST(Contended, ByProcessesLosesNoUpdate) {
    void* const page = mmap(nullptr, 1, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    int& number = *static_cast<int*>(page);
    TypeParam ours(this->name.c_str()), theirs(this->name.c_str());
    EXPECT_CODE(PERR_OK, ours.init(true));
    EXPECT_CODE(PERR_OK, ours.enter());
    auto const work = [&] { return theirs.init(false) + hammer(theirs, number); };
    ChildRun partners[] = {ChildRun(work), ChildRun(work), ChildRun(work)};
    usleep(20'000);
    EXPECT_EQ(0, number) << "all wait for us";
    EXPECT_CODE(PERR_OK, ours.leave());
    for (ChildRun& partner : partners) EXPECT_EQ(0, partner.wait());
    EXPECT_EQ(60'000, number);
    (void)munmap(page, 1);
}

TEST(ContendedCondition, WakesAllThatWaitForTheirTurn) {
    PMutex mutex;
    PConditionalVar condition;
    ASSERT_CODE(PERR_OK, mutex.init(true));
    ASSERT_CODE(PERR_OK, condition.init());
    int turn = 0;
    inFourThreads([&](int mine) {
        for (int i = 0; i < 2000; ++i) {
            EXPECT_CODE(PERR_OK, mutex.lock());
            while (turn % 4 != mine)
                EXPECT_CODE(PERR_OK,
                            mine < 2 ? condition.wait(&mutex) : condition.wait(&mutex, 90'000));
            ++turn;
            EXPECT_CODE(PERR_OK, condition.notifyAll());
            EXPECT_CODE(PERR_OK, mutex.unlock());
        }
    });
    EXPECT_EQ(8000, turn);
}
