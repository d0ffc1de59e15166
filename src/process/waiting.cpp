#include <algorithm>
#include <cerrno>
#include <cstring>

#include <sys/wait.h>

#include <portinglayer/processes.h>

#include "process/proc_files.h"

namespace {

constexpr int STOPPED = 0x7F;  // in the low bits of a status

/// How a wait with a time limit is divided. The grain of a second is what callers are used to.
struct Polling {
    static constexpr unsigned int MIN_STEP_MS = 1000;
    static constexpr unsigned int POLLS_WANTED = 10;

    explicit Polling(unsigned int timeoutMs)
        : step(std::max(timeoutMs / POLLS_WANTED, MIN_STEP_MS)), polls(timeoutMs / step) {}

    void sleepOneStep() const {
        (void)PThread::psleep(step);  // a sleep cut short by a signal only polls earlier
    }

    unsigned int step;  ///< milliseconds
    unsigned int polls;
};

/// Ended normally: its exit code; by a signal: minus the signal.
int _decodeStatus(int status, int& exitCode) {
    if ((status & STOPPED) == STOPPED) return PERR_STOPPED;
    exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
    return PERR_OK;
}

}  // namespace

int PProcess::isRunning(unsigned int processId, bool& running) {
    running = false;
    _reapEndedChildren();
    ProcFile status(ProcPath(processId, "status"));
    if (!status.isOpen()) return PERR_OK;

    char const* const state = status.findLine("State:");
    running = state == nullptr ||
              (std::strstr(state, "zombie") == nullptr && std::strstr(state, " Z") == nullptr);
    return PERR_OK;
}

int PProcess::isRunning(bool& running) const {
    running = false;
    return isRunning(pid, running);
}

int PProcess::getPID(unsigned int& processId) const {
    bool running = false;
    (void)isRunning(running);
    if (!running) return PERR_NO_PROCESS;
    processId = pid;
    return PERR_OK;
}

int PProcess::waitExitCode(int& exitCode) {
    exitCode = -1;
    if (pid == 0) return PERR_NO_PROCESS;

    int status = -1;
    if (waitpid(static_cast<pid_t>(pid), &status, 0) == -1)
        return errno == ECHILD ? PERR_NO_PROCESS : PERR_SYSTEM;
    return _decodeStatus(status, exitCode);
}

bool PProcess::waitFinish(unsigned int processId, unsigned int timeoutMs) {
    bool running = false;
    (void)isRunning(processId, running);
    Polling const polling(timeoutMs);
    for (unsigned int i = 0; running && i < polling.polls; ++i) {
        polling.sleepOneStep();
        (void)isRunning(processId, running);
    }
    return running;
}

bool PProcess::waitFinish(unsigned int timeoutMs) {
    if (pid == 0) return false;
    Polling const polling(timeoutMs);
    for (unsigned int i = 0; i < polling.polls; ++i) {
        if (_reapIfEnded(pid)) return false;
        polling.sleepOneStep();
    }
    if (_reapIfEnded(pid)) return false;

    bool running = false;
    (void)isRunning(running);
    return running;
}
