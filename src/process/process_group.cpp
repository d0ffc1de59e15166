#include "process/process_group.h"

#include <cstring>

#include <unistd.h>

#include "process/proc_files.h"
#include "process/process_entries.h"
#include "sync/uncancelled.h"

namespace {

/// Whether a process belongs to the group and has not ended.
bool _runsWithin(pid_t group, unsigned int processId) {
    ProcFile stat(ProcPath(processId, "stat"));
    char const* const line = stat.isOpen() ? stat.nextLine() : nullptr;
    char const* const name = line == nullptr ? nullptr : std::strrchr(line, ')');  // of any letters
    char state = 0;
    pid_t itsGroup = 0;
    if (name == nullptr || std::sscanf(name, ") %c %*d %d", &state, &itsGroup) != 2) return false;
    return itsGroup == group && state != 'Z' && state != 'X';
}

}  // namespace

pid_t _runningMember(pid_t group) {
    Uncancelled const untilClosed;
    ProcessEntries entries;
    if (!entries.isOpen()) return getpid();
    unsigned int processId = 0;
    while (entries.next(processId))
        if (_runsWithin(group, processId)) return static_cast<pid_t>(processId);
    return 0;
}
