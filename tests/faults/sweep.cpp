#include <faults/sweep.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>

#include <faults/interpose.h>
#include <unistd.h>

namespace {

/// Which call fails, -1 for none, 0 where nothing is watched, and what has come of it.
thread_local struct {
    int nth, calls;
    bool lasting, fired, isAllocation;
} fault;

std::atomic<long> liveBlocks{0};

/// The blocks and the descriptors that are held; of these as many as there are below the free one.
std::pair<long, int> _held() {
    int const descriptor = dup(0);
    (void)close(descriptor);
    return {liveBlocks, descriptor};
}

/// Whether the operation makes as many as `nth` watched calls, which fails; none does for -1.
bool _sweepPoint(Sweep const& swept, int nth, bool lasting) {
    swept.before();
    int const code = runFailing(nth, lasting, swept.operation);
    bool const failed = fault.fired;
    bool const mayFail = nth > 0;  // also where only a child came as far
    EXPECT_TRUE(code == PERR_OK || (mayFail && swept.codes.contains(code)))
        << "gave " << codeName(code);
    if (fault.isAllocation && swept.tellsMemory) {
        EXPECT_CODE(PERR_NO_MEMORY, code);
    }
    swept.after(code);
    return failed;
}

}  // namespace

void sweep(Sweep const& swept) {
    int points = 0;
    SCOPED_TRACE(swept.name);
    (void)_sweepPoint(swept, -1, false);
    for (bool const lasting : {false, true})
        for (int n = 1; n <= swept.most; ++n, ++points) {
            SCOPED_TRACE(testing::Message() << "failing: call " << n << (lasting ? " and on" : ""));
            auto const held = _held();
            if (!_sweepPoint(swept, n, lasting)) break;
            (void)_sweepPoint(swept, -1, false);
            EXPECT_EQ(held, _held()) << "blocks of memory, the lowest free descriptor";
            if (testing::Test::HasFailure()) return;
        }
    EXPECT_GT(points, 0) << "nothing is watched";
    std::printf("%-40s | %5d points\n", swept.name, points);
    (void)std::fflush(stdout);  // a child that ends through exit would print it again
}

int firstFailure(std::initializer_list<int> codes) {
    for (int const code : codes)
        if (code != PERR_OK) return code;
    return PERR_OK;
}

int runFailing(int nth, bool lasting, std::function<int()> const& operation) {
    pid_t const self = getpid();
    fault = {nth, 0, lasting, false, false};
    int const code = operation();
    fault.nth = 0;
    if (getpid() != self) _exit(2);  // the child of a failed launch: the tests are the parent's
    return code;
}

bool memoryRanOut() {
    return fault.isAllocation;
}

bool failsNow(bool isAllocation) {
    if (fault.nth == 0) return false;
    ++fault.calls;
    bool const fails = fault.calls == fault.nth || (fault.calls > fault.nth && fault.lasting);
    if (fails && !fault.fired) fault.isAllocation = isAllocation;
    fault.fired = fault.fired || fails;
    errno = fails ? EIO : errno;
    return fails;
}

// The calls of the C library that fail: these definitions win over it.
// clang-format off
void* operator new(std::size_t bytes, std::nothrow_t const&) noexcept {
    void* const block = failsNow(true) ? nullptr : std::malloc(bytes);
    liveBlocks += block != nullptr ? 1 : 0;
    return block;
}
void* operator new(std::size_t bytes) {
    void* const block = operator new(bytes, std::nothrow);
    return block != nullptr ? block : throw std::bad_alloc();
}
void operator delete(void* block) noexcept {
    liveBlocks -= block != nullptr ? 1 : 0;
    std::free(block);
}
void operator delete(void* block, std::size_t) noexcept { operator delete(block); }
// Those for arrays forward by themselves, but under a sanitizer.
void* operator new[](std::size_t bytes, std::nothrow_t const&) noexcept { return operator new(bytes, std::nothrow); }
void* operator new[](std::size_t bytes) { return operator new(bytes); }
void operator delete[](void* block) noexcept { operator delete(block); }
void operator delete[](void* block, std::size_t) noexcept { operator delete(block); }

#define WATCH(name) INTERPOSE(name, if (failsNow()) return -1)
#define WATCH_NULL(name) INTERPOSE(name, if (failsNow()) return 0)
#define WATCH_ERROR(name) INTERPOSE(name, if (failsNow()) return EAGAIN)
// What gives something back happens all the same.
#define WATCH_RELEASE(name) INTERPOSE(name, long const done = pass(); return failsNow() ? -1 : done)
#define WATCH_PAUSE(name) INTERPOSE(name, if (fault.nth != 0) return failsNow() ? -1 : 0)

WATCH(open) WATCH(read) WATCH(write) WATCH(lseek) WATCH(fstat) WATCH(stat) WATCH(access) WATCH(fsync)
WATCH(flock) WATCH(fcntl) WATCH(rename) WATCH(unlink) WATCH(rmdir) WATCH(mkdir) WATCH(readlink)
WATCH(openat) WATCH(fstatat) WATCH(fchmod) WATCH(renameat) WATCH_RELEASE(unlinkat) WATCH(readlinkat)
WATCH(getrandom)
WATCH_NULL(opendir) WATCH_NULL(readdir) WATCH_RELEASE(closedir) WATCH_RELEASE(close)
WATCH_NULL(fopen) WATCH_NULL(fread) WATCH_NULL(fgets) WATCH(getpriority) WATCH(fork) WATCH(waitpid)
WATCH(chdir) WATCH(setenv) WATCH(execvp) WATCH_PAUSE(usleep) WATCH_PAUSE(sleep)
WATCH_NULL(sem_open) WATCH(sem_init) WATCH(sem_wait) WATCH(sem_trywait) WATCH(sem_timedwait)
WATCH(sem_post) WATCH(sem_getvalue) WATCH_RELEASE(sem_close) WATCH_RELEASE(sem_unlink)
WATCH_RELEASE(sem_destroy) WATCH_ERROR(pthread_mutex_init) WATCH_ERROR(pthread_mutex_lock)
WATCH_RELEASE(pthread_mutex_unlock) WATCH_RELEASE(pthread_mutex_destroy)
WATCH_ERROR(pthread_cond_init) WATCH_ERROR(pthread_cond_timedwait) WATCH_ERROR(pthread_cond_signal)
WATCH_ERROR(pthread_cond_broadcast) WATCH_RELEASE(pthread_cond_destroy) WATCH_ERROR(pthread_create)
WATCH_RELEASE(pthread_join) WATCH_RELEASE(pthread_detach) WATCH(clock_gettime) WATCH_NULL(dlopen)
WATCH_NULL(gethostbyname) WATCH(getaddrinfo) WATCH(getnameinfo)
// No signal leaves for the processes of others, whatever the library asks for.
INTERPOSE(kill, EXPECT_GT(int(a), 0); if (failsNow() || int(a) <= 0) return -1)
// The machine has a name that no network is asked about.
INTERPOSE(gethostname, return failsNow() ? -1 : (strcpy(reinterpret_cast<char*>(a), "localhost"), 0))
    // clang-format on
