/// Supervises a program: starts it, shows once a second what it does, ends it with everything it
/// started when its time is over, and reports how it ended.
///
/// An ended child's exit code can be taken once. Many queries take it away by reaping (isRunning,
/// getPID, getName, getPath, the listings), so until the code is known this program asks none of
/// them: a thread of its own sits in the blocking wait, and the time limit is a timed wait for
/// that thread.
#include "supervise.h"

#include <clocale>
#include <cstdio>

namespace {

constexpr long long TICK_MILLISECONDS = 1000;

/// What the waiting thread finds out, and how it tells.
struct Ending {
    PProcess* process = nullptr;
    PMutex mutex;
    PConditionalVar ended;
    bool known = false;
    int result = PERR_OK;
    int exitCode = -1;
};

void* _awaitEnding(void* argument) {
    auto& ending = *static_cast<Ending*>(argument);
    int exitCode = -1;
    int const result = ending.process->waitExitCode(exitCode);  // blocks; the lock is not held
    (void)ending.mutex.lock();
    ending.result = result;
    ending.exitCode = exitCode;
    ending.known = true;
    (void)ending.ended.notifyAll();
    (void)ending.mutex.unlock();
    return nullptr;
}

/// Waits for the ending, at most until the tick count `until`.
bool _endedBy(Ending& ending, long long until) {
    (void)ending.mutex.lock();
    for (;;) {
        long long const left = PTime::getTickCountDiff(PTime::getTickCount(), until);
        if (ending.known || left <= 0) break;
        (void)ending.ended.wait(&ending.mutex, static_cast<unsigned int>(left));
    }
    bool const known = ending.known;
    (void)ending.mutex.unlock();
    return known;
}

/// Lets the program run to its end or its limit. True when it had to be ended.
bool _watch(Request const& request, unsigned int pid, Ending& ending, long long start) {
    long long const limit = start + TICK_MILLISECONDS * request.seconds;
    for (long long tick = start + TICK_MILLISECONDS;; tick += TICK_MILLISECONDS) {
        long long const until = request.limited && limit < tick ? limit : tick;
        if (_endedBy(ending, until)) return false;
        if (until == tick) showFacts(request, pid, tick - start);
        if (request.limited && PTime::getTickCount() >= limit) break;
    }
    if (_endedBy(ending, 0)) return false;
    endTree(pid);
    return true;
}

int _supervise(Request const& request) {
    Ending ending;
    PThread waiter;
    if (ending.mutex.init(true) != PERR_OK || ending.ended.init() != PERR_OK) return 1;

    long long const start = PTime::getTickCount();
    PProcess process(request.program, request.arguments, request.dir, request.environment);
    unsigned int const pid = process.start() == PERR_OK ? onlyChild() : 0;
    if (pid == 0) {
        std::printf("%ls: no process could be created\n", request.program.ptr());
        return 1;
    }

    ending.process = &process;
    if (waiter.pcreate(_awaitEnding, &ending) != PERR_OK) return 1;
    bool const over = _watch(request, pid, ending, start);
    void* nothing = nullptr;
    (void)waiter.pjoin(nothing);

    long long const took = PTime::getTickCountDiff(start, PTime::getTickCount());
    return report(request, pid, {ending.result, ending.exitCode, over, took});
}

}  // namespace

int main(int argc, char** argv) {
    (void)std::setlocale(LC_ALL, "");  // names and arguments are in the user's character set
    (void)std::setvbuf(stdout, nullptr, _IOLBF, 0);

    Request request;
    if (!readRequest(argc, argv, request)) {
        std::fputs("usage: supervise [--seconds N] [--dir DIR] [--env NAME=VALUE]... "
                   "PROGRAM [ARGUMENT...]\n"
                   "An argument can't be empty or hold a space.\n",
                   stderr);
        return 2;
    }
    return _supervise(request);
}
