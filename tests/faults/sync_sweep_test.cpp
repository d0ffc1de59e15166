#include <faults/sweep.h>
#include <portinglayer/threads.h>
#include <support/child_run.h>
#include <sync/locks.h>

namespace {

/// One of each class in each form; they are closed and made anew before each run.
struct SyncSweep : testing::Test {
    std::wstring const name = wide(uniqueName());
    PMutex mutex, namedMutex{name.c_str()};
    PSemaphore semaphore, namedSemaphore{name.c_str()};
    PConditionalVar condition;
};

/// A look at what an operation leaves: another one gives this code after a success, that after a
/// failure.
auto gives(int afterSuccess, int afterFailure, std::function<int()> const& other) {
    return [=](int code) { EXPECT_CODE(code == PERR_OK ? afterSuccess : afterFailure, other()); };
}

}  // namespace

TEST_F(SyncSweep, ALockIsInitialisedLockedAndClosedOrNot) {
    for (PMutex* const m : {&mutex, &namedMutex}) {
        auto const init = [=] { return m->init(true); };
        auto const lock = [=] { return m->lock(); };
        auto const close = [=] { return m->close(); };
        auto const closed = [=] { (void)m->close(); };
        auto const open = [=] { (void)firstFailure({m->close(), m->init(true)}); };
        auto const unlocked = [=](int code) {
            if (code == PERR_OK) (void)m->unlock();
        };
        sweep({"PMutex::init", {PERR_MUTEX}, init, closed, gives(PERR_OK, PERR_MUTEX, close)});
        sweep({"PMutex::lock", {PERR_MUTEX_LOCK}, lock, open, unlocked});
        sweep({"PMutex::close",
               {PERR_MUTEX_CLOSE},
               close,
               open,
               gives(PERR_MUTEX, PERR_MUTEX, lock)});
    }
}

TEST_F(SyncSweep, ASemaphoreIsInitialisedTakenAndClosedOrNot) {
    for (PSemaphore* const s : {&semaphore, &namedSemaphore}) {
        auto const init = [=] { return s->init(2, true); };
        auto const close = [=] { return s->close(); };
        auto const closed = [=] { (void)s->close(); };
        auto const open = [=] { (void)firstFailure({s->close(), s->init(2, true)}); };
        auto const leaves = [=](int count) {
            return [=](int code) {
                int left = 0;
                EXPECT_CODE(PERR_OK, s->getValue(left));
                EXPECT_EQ(code == PERR_OK ? count : 2, left);
            };
        };
        auto const handle = [=, this](int code) {  // the unnamed form keeps the refused one
            bool const held = code == PERR_OK || (s == &semaphore && code == PERR_SEMAPHORE);
            EXPECT_CODE(held ? PERR_OK : PERR_SEMAPHORE, s->close());
        };
        auto const value = [=] {
            int count = 0;
            return s->getValue(count);
        };
        auto const ended = gives(PERR_SEMAPHORE, PERR_SEMAPHORE, close);
        std::set<int> const refused{PERR_SEMAPHORE_WAIT};
        Sweep const sweeps[] = {
            {"init", {PERR_SEMAPHORE, PERR_NO_MEMORY}, init, closed, handle},
            {"post", {PERR_SEMAPHORE_POST}, [=] { return s->post(); }, open, leaves(3)},
            {"wait", refused, [=] { return s->wait(); }, open, leaves(1)},
            {"wait with a limit", refused, [=] { return s->wait(9); }, open, leaves(1)},
            {"trywait", refused, [=] { return s->trywait(); }, open, leaves(1)},
            {"getValue", {PERR_SEMAPHORE_VALUE}, value, open, leaves(2)},
            {"close", {PERR_SEMAPHORE_CLOSE}, close, open, ended},
        };
        for (Sweep const& each : sweeps) sweep(each);
    }
}

TEST_F(SyncSweep, AConditionIsInitialisedUsedAndClosedOrNot) {
    auto const nothing = [](int) {};
    auto const init = [&] { return condition.init(); };
    auto const notify = [&] { return condition.notify(); };
    auto const notifyAll = [&] { return condition.notifyAll(); };
    auto const wait = [&] {
        int const code = condition.wait(&mutex, 0);
        return code == PERR_CONDITION_TIMEOUT ? PERR_OK : code;
    };
    auto const close = [&] { return condition.close(); };
    auto const closed = [&] { (void)condition.close(); };
    auto const open = [&] { (void)firstFailure({condition.close(), condition.init()}); };
    sweep({"init", {PERR_CONDITION}, init, closed, gives(PERR_OK, PERR_MUTEX, close)});
    sweep({"notify", {PERR_CONDITION_NOTIFY}, notify, open, nothing});
    sweep({"notifyAll", {PERR_CONDITION_NOTIFY}, notifyAll, open, nothing});
    EXPECT_CODE(PERR_OK, firstFailure({mutex.init(true), mutex.lock()}));
    sweep({"wait", {PERR_CONDITION_WAIT}, wait, open, nothing});
    EXPECT_CODE(PERR_OK, mutex.unlock());
    sweep({"close", {PERR_CONDITION_CLOSE}, close, open, gives(PERR_MUTEX, PERR_MUTEX, close)});
}

TEST_F(SyncSweep, AThreadIsStartedJoinedAndDetachedOrNot) {
    PThread thread;
    void* result = nullptr;
    static std::atomic<int> begun = 0;
    auto const routine = [](void* given) {
        ++begun;
        return given;
    };
    auto const start = [&] { return thread.pcreate(routine, this); };
    auto const join = [&] { return thread.pjoin(result); };
    auto const none = [&] { (void)thread.pjoin(result); };
    auto const started = [&] {  // until then it reads its routine from the object
        int const earlier = begun;
        (void)firstFailure({thread.pjoin(result), start()});
        EXPECT_TRUE(eventually([&] { return begun > earlier; }));
    };
    auto const joined = [&](int) { EXPECT_CODE(PERR_THREAD, thread.pjoin(result)); };
    sweep({"pcreate", {PERR_THREAD}, start, none, gives(PERR_OK, PERR_THREAD, join)});
    sweep({"pjoin", {PERR_THREAD_JOIN}, join, started, joined});
    sweep({"pdetach", {PERR_THREAD_DETACH}, [&] { return thread.pdetach(); }, started, joined});
}

TEST_F(SyncSweep, TheTickCountFallsBackToTheTimeOfDay) {
    PTime now{};
    long long tick = 0;
    auto const count = [&] {
        tick = PTime::getTickCount();
        return PERR_OK;
    };
    EXPECT_CODE(PERR_OK, PTime::getTime(now));
    EXPECT_CODE(PERR_OK, runFailing(1, true, count));
    EXPECT_GE(tick, now.epochMilliseconds);
}
