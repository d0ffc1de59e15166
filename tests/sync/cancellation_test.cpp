#include <portinglayer/synchronisation.h>
#include <portinglayer/threads.h>
#include <support/cancelled.h>
#include <support/expect.h>
#include <support/scratch.h>

namespace {

struct Locked {
    explicit Locked(PMutex& m) : mutex(m) { EXPECT_CODE(PERR_OK, mutex.lock()); }
    ~Locked() { EXPECT_CODE(PERR_OK, mutex.unlock()) << "it unwinds with the mutex locked"; }

    PMutex& mutex;
};

/// One of each, initialised.
struct Cancellation : testing::Test {
    Cancellation() {
        EXPECT_CODE(PERR_OK, mutex.init(true));
        EXPECT_CODE(PERR_OK, namedMutex.init(true));
        EXPECT_CODE(PERR_OK, semaphore.init(1, true));
        EXPECT_CODE(PERR_OK, namedSemaphore.init(1, true));
        EXPECT_CODE(PERR_OK, condition.init());
    }

    PMutex mutex, namedMutex{wide(uniqueName()).c_str()};
    PSemaphore semaphore, namedSemaphore{wide(uniqueName()).c_str()};
    PConditionalVar condition;
};

}  // namespace

TEST_F(Cancellation, EndsAThreadInWhatMayBlock) {
    auto const waitLocked = [this](auto... limit) {
        Locked const locked(mutex);
        (void)condition.wait(&mutex, limit...);
    };
    struct {
        char const* what;
        std::function<void()> work;
    } const rows[] = {
        {"a named lock", [&] { (void)namedMutex.lock(); }},
        {"a semaphore", [&] { (void)semaphore.wait(); }},
        {"a semaphore with a limit", [&] { (void)semaphore.wait(1); }},
        {"a condition", [&] { waitLocked(); }},
        {"a condition with a limit", [&] { waitLocked(60'000U); }},
        {"sleep", [] { (void)PThread::psleep(60'000); }},
    };
    for (auto const& row : rows) EXPECT_TRUE(endsACancelledThread(row.work)) << row.what;
    EXPECT_CODE(PERR_OK, semaphore.trywait()) << "nothing was taken";
}

TEST_F(Cancellation, WaitsForTheEndOfWhatClosesAndDestroys) {
    EXPECT_FALSE(endsACancelledThread([&] {
        EXPECT_CODE(PERR_OK, mutex.close());
        EXPECT_CODE(PERR_OK, namedMutex.close());
        EXPECT_CODE(PERR_OK, semaphore.close());
        EXPECT_CODE(PERR_OK, namedSemaphore.close());
        EXPECT_CODE(PERR_OK, condition.close());
    }));
}
