#include <new>
#include <pthread.h>
#include <utility>

#include <portinglayer/synchronisation.h>

#include "sync/named_semaphore.h"

namespace {

bool _initRecursive(pthread_mutex_t* mutex) {
    pthread_mutexattr_t attributes;
    if (pthread_mutexattr_init(&attributes) != 0) return false;
    bool const done = pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE) == 0 &&
                      pthread_mutex_init(mutex, &attributes) == 0;
    (void)pthread_mutexattr_destroy(&attributes);  // holds nothing
    return done;
}

}  // namespace

PMutex::PMutex() : named(false), semHandle(nullptr) {
}

PMutex::PMutex(PLiteral const& name) : named(true), semName(name.ascii()), semHandle(nullptr) {
}

PMutex::~PMutex() {
    (void)close();  // nobody is left to be told
}

int PMutex::init(bool create) {
    if (mutexHandle != nullptr || semHandle != nullptr) return PERR_MUTEX_INITIALISED;
    if (named)
        return _openNamedSemaphore(semHandle, semName.get(), create, 1,
                                   {PERR_MUTEX_EXISTS, PERR_MUTEX_NOT_FOUND, PERR_MUTEX});

    mutexHandle.reset(new (std::nothrow) pthread_mutex_t{});
    if (mutexHandle != nullptr && _initRecursive(mutexHandle.get())) return PERR_OK;
    mutexHandle.reset();
    return PERR_MUTEX;
}

int PMutex::lock() {
    // At most one of the handles is ever set, so the common form is found with one look.
    if (mutexHandle != nullptr)
        return pthread_mutex_lock(mutexHandle.get()) == 0 ? PERR_OK : PERR_MUTEX_LOCK;

    if (semHandle == nullptr) return PERR_MUTEX;
    return sem_wait(semHandle) == 0 ? PERR_OK : PERR_MUTEX_LOCK;
}

int PMutex::unlock() {
    if (mutexHandle != nullptr)
        return pthread_mutex_unlock(mutexHandle.get()) == 0 ? PERR_OK : PERR_MUTEX_UNLOCK;

    if (semHandle == nullptr) return PERR_MUTEX;
    return sem_post(semHandle) == 0 ? PERR_OK : PERR_MUTEX_UNLOCK;
}

int PMutex::close() {
    if (sem_t* const semaphore = std::exchange(semHandle, nullptr); semaphore != nullptr)
        return _closeNamedSemaphore(semaphore, semName.get()) ? PERR_OK : PERR_MUTEX_CLOSE;

    auto const mutex = std::exchange(mutexHandle, nullptr);
    if (mutex == nullptr) return PERR_MUTEX;
    return pthread_mutex_destroy(mutex.get()) == 0 ? PERR_OK : PERR_MUTEX_CLOSE;
}
