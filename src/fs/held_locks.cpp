#include "fs/held_locks.h"

#include <pthread.h>
#include <unistd.h>

#include <utility>

namespace {

pthread_mutex_t change = PTHREAD_MUTEX_INITIALIZER;
PFileLock* first = nullptr;
unsigned int forkCount = 0;

/// Holds the mutex, which nothing but a missing initialisation keeps from being locked; that of the
/// standard library would throw.
class Changing {
public:
    Changing() : held(pthread_mutex_lock(&change) == 0) {}
    ~Changing() {
        if (held) (void)pthread_mutex_unlock(&change);
    }
    Changing(Changing const&) = delete;
    Changing& operator=(Changing const&) = delete;

private:
    bool held;
};

void _beforeFork() {
    (void)pthread_mutex_lock(&change);
    ++forkCount;
}

void _afterFork() {
    (void)pthread_mutex_unlock(&change);
}

}  // namespace

void HeldLocks::giveUp() {
    for (PFileLock* lock = std::exchange(first, nullptr); lock != nullptr; lock = lock->next)
        (void)::close(std::exchange(lock->fd, -1));
    _afterFork();
}

bool HeldLocks::watchForks() {
    static bool const watched = pthread_atfork(_beforeFork, _afterFork, giveUp) == 0;
    return watched;
}

unsigned int HeldLocks::forks() {
    Changing const alone;
    return forkCount;
}

bool HeldLocks::add(PFileLock& lock, Descriptor& file, unsigned int forks) {
    Changing const alone;
    if (forkCount != forks) return false;
    lock.fd = file.release();
    lock.holder = getpid();
    lock.next = std::exchange(first, &lock);
    return true;
}

void HeldLocks::close(PFileLock& lock) {
    Changing const alone;
    PFileLock** link = &first;
    while (*link != &lock) link = &(*link)->next;
    *link = lock.next;
    (void)::close(std::exchange(lock.fd, -1));
}
