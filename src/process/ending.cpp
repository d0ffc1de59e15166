#include <csignal>
#include <new>

#include <portinglayer/processes.h>

#include "process/proc_files.h"

namespace {

constexpr unsigned int KILL_PAUSE_MS = 1000;
constexpr unsigned int TREE_WAIT_MS = 2000;

/// The process and all its descendants, breadth first.
int _listTree(unsigned int root, std::vector<unsigned int>& tree) {
    tree.push_back(root);
    std::vector<unsigned int> children;
    for (std::size_t i = 0; i < tree.size(); ++i) {
        int const result = PProcess::getChildPID(tree[i], children);
        if (result == PERR_NO_MEMORY) return result;
        if (result == PERR_OK) tree.insert(tree.end(), children.begin(), children.end());
    }
    return PERR_OK;
}

}  // namespace

int PProcess::killSignal(unsigned int processId, int signal) {
    if (::kill(static_cast<pid_t>(processId), signal) == -1) return PERR_KILL;
    (void)PThread::psleep(KILL_PAUSE_MS);
    (void)_reapIfEnded(processId);  // no child, or still running
    return PERR_OK;
}

int PProcess::kill(unsigned int processId) {
    return killSignal(processId, SIGTERM);
}

int PProcess::kill() {
    int result = PERR_OK;
    bool running = false;
    (void)isRunning(running);  // first, so that a process id that never ran is never signalled
    if (running) {
        if (::kill(static_cast<pid_t>(pid), SIGKILL) == 0)
            (void)PThread::psleep(KILL_PAUSE_MS);
        else
            result = PERR_KILL;
    }

    (void)clearProcessInfo();
    return result;
}

int PProcess::killTree(unsigned int processId) try {
    std::vector<unsigned int> tree;
    int result = _listTree(processId, tree);
    if (result != PERR_OK) return result;

    auto const signalOne = [&result](unsigned int one, int signal) {
        int const sent = killSignal(one, signal);
        if (sent != PERR_OK) result = sent;
    };
    for (unsigned int const one : tree) {
        signalOne(one, SIGTERM);
        if (waitFinish(one, TREE_WAIT_MS)) signalOne(one, SIGKILL);
    }
    return result;
} catch (std::bad_alloc const&) {
    return PERR_NO_MEMORY;
}
