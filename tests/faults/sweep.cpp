#include <faults/sweep.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <new>

#include <dlfcn.h>
#include <support/audit.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

constexpr int MOST_POINTS = 5000;

thread_local Fault* armed = nullptr;
thread_local int calls = 0;
std::atomic<long> liveBlocks{0};  // handed out by the allocation operators and not given back

bool _fails() {
    if (armed == nullptr) return false;
    ++calls;
    bool const fails = calls == armed->nth || (calls > armed->nth && armed->lasting);
    armed->fired = armed->fired || fails;
    return fails;
}

void* _allocate(std::size_t bytes) {
    void* const block = _fails() ? nullptr : std::malloc(bytes);
    if (block != nullptr) ++liveBlocks;
    return block;
}

void* _allocateOrThrow(std::size_t bytes) {
    void* const block = _allocate(bytes);
    return block != nullptr ? block : throw std::bad_alloc();
}

void _release(void* block) {
    if (block != nullptr) --liveBlocks;
    std::free(block);
}

/// One run with one failure; false when no call was left to fail.
bool _runOnce(char const* name, Codes const& codes, Scenario const& scenario, Fault fault) {
    SCOPED_TRACE(testing::Message()
                 << name << ", call " << fault.nth << (fault.lasting ? "..." : ""));
    auto const before = currentHoldings();
    long const blocks = liveBlocks;
    int const code = scenario(fault);
    EXPECT_EQ(liveBlocks, blocks) << "blocks held";
    while (waitpid(-1, nullptr, 0) > 0) continue;
    EXPECT_EQ(currentHoldings(), before);
    EXPECT_TRUE(code == PERR_OK || (fault.fired && codes.contains(code))) << code;
    return fault.fired;
}

}  // namespace

int Fault::operator()(Operation const& operation) {
    pid_t const self = getpid();
    calls = 0;
    armed = this;
    int const code = operation();
    armed = nullptr;
    if (getpid() != self) _exit(1);  // the child of a failed launch: the tests are the parent's
    return code;
}

void sweep(char const* name, Codes const& codes, Scenario const& scenario) {
    int points = 0;
    for (bool const lasting : {false, true}) {
        int n = 1;
        while (n < MOST_POINTS && _runOnce(name, codes, scenario, {n, lasting})) ++n;
        ASSERT_LT(n, MOST_POINTS) << name << " never ends";
        points += n - 1;
        if (testing::Test::HasFailure()) return;
    }
    std::printf("%-40s | %5d points\n", name, points);
    (void)std::fflush(stdout);  // a child that ends through exit would print it again
}

void sweep(char const* name, Codes const& codes, Operation const& operation) {
    sweep(name, codes, [&](Fault& fault) { return withAndWithout(fault, operation); });
}

int withAndWithout(Fault& fault, Operation const& operation) {
    int const code = fault(operation);
    EXPECT_EQ(operation(), PERR_OK) << "and then works";
    return code;
}

int first(std::initializer_list<int> codes) {
    auto const failed =
        std::find_if(codes.begin(), codes.end(), [](int c) { return c != PERR_OK; });
    return failed == codes.end() ? PERR_OK : *failed;
}

// clang-format off
void* operator new(std::size_t bytes) { return _allocateOrThrow(bytes); }
void* operator new[](std::size_t bytes) { return _allocateOrThrow(bytes); }
void* operator new(std::size_t bytes, std::nothrow_t const&) noexcept { return _allocate(bytes); }
void* operator new[](std::size_t bytes, std::nothrow_t const&) noexcept { return _allocate(bytes); }
void operator delete(void* block) noexcept { _release(block); }
void operator delete[](void* block) noexcept { _release(block); }
void operator delete(void* block, std::size_t) noexcept { _release(block); }
void operator delete[](void* block, std::size_t) noexcept { _release(block); }

