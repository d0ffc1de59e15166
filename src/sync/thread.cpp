#include <csignal>
#include <new>
#include <pthread.h>
#include <unistd.h>
#include <utility>

#include <portinglayer/threads.h>

PThread::PThread() : start{nullptr, nullptr} {
}

PThread::~PThread() {
    (void)pdetach();  // nobody is left to be told
}

int PThread::pcreate(void* (*func)(void*), void* arg) {
    if (threadHandle != nullptr) return PERR_THREAD_EXISTS;
    if (func == nullptr) return PERR_THREAD;

    start = {func, arg};
    threadHandle.reset(new (std::nothrow) pthread_t{});
    if (threadHandle != nullptr &&
        pthread_create(threadHandle.get(), nullptr, _proxyThreadProc, &start) == 0)
        return PERR_OK;
    threadHandle.reset();
    return PERR_THREAD;
}

int PThread::pjoin(void*& result) {
    auto const thread = std::exchange(threadHandle, nullptr);
    if (thread == nullptr) return PERR_THREAD;
    return pthread_join(*thread, &result) == 0 ? PERR_OK : PERR_THREAD_JOIN;
}

int PThread::pdetach() {
    auto const thread = std::exchange(threadHandle, nullptr);
    if (thread == nullptr) return PERR_THREAD;
    return pthread_detach(*thread) == 0 ? PERR_OK : PERR_THREAD_DETACH;
}

int PThread::pterminate(void* /*arg*/) {
    auto const thread = std::exchange(threadHandle, nullptr);
    if (thread == nullptr) return PERR_THREAD;
    return pthread_cancel(*thread) == 0 ? PERR_OK : PERR_THREAD_CANCEL;
}

bool PThread::isAlive() const {
    return threadHandle != nullptr && pthread_kill(*threadHandle, 0) == 0;
}

unsigned int PThread::getThreadId() {
    return threadHandle != nullptr ? static_cast<unsigned int>(*threadHandle) : 0;
}

pthread_t PThread::getCurrentThreadId() {
    return pthread_self();
}

void PThread::setName(char const* /*name*/) {
}

int PThread::psleep(unsigned int milliseconds) {
    constexpr unsigned int MICROSECONDS = 1000;  // in a millisecond
    return usleep(milliseconds * MICROSECONDS);
}

void* PThread::_proxyThreadProc(void* pair) {
    Start const* const begin = static_cast<Start const*>(pair);
    return begin->threadFunc(begin->threadArg);
}
