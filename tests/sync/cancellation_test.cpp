#include <functional>

#include <portinglayer/synchronisation.h>
#include <portinglayer/threads.h>
#include <pthread.h>
#include <support/child_run.h>
#include <support/expect.h>
#include <support/scratch.h>

namespace {

/// Whether a thread that was asked to end before some work does not come to the work's end.
bool endsIn(std::function<void()> work) {
    auto const run = [](void* given) -> void* {
        (void)pthread_cancel(pthread_self());
        (*static_cast<std::function<void()>*>(given))();
        return nullptr;
    };
    PThread thread;
    void* result = nullptr;
    EXPECT_CODE(PERR_OK, thread.pcreate(run, &work));
    EXPECT_CODE(PERR_OK, thread.pjoin(result));
    return result == PTHREAD_CANCELED;
}

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
    for (auto const& row : rows) EXPECT_TRUE(endsIn(row.work)) << row.what;
    EXPECT_CODE(PERR_OK, semaphore.trywait()) << "nothing was taken";
}

TEST_F(Cancellation, WaitsForTheEndOfWhatClosesAndDestroys) {
    EXPECT_FALSE(endsIn([&] {
        EXPECT_CODE(PERR_OK, mutex.close());
        EXPECT_CODE(PERR_OK, namedMutex.close());
        EXPECT_CODE(PERR_OK, semaphore.close());
        EXPECT_CODE(PERR_OK, namedSemaphore.close());
        EXPECT_CODE(PERR_OK, condition.close());
    }));
}
