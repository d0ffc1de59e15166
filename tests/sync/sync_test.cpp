#include <ctime>

#include <portinglayer/synchronisation.h>
#include <portinglayer/threads.h>
#include <support/child_run.h>
#include <support/scratch.h>
#include <sys/mman.h>

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

TYPED_TEST(Locks, AreRefusedWithAnInvalidNameAndCutALongOneToThirteenCharactersForGood) {
    std::string const longest = uniqueName() + std::string(257, 'x');
    for (auto const& [given, kept] : {std::pair(252U, 252U), {253, 13}, {257, 0}}) {
        SCOPED_TRACE(given);
        auto const file = "/dev/shm/sem." + longest.substr(1, kept - 1);
        int const result = kept != 0 ? PERR_OK : TypeParam::INVALID;
        TypeParam object(wide(longest).substr(0, given).c_str());
        EXPECT_EQ(object.init(true), result);
        EXPECT_EQ(access(file.c_str(), F_OK) == 0, kept != 0);
        EXPECT_EQ((Codes{object.enter(), object.close()}), Codes(2, result));
        EXPECT_NE(access(file.c_str(), F_OK), 0);
    }
    EXPECT_EQ(TypeParam(L"/\x20ac").init(true), TypeParam::INVALID);
}

TYPED_TEST(Locks, LoseNoUpdateOfThreads) {
    TypeParam object;
    int number = 0;
    EXPECT_EQ(object.init(true), PERR_OK);
    inFourThreads([&](int) { EXPECT_EQ(hammer(object, number), 0); });
    EXPECT_EQ(number, 80'000);
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
}

TEST(Semaphore, CountsUpToTheGreatestIntAndTakesAtOnceOrNotAtAll) {
    PSemaphore s;
    int value = 7;
    EXPECT_EQ((Codes{s.wait(1), s.trywait(), s.getValue(value), s.init(2'147'483'648, true)}),
              Codes(4, PERR_SEMAPHORE));
    EXPECT_EQ(s.init(0, true), PERR_SEMAPHORE_INITIALISED);  // the refused handle is kept
    EXPECT_EQ((Codes{s.close(), s.init(2'147'483'647, true), s.post(), value, s.getValue(value)}),
              (Codes{PERR_OK, PERR_OK, PERR_SEMAPHORE_POST, 7, PERR_OK}));
    EXPECT_EQ((Codes{value, s.close(), s.init(2, true), s.trywait(), s.wait(4'294'967'295),
                     s.trywait(), s.wait(5999)}),
              (Codes{2'147'483'647, PERR_OK, PERR_OK, PERR_OK, PERR_OK, PERR_SEMAPHORE_WAIT,
                     PERR_SEMAPHORE_TIMEOUT}));
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

TEST_F(Condition, ChecksTheMutexAndLastsLikeSleepAsLongAsAskedUnlessThatWraps) {
    PMutex named(L"/never-created");
    EXPECT_EQ((Codes{condition.wait(&named), condition.wait(&mutex, 1), condition.close()}),
              (Codes{PERR_CONDITION_NAMED_MUTEX, PERR_CONDITION, PERR_MUTEX}));
    EXPECT_EQ((Codes{condition.init(), mutex.lock(), mutex.lock(), mutex.unlock()}),
              Codes(4, PERR_OK));                        // it is recursive
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
    auto const rest = [](void* given) {
        usleep(50'000);
        return given;
    };
    EXPECT_EQ((Codes{none.init(0, true), silent.init(), condition.init()}), Codes(3, PERR_OK));
    std::jthread const notifier([&](std::stop_token const& stop) {
        for (; !stop.stop_requested(); usleep(1000)) {
            (void)mutex.lock();
            usleep(50'000);
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
        {"join", PERR_OK, [&] { return thread.pcreate(rest, nullptr) + thread.pjoin(joined); }}};
    for (auto const& [what, result, call] : table) EXPECT_EQ(interrupted(call), result) << what;
    EXPECT_EQ(mutex.unlock(), PERR_OK);
}

TEST(Thread, IsOwnedUntilItIsJoinedDetachedOrTerminatedOrTheObjectEnds) {
    static std::atomic<pthread_t> self = 0;
    static std::atomic<bool> end = false;
    auto const run = [](void* given) {
        for (self = PThread::getCurrentThreadId(); !end;) (void)PThread::psleep(1);
        self = 0;
        return given;
    };
    auto thread = std::make_unique<PThread>();
    void* result = nullptr;
    for (std::string const way : {"join", "detach", "terminate", "destroy"}) {
        SCOPED_TRACE(way);
        end = false;
        ASSERT_EQ(thread->pcreate(run, &end), PERR_OK);
        EXPECT_EQ(thread->pcreate(run, nullptr), PERR_THREAD_EXISTS);
        EXPECT_TRUE(eventually([] { return self != 0; }) && thread->isAlive());
        EXPECT_EQ(thread->getThreadId(), static_cast<unsigned int>(self));
        if (way == "destroy") thread = std::make_unique<PThread>();
        EXPECT_TRUE(way != "detach" || thread->pdetach() == PERR_OK);
        if (way == "terminate") {  // and not joined by the object
            EXPECT_EQ(thread->pterminate(nullptr), PERR_OK);
            EXPECT_EQ(pthread_join(self.exchange(0), &result), 0);
        }
        end = true;
        EXPECT_TRUE(way != "join" || (thread->pjoin(result) == PERR_OK && result == &end));
        EXPECT_TRUE(eventually([] { return self == 0; }) && (way != "join" || !thread->isAlive()));
        EXPECT_EQ((Codes{thread->pjoin(result), thread->pdetach(), thread->pterminate(&end),
                         thread->pcreate(nullptr, &end)}),
                  Codes(4, PERR_THREAD));
    }
}

TEST(Time, IsThePresentMomentInTheLocalTimeZone) {
    (void)setenv("TZ", "EAST-13:30", 1);
    PTime t{};
    EXPECT_EQ(PTime::getTime(t), PERR_OK);
    EXPECT_LT(std::abs(t.epochMilliseconds / 1000 - std::time(nullptr)), 3);
    std::tm local{t.second, t.minute, t.hour, t.day, t.month - 1, t.year - 1900, 0, 0, 0, 0, ""};
    EXPECT_EQ(std::mktime(&local) * 1000LL + t.milliseconds, t.epochMilliseconds);
    EXPECT_TRUE(local.tm_wday == t.weekDay && local.tm_yday == t.yearDay);
}
