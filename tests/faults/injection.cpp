#include <faults/injection.h>

#include <dlfcn.h>

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <new>

namespace {

thread_local bool armed = false;
thread_local bool lasts = false;
thread_local bool fired = false;
thread_local int left = 0;
std::atomic<long> blocks{0};

bool _fails() {
    if (!armed) return false;
    --left;
    if (left > 0 || (left < 0 && !lasts)) return false;
    fired = true;
    return true;
}

template <typename Function>
Function _real(char const* name) {
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

void* _allocate(std::size_t bytes) {
    void* const block = _fails() ? nullptr : std::malloc(bytes);
    if (block != nullptr) ++blocks;
    return block;
}

void* _allocateOrThrow(std::size_t bytes) {
    void* const block = _allocate(bytes);
    if (block == nullptr) throw std::bad_alloc();
    return block;
}

void _release(void* block) {
    if (block != nullptr) --blocks;
    std::free(block);
}

}  // namespace

void injection::arm(int nth, bool lasting) {
    left = nth;
    lasts = lasting;
    fired = false;
    armed = true;
}

bool injection::disarm() {
    armed = false;
    return fired;
}

long injection::liveBlocks() {
    return blocks;
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
// C library declares it with other types.
#define DEFINE(type, name, parameters)                                                             \
    extern "C" type watched_##name parameters __asm__(#name);                                      \
    type watched_##name parameters

// A call that fails without having happened.
#define WATCH(type, name, parameters, arguments, failure, code)                                    \
    DEFINE(type, name, parameters) {                                                                     \
        static auto const real = _real<type(*) parameters>(#name);                                 \
        if (!_fails()) return real arguments;                                                      \
        errno = code;                                                                              \
        return failure;                                                                            \
    }
// A call that gives something back: it happens, and reports a failure.
#define WATCH_RELEASE(name, parameters, arguments, failure)                                        \
    DEFINE(int, name, parameters) {                                                                     \
        static auto const real = _real<int (*) parameters>(#name);                                 \
        int const result = real arguments;                                                         \
        if (!_fails()) return result;                                                              \
        errno = EIO;                                                                               \
        return failure;                                                                            \
    }
// A pause: it takes no time while failures are counted.
#define WATCH_PAUSE(type, name, failure)                                                           \
    DEFINE(type, name, (unsigned length)) {                                                                   \
        static auto const real = _real<type (*)(unsigned)>(#name);                                 \
        if (!armed) return real(length);                                                           \
        return _fails() ? failure : 0;                                                             \
    }

WATCH(int, open, (char const* a, int b, unsigned c), (a, b, c), -1, EMFILE)
WATCH(long, read, (int a, void* b, unsigned long c), (a, b, c), -1, EIO)
WATCH(long, write, (int a, void const* b, unsigned long c), (a, b, c), -1, ENOSPC)
WATCH(long, lseek, (int a, long b, int c), (a, b, c), -1, EINVAL)
WATCH(int, fstat, (int a, void* b), (a, b), -1, EIO)
WATCH(int, stat, (char const* a, void* b), (a, b), -1, EACCES)
WATCH(int, access, (char const* a, int b), (a, b), -1, EACCES)
WATCH(int, fsync, (int a), (a), -1, EIO)
WATCH(int, flock, (int a, int b), (a, b), -1, EAGAIN)
WATCH(int, fcntl, (int a, int b, long c), (a, b, c), -1, EIO)
WATCH(int, rename, (char const* a, char const* b), (a, b), -1, EIO)
WATCH(int, unlink, (char const* a), (a), -1, EPERM)
WATCH(int, rmdir, (char const* a), (a), -1, EBUSY)
WATCH(int, mkdir, (char const* a, unsigned b), (a, b), -1, ENOSPC)
WATCH(void*, opendir, (char const* a), (a), nullptr, EMFILE)
WATCH(void*, readdir, (void* a), (a), nullptr, EIO)
WATCH_RELEASE(closedir, (void* a), (a), -1)
WATCH_RELEASE(close, (int a), (a), -1)
WATCH(void*, fopen, (char const* a, char const* b), (a, b), nullptr, EMFILE)
WATCH(unsigned long, fread, (void* a, unsigned long b, unsigned long c, void* d), (a, b, c, d), 0, EIO)
WATCH(char*, fgets, (char* a, int b, void* c), (a, b, c), nullptr, EIO)
WATCH(long, readlink, (char const* a, char* b, unsigned long c), (a, b, c), -1, EACCES)
WATCH(int, getpriority, (int a, unsigned b), (a, b), -1, ESRCH)
WATCH(int, fork, (), (), -1, EAGAIN)
WATCH(int, waitpid, (int a, int* b, int c), (a, b, c), -1, EINTR)
WATCH(int, kill, (int a, int b), (a, b), -1, EPERM)
WATCH(int, chdir, (char const* a), (a), -1, EACCES)
WATCH(int, setenv, (char const* a, char const* b, int c), (a, b, c), -1, ENOMEM)
WATCH(int, execvp, (char const* a, char* const* b), (a, b), -1, E2BIG)
WATCH_PAUSE(int, usleep, -1)
WATCH_PAUSE(unsigned, sleep, 1)
WATCH(void*, sem_open, (char const* a, int b, unsigned c, unsigned d), (a, b, c, d), nullptr, EMFILE)
WATCH(int, sem_init, (void* a, int b, unsigned c), (a, b, c), -1, ENOSPC)
WATCH(int, sem_wait, (void* a), (a), -1, EINTR)
WATCH(int, sem_trywait, (void* a), (a), -1, EINTR)
WATCH(int, sem_timedwait, (void* a, void const* b), (a, b), -1, EINTR)
WATCH(int, sem_post, (void* a), (a), -1, EOVERFLOW)
WATCH(int, sem_getvalue, (void* a, int* b), (a, b), -1, EINVAL)
WATCH_RELEASE(sem_close, (void* a), (a), -1)
WATCH_RELEASE(sem_unlink, (char const* a), (a), -1)
WATCH_RELEASE(sem_destroy, (void* a), (a), -1)
WATCH(int, pthread_mutex_init, (void* a, void const* b), (a, b), EAGAIN, 0)
WATCH(int, pthread_mutex_lock, (void* a), (a), EINVAL, 0)
WATCH_RELEASE(pthread_mutex_unlock, (void* a), (a), EPERM)
WATCH_RELEASE(pthread_mutex_destroy, (void* a), (a), EBUSY)
WATCH(int, pthread_cond_init, (void* a, void const* b), (a, b), EAGAIN, 0)
WATCH(int, pthread_cond_timedwait, (void* a, void* b, void const* c), (a, b, c), EINVAL, 0)
WATCH(int, pthread_cond_signal, (void* a), (a), EINVAL, 0)
WATCH(int, pthread_cond_broadcast, (void* a), (a), EINVAL, 0)
WATCH_RELEASE(pthread_cond_destroy, (void* a), (a), EBUSY)
WATCH(int, pthread_create, (void* a, void const* b, void* (*c)(void*), void* d), (a, b, c, d), EAGAIN, 0)
WATCH_RELEASE(pthread_join, (unsigned long a, void** b), (a, b), EINVAL)
WATCH_RELEASE(pthread_detach, (unsigned long a), (a), EINVAL)
WATCH(int, clock_gettime, (int a, void* b), (a, b), -1, EINVAL)
WATCH(void*, dlopen, (char const* a, int b), (a, b), nullptr, EIO)
WATCH(void*, gethostbyname, (char const* a), (a), nullptr, EAGAIN)
WATCH(int, gethostname, (char* a, unsigned long b), (a, b), -1, EFAULT)
WATCH(int, getaddrinfo, (char const* a, char const* b, void const* c, void** d), (a, b, c, d), -4, EAGAIN)
WATCH(int, getnameinfo, (void const* a, unsigned b, char* c, unsigned d, char* e, unsigned f, int g), (a, b, c, d, e, f, g), -4, EAGAIN)
// clang-format on
