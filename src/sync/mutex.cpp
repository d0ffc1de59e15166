#include <cerrno>
#include <new>
#include <pthread.h>

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

int _openFailure(int error) {
    switch (error) {
    case EEXIST: return PERR_MUTEX_EXISTS;
    case ENOSYS: return PERR_NOT_SUPPORTED;
    case ENOENT: return PERR_MUTEX_NOT_FOUND;
    default: return PERR_MUTEX;
    }
}

}  // namespace

PMutex::PMutex() : named(false), semName(nullptr), mutexHandle(nullptr), semHandle(nullptr) {
}

PMutex::PMutex(PLiteral const& name)
    : named(true), semName(name.ascii()), mutexHandle(nullptr), semHandle(nullptr) {
}

PMutex::~PMutex() {
    (void)close();  // nobody is left to be told
    delete[] semName;
}

int PMutex::init(bool create) {
    if (named) {
        if (semHandle != nullptr) return PERR_MUTEX_INITIALISED;
        semHandle = _openNamedSemaphore(semName, create, 1);
        return semHandle != nullptr ? PERR_OK : _openFailure(errno);
    }

    if (mutexHandle != nullptr) return PERR_MUTEX_INITIALISED;
    mutexHandle = new (std::nothrow) pthread_mutex_t{};
    if (mutexHandle == nullptr) return PERR_MUTEX;
    if (_initRecursive(mutexHandle)) return PERR_OK;

    delete mutexHandle;
    mutexHandle = nullptr;
    return PERR_MUTEX;
}

int PMutex::lock() {
    // At most one of the handles is ever set, so the common form is found with one look.
    if (mutexHandle != nullptr)
        return pthread_mutex_lock(mutexHandle) == 0 ? PERR_OK : PERR_MUTEX_LOCK;

    if (semHandle == nullptr) return PERR_MUTEX;
    return sem_wait(semHandle) == 0 ? PERR_OK : PERR_MUTEX_LOCK;
}

int PMutex::unlock() {
    if (mutexHandle != nullptr)
        return pthread_mutex_unlock(mutexHandle) == 0 ? PERR_OK : PERR_MUTEX_UNLOCK;

    if (semHandle == nullptr) return PERR_MUTEX;
    return sem_post(semHandle) == 0 ? PERR_OK : PERR_MUTEX_UNLOCK;
}

int PMutex::close() {
    if (named) {
        if (semHandle == nullptr) return PERR_MUTEX;
        bool const closed = _closeNamedSemaphore(semHandle, semName);
        semHandle = nullptr;
        return closed ? PERR_OK : PERR_MUTEX_CLOSE;
    }

    if (mutexHandle == nullptr) return PERR_MUTEX;
    bool const destroyed = pthread_mutex_destroy(mutexHandle) == 0;
    delete mutexHandle;
    mutexHandle = nullptr;
    return destroyed ? PERR_OK : PERR_MUTEX_CLOSE;
}
