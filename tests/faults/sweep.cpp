#include <faults/sweep.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <new>
#include <utility>

#include <dlfcn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

struct Fault {
    int nth;
    bool lasting;
    bool fired = false;
};

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

int _run(Fault& fault, std::function<int()> const& operation) {
    pid_t const self = getpid();
    calls = 0;
    armed = &fault;
    int const code = operation();
    armed = nullptr;
    if (getpid() != self) _exit(1);  // the child of a failed launch: the tests are the parent's
    return code;
}

/// The blocks and the descriptors that are held; of these as many as there are below the free one.
std::pair<long, int> _held() {
    int const descriptor = dup(0);
    (void)close(descriptor);
    return {liveBlocks, descriptor};
}

}  // namespace

void sweep(char const* name, Codes const& codes, std::function<int()> const& operation,
           std::function<void()> const& before, int most) {
    int points = 0;
    auto const works = [&] {
        Fault none{INT_MAX, false};
        before();
        EXPECT_EQ(_run(none, operation), PERR_OK) << name << " with nothing failing";
    };
    works();
    for (bool const lasting : {false, true}) {
        bool fired = true;
        for (int n = 1; fired && n <= most; ++n) {
            SCOPED_TRACE(testing::Message() << name << ", call " << n << (lasting ? "..." : ""));
            std::pair<long, int> const held = _held();
            Fault fault{n, lasting};
            before();
            int const code = _run(fault, operation);
            fired = fault.fired;
            points += fired ? 1 : 0;
            EXPECT_TRUE(code == PERR_OK || (fired && codes.contains(code))) << code;
            works();
            EXPECT_EQ(_held(), held) << "blocks and descriptors";
            if (testing::Test::HasFailure()) return;
        }
    }
    std::printf("%-40s | %5d points\n", name, points);
    (void)std::fflush(stdout);  // a child that ends through exit would print it again
}

int first(std::initializer_list<int> codes) {
    auto const failed =
        std::find_if(codes.begin(), codes.end(), [](int c) { return c != PERR_OK; });
    return failed == codes.end() ? PERR_OK : *failed;
}

// clang-format off
void* operator new(std::size_t bytes, std::nothrow_t const&) noexcept {
    void* const block = _fails() ? nullptr : std::malloc(bytes);
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
void* operator new[](std::size_t bytes) { return operator new(bytes); }
void* operator new[](std::size_t n, std::nothrow_t const& t) noexcept { return operator new(n, t); }
void operator delete[](void* block) noexcept { operator delete(block); }
void operator delete(void* block, std::size_t) noexcept { operator delete(block); }
void operator delete[](void* block, std::size_t) noexcept { operator delete(block); }

// Each call is defined under a name of its own and bears the real one as its symbol only, since the
// C library declares it with other types. On x86-64 one signature does for all: they take up to
// seven whole numbers or addresses, and give back at most one.
using Call = long (*)(long, long, long, long, long, long, long);
#define DEFINE(name, failure, allowed)                                                             \
    extern "C" long watched_##name(long a, long b, long c, long d, long e, long f, long g)         \
        __asm__(#name);                                                                            \
    long watched_##name(long a, long b, long c, long d, long e, long f, long g) {                  \
        static auto const real = reinterpret_cast<Call>(dlsym(RTLD_NEXT, #name));                  \
        auto const pass = [&] { return real(a, b, c, d, e, f, g); };                               \
        allowed;                                                                                   \
        errno = EIO;                                                                               \
        return failure;                                                                            \
    }
// Calls that fail without having happened, with -1, null or an error number.
#define WATCH(name) DEFINE(name, -1, if (!_fails()) return pass())
#define WATCH_NULL(name) DEFINE(name, 0, if (!_fails()) return pass())
#define WATCH_ERROR(name) DEFINE(name, EAGAIN, if (!_fails()) return pass())
// Calls that give something back: they happen, and report a failure.
#define WATCH_RELEASE(name) DEFINE(name, -1, long const done = pass(); if (!_fails()) return done)
// Pauses: they take no time while failures are counted.
#define WATCH_PAUSE(name) DEFINE(name, -1, if (armed == nullptr) return pass(); if (!_fails()) return 0)

WATCH(open) WATCH(read) WATCH(write) WATCH(lseek) WATCH(fstat) WATCH(stat) WATCH(access) WATCH(fsync)
WATCH(flock) WATCH(fcntl) WATCH(rename) WATCH(unlink) WATCH(rmdir) WATCH(mkdir) WATCH(readlink)
WATCH_NULL(opendir) WATCH_NULL(readdir) WATCH_RELEASE(closedir) WATCH_RELEASE(close)
WATCH_NULL(fopen) WATCH_NULL(fread) WATCH_NULL(fgets) WATCH(getpriority) WATCH(fork) WATCH(waitpid)
WATCH(kill) WATCH(chdir) WATCH(setenv) WATCH(execvp) WATCH_PAUSE(usleep) WATCH_PAUSE(sleep)
WATCH_NULL(sem_open) WATCH(sem_init) WATCH(sem_wait) WATCH(sem_trywait) WATCH(sem_timedwait)
WATCH(sem_post) WATCH(sem_getvalue) WATCH_RELEASE(sem_close) WATCH_RELEASE(sem_unlink)
WATCH_RELEASE(sem_destroy) WATCH_ERROR(pthread_mutex_init) WATCH_ERROR(pthread_mutex_lock)
WATCH_RELEASE(pthread_mutex_unlock) WATCH_RELEASE(pthread_mutex_destroy)
WATCH_ERROR(pthread_cond_init) WATCH_ERROR(pthread_cond_timedwait) WATCH_ERROR(pthread_cond_signal)
WATCH_ERROR(pthread_cond_broadcast) WATCH_RELEASE(pthread_cond_destroy) WATCH_ERROR(pthread_create)
WATCH_RELEASE(pthread_join) WATCH_RELEASE(pthread_detach) WATCH(clock_gettime) WATCH_NULL(dlopen)
WATCH_NULL(gethostbyname) WATCH(getaddrinfo) WATCH(getnameinfo)
// The machine has a name that no network is asked about.
DEFINE(gethostname, -1, (void)pass(); if (!_fails()) return snprintf(reinterpret_cast<char*>(a), 10, "localhost") < 0)
    // clang-format on
