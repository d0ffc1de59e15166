#include <thread>

#include <portinglayer/synchronisation.h>
#include <portinglayer/threads.h>
#include <support/child_run.h>
#include <support/interrupted.h>
#include <support/scratch.h>
#include <sys/mman.h>
#include <unistd.h>

namespace {

using Codes = std::vector<int>;

/// The lock, and the semaphore with count 1: used alike, with codes of their own.
struct Lock : PMutex {
    using PMutex::PMutex;
    int enter() { return lock(); }
    int leave() { return unlock(); }

    static constexpr int INVALID = PERR_MUTEX, EXISTS = PERR_MUTEX_EXISTS, FAILED = PERR_MUTEX_LOCK,
                         MISSING = PERR_MUTEX_NOT_FOUND, HELD = PERR_MUTEX_INITIALISED;
};

struct One : PSemaphore {
    using PSemaphore::PSemaphore;
    int init(bool create) { return PSemaphore::init(1, create); }
    int enter() { return wait(); }
    int leave() { return post(); }

    static constexpr int INVALID = PERR_SEMAPHORE, EXISTS = PERR_SEMAPHORE_EXISTS,
                         FAILED = PERR_SEMAPHORE_WAIT, MISSING = PERR_SEMAPHORE_NOT_FOUND,
                         HELD = PERR_SEMAPHORE_INITIALISED;
};

template <class Kind>
struct Locks : testing::Test {
    std::wstring const name = wide(uniqueName());
};

/// Adds 20000 to the number and gives how many calls failed.
template <class Kind>
int hammer(Kind& object, int& number, bool recursive = false) {
    int failures = 0;
    for (int i = 0; i < 20'000; ++i) {
        failures += object.enter() != PERR_OK;
        if (recursive) failures += object.enter() + object.leave() != PERR_OK;  // still held
        ++number;
        failures += object.leave() != PERR_OK;
    }
    return failures;
}

void inFourThreads(std::function<void(int)> const& work) {
    std::jthread const running[] = {std::jthread(work, 0), std::jthread(work, 1),
                                    std::jthread(work, 2), std::jthread(work, 3)};
}

struct Condition : testing::Test {
    Condition() { EXPECT_EQ(mutex.init(true), PERR_OK); }

    PMutex mutex;
    PConditionalVar condition;
};

}  // namespace

using Kinds = testing::Types<Lock, One>;
TYPED_TEST_SUITE(Locks, Kinds, );

TYPED_TEST(Locks, AreUsedBetweenInitAndCloseAndTheNameGoesWithTheFirstClose) {
    using T = TypeParam;
    T unnamed, first(this->name.c_str()), second(this->name.c_str());
    for (T* object : {&first, &unnamed})
        EXPECT_EQ((Codes{object->enter(), object->leave(), object->close(), object->init(true),
                         object->init(true)}),
                  (Codes{T::INVALID, T::INVALID, T::INVALID, PERR_OK, T::HELD}));
    EXPECT_EQ(
        (Codes{unnamed.close(), unnamed.close(), unnamed.init(false), second.init(true),
               second.init(false), first.close(), first.init(false), second.enter()}),
        (Codes{PERR_OK, T::INVALID, PERR_OK, T::EXISTS, PERR_OK, PERR_OK, T::MISSING, PERR_OK}));
    EXPECT_EQ(interrupted([&] { return second.enter(); }), T::FAILED);  // it is not recursive
    EXPECT_EQ((Codes{second.leave(), second.close()}), Codes(2, PERR_OK));
}

TYPED_TEST(Locks, WithAnInvalidNameAreRefusedAndWithALongOneCutToThirteenCharactersForGood) {
    std::string const longest = uniqueName() + std::string(257, 'x');
    std::pair<std::wstring, std::size_t> const table[] = {{wide(longest).substr(0, 252), 252},
                                                          {wide(longest).substr(0, 253), 13},
                                                          {wide(longest).substr(0, 257), 0},
                                                          {L"/\x20ac", 0},
                                                          {L"", 0}};
    for (auto const& [given, kept] : table) {
        SCOPED_TRACE(given.size());
        auto const file = "/dev/shm/sem." + longest.substr(1, kept - 1);
        int const result = kept != 0 ? PERR_OK : TypeParam::INVALID;
        TypeParam object(given.c_str());
        EXPECT_EQ(object.init(true), result);
        EXPECT_EQ(access(file.c_str(), F_OK) == 0, kept != 0);
        EXPECT_EQ((Codes{object.enter(), object.close()}), Codes(2, result));
        EXPECT_NE(access(file.c_str(), F_OK), 0);
    }
}

