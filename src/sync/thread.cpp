#include <csignal>
#include <memory>
#include <new>
#include <pthread.h>
#include <unistd.h>
#include <utility>

#include <portinglayer/threads.h>

namespace {

constexpr unsigned int MICROSECONDS_PER_MILLISECOND = 1000;

}  // namespace

PThread::PThread() : start{nullptr, nullptr}, threadHandle(nullptr) {
}

PThread::~PThread() {
    (void)pdetach();  // nobody is left to be told
}

int PThread::pcreate(void* (*func)(void*), void* arg) {
    if (threadHandle != nullptr) return PERR_THREAD_EXISTS;
    if (func == nullptr) return PERR_THREAD;

    start = {func, arg};
    threadHandle = new (std::nothrow) pthread_t{};
    if (threadHandle == nullptr) return PERR_THREAD;
    if (pthread_create(threadHandle, nullptr, _proxyThreadProc, &start) == 0) return PERR_OK;

    delete threadHandle;
    threadHandle = nullptr;
    return PERR_THREAD;
}

// The handle is held by a holder in the next three: joining unwinds when the caller is cancelled.

int PThread::pjoin(void*& result) {
    std::unique_ptr<pthread_t> const thread(std::exchange(threadHandle, nullptr));
    if (thread == nullptr) return PERR_THREAD;
    return pthread_join(*thread, &result) == 0 ? PERR_OK : PERR_THREAD_JOIN;
}

int PThread::pdetach() {
    std::unique_ptr<pthread_t> const thread(std::exchange(threadHandle, nullptr));
    if (thread == nullptr) return PERR_THREAD;
    return pthread_detach(*thread) == 0 ? PERR_OK : PERR_THREAD_DETACH;
}

int PThread::pterminate(void* /*arg*/) {
    std::unique_ptr<pthread_t> const thread(std::exchange(threadHandle, nullptr));
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
    return usleep(milliseconds * MICROSECONDS_PER_MILLISECOND);
}

void* PThread::_proxyThreadProc(void* pair) {
    Start const* const begin = static_cast<Start const*>(pair);
    return begin->threadFunc(begin->threadArg);
}
