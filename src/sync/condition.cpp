#include <cerrno>
#include <new>
#include <pthread.h>
#include <utility>

#include <portinglayer/synchronisation.h>

#include "sync/system_times.h"

namespace {

timespec _deadline(unsigned int milliseconds) {
    timespec now{};
    (void)clock_gettime(CLOCK_REALTIME, &now);  // every system has this clock
    return _toTimespec(_fromTimespec(now) + std::chrono::milliseconds(milliseconds));
}

int _waitResult(int error) {
    switch (error) {
    case 0: return PERR_OK;
    case ETIMEDOUT: return PERR_CONDITION_TIMEOUT;
    default: return PERR_CONDITION_WAIT;
    }
}

}  // namespace

PConditionalVar::PConditionalVar() = default;

PConditionalVar::~PConditionalVar() {
    (void)close();  // nobody is left to be told
}

int PConditionalVar::init() {
    if (condHandle != nullptr) return PERR_CONDITION_INITIALISED;
    condHandle.reset(new (std::nothrow) pthread_cond_t{});
    if (condHandle != nullptr && pthread_cond_init(condHandle.get(), nullptr) == 0) return PERR_OK;
    condHandle.reset();
    return PERR_CONDITION;
}

int PConditionalVar::checkWait(PMutex const* mutex) const {
    if (mutex == nullptr) return PERR_INVALID_ARGUMENT;
    if (mutex->named) return PERR_CONDITION_NAMED_MUTEX;
    if (mutex->mutexHandle == nullptr) return PERR_CONDITION_MUTEX_NOT_INITIALISED;
    return condHandle != nullptr ? PERR_OK : PERR_CONDITION;
}

int PConditionalVar::wait(PMutex* mutex) {
    int const refused = checkWait(mutex);
    if (refused != PERR_OK) return refused;
    return _waitResult(pthread_cond_wait(condHandle.get(), mutex->mutexHandle.get()));
}

int PConditionalVar::wait(PMutex* mutex, unsigned int milliseconds) {
    int const refused = checkWait(mutex);
    if (refused != PERR_OK) return refused;
    timespec const deadline = _deadline(milliseconds);
    return _waitResult(
        pthread_cond_timedwait(condHandle.get(), mutex->mutexHandle.get(), &deadline));
}

int PConditionalVar::notify() {
    if (condHandle == nullptr) return PERR_CONDITION;
    return pthread_cond_signal(condHandle.get()) == 0 ? PERR_OK : PERR_CONDITION_NOTIFY;
}

int PConditionalVar::notifyAll() {
    if (condHandle == nullptr) return PERR_CONDITION;
    return pthread_cond_broadcast(condHandle.get()) == 0 ? PERR_OK : PERR_CONDITION_NOTIFY;
}

int PConditionalVar::close() {
    auto const condition = std::exchange(condHandle, nullptr);
    if (condition == nullptr) return PERR_MUTEX;  // the code that a mutex gives, on purpose
    return pthread_cond_destroy(condition.get()) == 0 ? PERR_OK : PERR_CONDITION_CLOSE;
}