TYPED_TEST(Locks, LoseNoUpdateOfThreads) {
    TypeParam unnamed, named(this->name.c_str());
    for (TypeParam* object : {&unnamed, &named}) {
        bool const recursive = object == &unnamed && std::is_same_v<TypeParam, Lock>;
        int number = 0;
        EXPECT_EQ(object->init(true), PERR_OK);
        inFourThreads([&](int) { EXPECT_EQ(hammer(*object, number, recursive), 0); });
        EXPECT_EQ(number, 80'000);
    }
}

TYPED_TEST(Locks, LoseNoUpdateOfProcesses) {
    void* const page = mmap(nullptr, 1, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    int& number = *static_cast<int*>(page);
    TypeParam ours(this->name.c_str()), theirs(this->name.c_str());
    EXPECT_EQ((Codes{ours.init(true), ours.enter()}), Codes(2, PERR_OK));
    auto const work = [&] { return theirs.init(false) + hammer(theirs, number); };
    ChildRun partners[] = {ChildRun(work), ChildRun(work), ChildRun(work)};
    usleep(20'000);
    EXPECT_EQ((Codes{number, ours.leave()}), Codes(2, 0));  // all waited for us
    for (ChildRun& partner : partners) EXPECT_EQ(partner.wait(), 0);
    EXPECT_EQ(number, 60'000);
    (void)munmap(page, 1);
}

TEST(Semaphore, CountsUpToTheGreatestIntAndTakesAtOnceOrNotAtAll) {
    PSemaphore s;
    int value = 7;
    EXPECT_EQ((Codes{s.wait(1), s.trywait(), s.getValue(value), s.init(2'147'483'648, true)}),
              Codes(4, PERR_SEMAPHORE));
    EXPECT_EQ(s.init(0, true), PERR_SEMAPHORE_INITIALISED);  // the refused handle is kept
    EXPECT_EQ((Codes{s.close(), s.init(2'147'483'647, true), s.post(), value, s.getValue(value)}),
              (Codes{PERR_OK, PERR_OK, PERR_SEMAPHORE_POST, 7, PERR_OK}));
    EXPECT_EQ((Codes{value, s.close(), s.init(2, true), s.trywait(), s.wait(4'294'967'295)}),
              (Codes{2'147'483'647, PERR_OK, PERR_OK, PERR_OK, PERR_OK}));
    EXPECT_EQ((Codes{s.trywait(), s.wait(5999)}),
              (Codes{PERR_SEMAPHORE_WAIT, PERR_SEMAPHORE_TIMEOUT}));
}

TEST_F(Condition, ChecksTheMutexThenItself) {
    PMutex fresh, named(L"/never-created");
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

TEST_F(Condition, WakesAllThatWaitForTheirTurn) {
    int turn = condition.init();
    inFourThreads([&](int mine) {
        for (int i = 0; i < 2000; ++i) {
            EXPECT_EQ(mutex.lock(), PERR_OK);
            while (turn % 4 != mine)
                EXPECT_EQ(mine < 2 ? condition.wait(&mutex) : condition.wait(&mutex, 90'000), 0);
            ++turn;
            EXPECT_EQ((Codes{condition.notifyAll(), mutex.unlock()}), Codes(2, PERR_OK));
        }
    });
    EXPECT_EQ(turn, 8000);
}

TEST_F(Condition, AndSleepLastAsLongAsAskedUnlessItWraps) {
    EXPECT_EQ((Codes{condition.init(), mutex.lock()}), Codes(2, PERR_OK));
    for (unsigned int asked : {0U, 20U, 999U, 1001U}) {  // 999 nearly always carries into seconds
        long long const start = PTime::getTickCount();
        EXPECT_EQ((Codes{PThread::psleep(asked), condition.wait(&mutex, asked),
                         PThread::psleep(4'294'968)}),
                  (Codes{0, PERR_CONDITION_TIMEOUT, 0}));
        long long const waited = PTime::getTickCountDiff(start, PTime::getTickCount());
        EXPECT_TRUE(waited + 1 >= 2LL * asked && waited < 2LL * asked + 3000) << waited;
    }
    EXPECT_EQ(mutex.unlock(), PERR_OK);
}

TEST_F(Condition, LockAndJoinOutlastSignalsThatEndSleepAndSemaphore) {
    PConditionalVar silent;
    PSemaphore none;
    PThread thread;
    void* joined = nullptr;
    auto const rain = [](void* given) {
        usleep(50'000);
        return given;
    };
    EXPECT_EQ((Codes{none.init(0, true), silent.init(), condition.init()}), Codes(3, PERR_OK));
    std::jthread const notifier([&](std::stop_token const& stop) {
        for (; !stop.stop_requested(); usleep(1000)) {
            (void)mutex.lock();
            (void)rain(nullptr);
            EXPECT_EQ((Codes{condition.notify(), mutex.unlock()}), Codes(2, PERR_OK));
        }
    });
    auto const lock = [&] {
        int failed = 0;
        while (interruptions < 5) failed += mutex.lock() + mutex.unlock();
        return failed + mutex.lock();
    };
    std::tuple<char const*, int, std::function<int()>> const table[] = {
        {"lock", PERR_OK, lock},
        {"wait", PERR_OK, [&] { return condition.wait(&mutex); }},
        {"wait with a limit", PERR_CONDITION_TIMEOUT, [&] { return silent.wait(&mutex, 50); }},
        {"semaphore", PERR_SEMAPHORE_WAIT, [&] { return none.wait(); }},
        {"sleep", -1, [&] { return PThread::psleep(30'000); }},
        {"join", PERR_OK, [&] { return thread.pcreate(rain, nullptr) + thread.pjoin(joined); }}};
    for (auto const& [what, result, call] : table) EXPECT_EQ(interrupted(call), result) << what;
    EXPECT_EQ(mutex.unlock(), PERR_OK);
}
