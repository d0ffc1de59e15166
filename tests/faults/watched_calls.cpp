// The calls of the C library that the sweep has fail: these definitions win over it.
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <new>

#include <faults/interpose.h>
#include <faults/sweep.h>

// clang-format off
void* operator new(std::size_t bytes, std::nothrow_t const&) noexcept {
    void* const block = failsNow(true) ? nullptr : std::malloc(bytes);
    countBlocks(block != nullptr ? 1 : 0);
    return block;
}
void* operator new(std::size_t bytes) {
    void* const block = operator new(bytes, std::nothrow);
    return block != nullptr ? block : throw std::bad_alloc();
}
void operator delete(void* block) noexcept {
    countBlocks(block != nullptr ? -1 : 0);
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
#define WATCH_PAUSE(name) INTERPOSE(name, if (isWatching()) return failsNow() ? -1 : 0)

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
