#include "process/process_group.h"

#include <cstring>

#include <unistd.h>

#include "process/proc_files.h"
#include "process/process_entries.h"
#include "sync/uncancelled.h"

namespace {

// Behind the name: the parent and what stands between the group and the threads do not matter.
constexpr char STATE_GROUP_THREADS[] =
    ") %c %*s %d %*s %*s %*s %*s %*s %*s %*s %*s %*s %*s %*s %*s %*s %*s %d";

/// Whether a process belongs to the group and has not ended.
bool _runsWithin(pid_t group, unsigned int processId) {
    ProcFile stat(ProcPath(processId, "stat"));
    char const* const line = stat.isOpen() ? stat.nextLine() : nullptr;
    char const* const name = line == nullptr ? nullptr : std::strrchr(line, ')');  // of any letters
    if (name == nullptr) return false;

    char state = 0;
    pid_t itsGroup = 0;
    int threads = 1;
    if (std::sscanf(name, STATE_GROUP_THREADS, &state, &itsGroup, &threads) < 2) return false;
    // The state is that of the first thread, which others may outlive.
    bool const ended = (state == 'Z' || state == 'X') && threads <= 1;
    return itsGroup == group && !ended;
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
