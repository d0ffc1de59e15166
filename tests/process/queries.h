/// What can be asked about a process by its id.
#ifndef TESTS_PROCESS_QUERIES_H
#define TESTS_PROCESS_QUERIES_H

#include <process/children.h>

struct Query {
    char const* what;
    std::function<int(unsigned int pid)> ask;
    bool collects;    ///< every ended child of the caller
    int ofNoProcess;  ///< the code for an id that no process bears
};

/// Drops what the operation gives but for its code.
template <class Out>
std::function<int(unsigned int)> codeOf(int (*operation)(unsigned int, Out&)) {
    return [operation](unsigned int pid) {
        Out out{};
        return operation(pid, out);
    };
}

inline int findNobody(unsigned int) {
    Ids pids, parents;
    return PProcess::find(owned("no such name"), pids, parents);
}

inline int listAll(unsigned int) {
    Ids pids;
    return PProcess::listPIDs(pids);
}

inline std::vector<Query> queries() {
    constexpr bool COLLECTS = true, LEAVES = false;
    using P = PProcess;
    return {
        {"isRunning", codeOf<bool>(P::isRunning), COLLECTS, PERR_OK},
        {"getName", codeOf<PString>(P::getName), COLLECTS, PERR_NOT_FOUND},
        {"getPath", codeOf<PString>(P::getPath), COLLECTS, PERR_NOT_FOUND},
        {"getChildPID", codeOf<Ids>(P::getChildPID), COLLECTS, PERR_NOT_FOUND},
        {"find", findNobody, COLLECTS, PERR_NOT_FOUND},
        {"listPIDs", listAll, COLLECTS, PERR_OK},
        {"getCmdLine", codeOf<PString>(P::getCmdLine), LEAVES, PERR_NOT_FOUND},
        {"getWorkingDir", codeOf<PString>(P::getWorkingDir), LEAVES, PERR_NOT_FOUND},
        {"getEnvironment", codeOf<Texts>(P::getEnvironment), LEAVES, PERR_NOT_FOUND},
        {"getPriority", codeOf<int>(P::getPriority), LEAVES, PERR_NOT_FOUND},
        {"getParentPID", codeOf<unsigned int>(P::getParentPID), LEAVES, PERR_NOT_FOUND},
        {"getMemoryUsage", codeOf<unsigned long long>(P::getMemoryUsage), LEAVES, PERR_NO_PROCESS},
        {"getCPUUsage", codeOf<unsigned int>(P::getCPUUsage), LEAVES, PERR_NO_SUCH_FILE},
    };
}

#endif
