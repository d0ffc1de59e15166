#include "fs/held_locks.h"

#include <pthread.h>
#include <unistd.h>

#include <mutex>
#include <utility>

namespace {

std::mutex change;
PFileLock* first = nullptr;
unsigned int forkCount = 0;

void _beforeFork() {
    change.lock();
    ++forkCount;
}

void _inParent() {
    change.unlock();
}

}  // namespace

void HeldLocks::giveUp() {
    for (PFileLock* lock = std::exchange(first, nullptr); lock != nullptr; lock = lock->next)
        (void)::close(std::exchange(lock->fd, -1));
    change.unlock();
}

bool HeldLocks::watchForks() {
    static bool const watched = pthread_atfork(_beforeFork, _inParent, giveUp) == 0;
    return watched;
}

unsigned int HeldLocks::forks() {
    std::lock_guard const guard(change);
    return forkCount;
}

bool HeldLocks::add(PFileLock& lock, int fd, unsigned int forks) {
    std::lock_guard const guard(change);
    if (forkCount != forks) return false;
    lock.fd = fd;
    lock.holder = getpid();
    lock.next = std::exchange(first, &lock);
    return true;
}

void HeldLocks::close(PFileLock& lock) {
    std::lock_guard const guard(change);
    PFileLock** link = &first;
    while (*link != &lock) link = &(*link)->next;
    *link = lock.next;
    (void)::close(std::exchange(lock.fd, -1));
}
