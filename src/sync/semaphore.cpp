#include <cerrno>
#include <memory>
#include <new>
#include <utility>

#include <portinglayer/synchronisation.h>

#include "sync/named_semaphore.h"
#include "sync/system_times.h"

PSemaphore::PSemaphore() : named(false), semHandle(nullptr) {
}

PSemaphore::PSemaphore(PLiteral const& name)
    : named(true), semName(name.ascii()), semHandle(nullptr) {
}

PSemaphore::~PSemaphore() {
    (void)close();  // nobody is left to be told
}

int PSemaphore::init(unsigned int value, bool create) {
    if (semHandle != nullptr) return PERR_SEMAPHORE_INITIALISED;
    if (named)
        return _openNamedSemaphore(
            semHandle, semName.get(), create, value,
            {PERR_SEMAPHORE_EXISTS, PERR_SEMAPHORE_NOT_FOUND, PERR_SEMAPHORE});

    // No holder, as the other form's handle is the system's.
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
    timespec const deadline = _toTimespec(std::chrono::milliseconds(milliseconds));
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
    if (named)
        return _closeNamedSemaphore(semaphore, semName.get()) ? PERR_OK : PERR_SEMAPHORE_CLOSE;

    std::unique_ptr<sem_t> const owned(semaphore);
    return sem_destroy(semaphore) == 0 ? PERR_OK : PERR_SEMAPHORE_CLOSE;
}