// Each call is defined under a name of its own and bears the real one as its symbol only, since the
// C library declares it with other types. On x86-64 one signature does for all: they take up to
// seven whole numbers or addresses, and give back at most one.
using Call = long (*)(long, long, long, long, long, long, long);
#define DEFINE(name, failure, code, allowed)                                                       \
    extern "C" long watched_##name(long a, long b, long c, long d, long e, long f, long g)         \
        __asm__(#name);                                                                            \
    long watched_##name(long a, long b, long c, long d, long e, long f, long g) {                  \
        static auto const real = reinterpret_cast<Call>(dlsym(RTLD_NEXT, #name));                  \
        allowed;                                                                                   \
        errno = code;                                                                              \
        return failure;                                                                            \
    }
#define PASS real(a, b, c, d, e, f, g)
// A call that fails without having happened.
#define WATCH(name, failure, code) DEFINE(name, failure, code, if (!_fails()) return PASS)
// A call that gives something back: it happens, and reports a failure.
#define WATCH_RELEASE(name, failure)                                                               \
    DEFINE(name, failure, EIO, long const result = PASS; if (!_fails()) return result)
// A pause: it takes no time while failures are counted.
#define WATCH_PAUSE(name, failure)                                                                 \
    DEFINE(name, failure, EINTR, if (armed == nullptr) return PASS; if (!_fails()) return 0)

WATCH(open, -1, EMFILE) WATCH(read, -1, EIO) WATCH(write, -1, ENOSPC) WATCH(lseek, -1, EINVAL)
WATCH(fstat, -1, EIO) WATCH(stat, -1, EACCES) WATCH(access, -1, EACCES) WATCH(fsync, -1, EIO)
WATCH(flock, -1, EAGAIN) WATCH(fcntl, -1, EIO) WATCH(rename, -1, EIO) WATCH(unlink, -1, EPERM)
WATCH(rmdir, -1, EBUSY) WATCH(mkdir, -1, ENOSPC) WATCH(opendir, 0, EMFILE) WATCH(readdir, 0, EIO)
WATCH_RELEASE(closedir, -1) WATCH_RELEASE(close, -1) WATCH(readlink, -1, EACCES)
WATCH(fopen, 0, EMFILE) WATCH(fread, 0, EIO) WATCH(fgets, 0, EIO) WATCH(getpriority, -1, ESRCH)
WATCH(fork, -1, EAGAIN) WATCH(waitpid, -1, EINTR) WATCH(kill, -1, EPERM) WATCH(chdir, -1, EACCES)
WATCH(setenv, -1, ENOMEM) WATCH(execvp, -1, E2BIG) WATCH_PAUSE(usleep, -1) WATCH_PAUSE(sleep, 1)
WATCH(sem_open, 0, EMFILE) WATCH(sem_init, -1, ENOSPC) WATCH(sem_wait, -1, EINTR)
WATCH(sem_trywait, -1, EINTR) WATCH(sem_timedwait, -1, EINTR) WATCH(sem_post, -1, EOVERFLOW)
WATCH(sem_getvalue, -1, EINVAL) WATCH_RELEASE(sem_close, -1) WATCH_RELEASE(sem_unlink, -1)
WATCH_RELEASE(sem_destroy, -1) WATCH(pthread_mutex_init, EAGAIN, 0)
WATCH(pthread_mutex_lock, EINVAL, 0) WATCH_RELEASE(pthread_mutex_unlock, EPERM)
WATCH_RELEASE(pthread_mutex_destroy, EBUSY) WATCH(pthread_cond_init, EAGAIN, 0)
WATCH(pthread_cond_timedwait, EINVAL, 0) WATCH(pthread_cond_signal, EINVAL, 0)
WATCH(pthread_cond_broadcast, EINVAL, 0) WATCH_RELEASE(pthread_cond_destroy, EBUSY)
WATCH(pthread_create, EAGAIN, 0) WATCH_RELEASE(pthread_join, EINVAL)
WATCH_RELEASE(pthread_detach, EINVAL) WATCH(clock_gettime, -1, EINVAL) WATCH(dlopen, 0, EIO)
WATCH(gethostbyname, 0, EAGAIN) WATCH(gethostname, -1, EFAULT) WATCH(getaddrinfo, -4, EAGAIN)
WATCH(getnameinfo, -4, EAGAIN)
    // clang-format on
