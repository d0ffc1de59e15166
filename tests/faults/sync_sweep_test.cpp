#include <faults/sweep.h>
#include <portinglayer/synchronisation.h>
#include <portinglayer/threads.h>
#include <support/scratch.h>

namespace {

/// What an operation gives where the system refuses its first call.
int refused(std::function<int()> const& operation) {
    return runFailing(1, true, operation);
}

}  // namespace

TEST(SyncSweep, ALockTellsWhatWasRefused) {
    PMutex unnamed, named(wide(uniqueName()).c_str());
    for (PMutex* const m : {&unnamed, &named}) {
        auto const init = [=] { return m->init(true); };
        auto const closed = [=] { (void)m->close(); };
        sweep({"PMutex::init", {PERR_MUTEX}, init, closed});
        EXPECT_CODE(PERR_MUTEX_LOCK, refused([=] { return m->lock(); }));
        EXPECT_CODE(PERR_OK, m->lock());
        EXPECT_CODE(PERR_MUTEX_UNLOCK, refused([=] { return m->unlock(); }));
        EXPECT_CODE(PERR_MUTEX_CLOSE, refused([=] { return m->close(); }));
        EXPECT_CODE(PERR_MUTEX, m->close()) << "it has no handle";
    }
}

TEST(SyncSweep, ASemaphoreTellsWhatWasRefused) {
    PSemaphore unnamed, named(wide(uniqueName()).c_str());
    int value = 7;
    for (PSemaphore* const s : {&unnamed, &named}) {
        auto const init = [=] { return s->init(2, true); };
        auto const closed = [=] { (void)s->close(); };
        sweep({"PSemaphore::init", {PERR_SEMAPHORE, PERR_NO_MEMORY}, init, closed});
        EXPECT_CODE(PERR_SEMAPHORE_POST, refused([=] { return s->post(); }));
        EXPECT_CODE(PERR_SEMAPHORE_WAIT, refused([=] { return s->wait(); }));
        EXPECT_CODE(PERR_SEMAPHORE_WAIT, refused([=] { return s->wait(9); }));
        EXPECT_CODE(PERR_SEMAPHORE_WAIT, refused([=] { return s->trywait(); }));
        EXPECT_CODE(PERR_SEMAPHORE_VALUE, refused([&] { return s->getValue(value); }));
        EXPECT_CODE(PERR_SEMAPHORE_CLOSE, refused([=] { return s->close(); }));
        EXPECT_CODE(PERR_SEMAPHORE, s->close()) << "it has no handle";
    }
    EXPECT_CODE(PERR_NO_MEMORY, refused([&] { return unnamed.init(2, true); }));
}

TEST(SyncSweep, AConditionTellsWhatWasRefused) {
    PMutex mutex;
    PConditionalVar condition;
    auto const init = [&] { return condition.init(); };
    auto const closed = [&] { (void)condition.close(); };
    sweep({"PConditionalVar::init", {PERR_CONDITION}, init, closed});
    EXPECT_CODE(PERR_OK, mutex.init(true));
    EXPECT_CODE(PERR_OK, mutex.lock());
    EXPECT_CODE(PERR_CONDITION_WAIT, refused([&] { return condition.wait(&mutex, 0); }));
    EXPECT_CODE(PERR_OK, mutex.unlock());
    EXPECT_CODE(PERR_CONDITION_NOTIFY, refused([&] { return condition.notify(); }));
    EXPECT_CODE(PERR_CONDITION_NOTIFY, refused([&] { return condition.notifyAll(); }));
    EXPECT_CODE(PERR_CONDITION_CLOSE, refused([&] { return condition.close(); }));
    EXPECT_CODE(PERR_MUTEX, condition.close()) << "it has no handle";
}

TEST(SyncSweep, AThreadTellsWhatWasRefused) {
    PThread thread;
    void* result = nullptr;
    auto const start = [&] { return thread.pcreate([](void* same) { return same; }, nullptr); };
    auto const joined = [&](int code) {
        EXPECT_CODE(code == PERR_OK ? PERR_OK : PERR_THREAD, thread.pjoin(result));
    };
    sweep({"PThread::pcreate", {PERR_THREAD}, start, [] {}, joined});
    EXPECT_CODE(PERR_OK, start());
    EXPECT_CODE(PERR_THREAD_JOIN, refused([&] { return thread.pjoin(result); }));
    EXPECT_CODE(PERR_THREAD, thread.pjoin(result)) << "it has no handle";
}
