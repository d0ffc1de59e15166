#include <cerrno>
#include <ctime>
#include <new>
#include <utility>

#include <portinglayer/synchronisation.h>

#include "sync/named_semaphore.h"

namespace {

constexpr unsigned int MILLISECONDS_PER_SECOND = 1000;
constexpr long NANOSECONDS_PER_MILLISECOND = 1'000'000;

int _openFailure(int error) {
    switch (error) {
    case ENOENT: return PERR_SEMAPHORE_NOT_FOUND;
    case EEXIST: return PERR_SEMAPHORE_EXISTS;
    case ENOSYS: return PERR_NOT_SUPPORTED;
    default: return PERR_SEMAPHORE;
    }
}

}  // namespace

PSemaphore::PSemaphore() : named(false), semName(nullptr), semHandle(nullptr) {
}

PSemaphore::PSemaphore(PLiteral const& name)
    : named(true), semName(name.ascii()), semHandle(nullptr) {
}

PSemaphore::~PSemaphore() {
    (void)close();  // nobody is left to be told
    delete[] semName;
}

int PSemaphore::init(unsigned int value, bool create) {
    if (semHandle != nullptr) return PERR_SEMAPHORE_INITIALISED;
    if (named) {
        semHandle = _openNamedSemaphore(semName, create, value);
        return semHandle != nullptr ? PERR_OK : _openFailure(errno);
    }

    semHandle = new (std::nothrow) sem_t{};
    if (semHandle == nullptr) return PERR_NO_MEMORY;
    if (sem_init(semHandle, 1, value) == 0) return PERR_OK;

    // The refused handle stays, so that the failure is noticed by every init until a close.
    return errno == ENOSYS ? PERR_NOT_SUPPORTED : PERR_SEMAPHORE;
}

int PSemaphore::post() {
    if (semHandle == nullptr) return PERR_SEMAPHORE;
    return sem_post(semHandle) == 0 ? PERR_OK : PERR_SEMAPHORE_POST;
}

int PSemaphore::wait() {
    if (semHandle == nullptr) return PERR_SEMAPHORE;
    return sem_wait(semHandle) == 0 ? PERR_OK : PERR_SEMAPHORE_WAIT;
}

int PSemaphore::wait(unsigned int milliseconds) {
    if (semHandle == nullptr) return PERR_SEMAPHORE;

    // No clock is added: the deadline is long past, and the call takes at once or not at all.
    timespec const deadline{.tv_sec = milliseconds / MILLISECONDS_PER_SECOND,
                            .tv_nsec = static_cast<long>(milliseconds % MILLISECONDS_PER_SECOND) *
                                       NANOSECONDS_PER_MILLISECOND};
    if (sem_timedwait(semHandle, &deadline) == 0) return PERR_OK;
    return errno == ETIMEDOUT ? PERR_SEMAPHORE_TIMEOUT : PERR_SEMAPHORE_WAIT;
}

int PSemaphore::trywait() {
    if (semHandle == nullptr) return PERR_SEMAPHORE;
    return sem_trywait(semHandle) == 0 ? PERR_OK : PERR_SEMAPHORE_WAIT;
}

int PSemaphore::getValue(int& value) {
    if (semHandle == nullptr) return PERR_SEMAPHORE;
    return sem_getvalue(semHandle, &value) == 0 ? PERR_OK : PERR_SEMAPHORE_VALUE;
}

int PSemaphore::close() {
    sem_t* const semaphore = std::exchange(semHandle, nullptr);
    if (semaphore == nullptr) return PERR_SEMAPHORE;
    if (named) return _closeNamedSemaphore(semaphore, semName) ? PERR_OK : PERR_SEMAPHORE_CLOSE;

    bool const destroyed = sem_destroy(semaphore) == 0;
    delete semaphore;
    return destroyed ? PERR_OK : PERR_SEMAPHORE_CLOSE;
}
