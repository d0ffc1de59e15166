#include <cerrno>
#include <ctime>
#include <new>
#include <pthread.h>
#include <utility>

#include <portinglayer/synchronisation.h>

namespace {

constexpr unsigned int MILLISECONDS_PER_SECOND = 1000;
constexpr long NANOSECONDS_PER_MILLISECOND = 1'000'000;
constexpr long NANOSECONDS_PER_SECOND = 1'000'000'000;

timespec _deadline(unsigned int milliseconds) {
    timespec moment{};
    (void)clock_gettime(CLOCK_REALTIME, &moment);  // every system has this clock
    moment.tv_sec += milliseconds / MILLISECONDS_PER_SECOND;
    moment.tv_nsec +=
        static_cast<long>(milliseconds % MILLISECONDS_PER_SECOND) * NANOSECONDS_PER_MILLISECOND;
    while (moment.tv_nsec >= NANOSECONDS_PER_SECOND) {
        moment.tv_nsec -= NANOSECONDS_PER_SECOND;
        ++moment.tv_sec;
    }
    return moment;
}

int _waitResult(int error) {
    switch (error) {
    case 0: return PERR_OK;
    case ETIMEDOUT: return PERR_CONDITION_TIMEOUT;
    default: return PERR_CONDITION_WAIT;
    }
}

}  // namespace

PConditionalVar::PConditionalVar() : condHandle(nullptr) {
}

PConditionalVar::~PConditionalVar() {
    (void)close();  // nobody is left to be told
}

int PConditionalVar::init() {
    if (condHandle != nullptr) return PERR_CONDITION_INITIALISED;
    condHandle = new (std::nothrow) pthread_cond_t{};
    if (condHandle == nullptr) return PERR_CONDITION;
    if (pthread_cond_init(condHandle, nullptr) == 0) return PERR_OK;

    delete condHandle;
    condHandle = nullptr;
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
    return _waitResult(pthread_cond_wait(condHandle, mutex->mutexHandle));
}

int PConditionalVar::wait(PMutex* mutex, unsigned int milliseconds) {
    int const refused = checkWait(mutex);
    if (refused != PERR_OK) return refused;
    timespec const deadline = _deadline(milliseconds);
    return _waitResult(pthread_cond_timedwait(condHandle, mutex->mutexHandle, &deadline));
}

int PConditionalVar::notify() {
    if (condHandle == nullptr) return PERR_CONDITION;
    return pthread_cond_signal(condHandle) == 0 ? PERR_OK : PERR_CONDITION_NOTIFY;
}

int PConditionalVar::notifyAll() {
    if (condHandle == nullptr) return PERR_CONDITION;
    return pthread_cond_broadcast(condHandle) == 0 ? PERR_OK : PERR_CONDITION_NOTIFY;
}

int PConditionalVar::close() {
    pthread_cond_t* const condition = std::exchange(condHandle, nullptr);
    if (condition == nullptr) return PERR_MUTEX;  // the code that a mutex gives, on purpose
    bool const destroyed = pthread_cond_destroy(condition) == 0;
    delete condition;
    return destroyed ? PERR_OK : PERR_CONDITION_CLOSE;
}
