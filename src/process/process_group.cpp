#include "process/process_group.h"

#include <cstdlib>
#include <cstring>
#include <memory>

#include <dirent.h>
#include <unistd.h>

#include "process/proc_files.h"
#include "sync/uncancelled.h"

namespace {

struct CloseListing {
    void operator()(DIR* listing) const { (void)closedir(listing); }
};

/// Whether a process belongs to the group and has not ended.
bool _runsWithin(pid_t group, char const* entry) {
    ProcLines stat(ProcPath(entry, "stat"));
    char const* const line = stat.isOpen() ? stat.next() : nullptr;
    char const* const name = line == nullptr ? nullptr : std::strrchr(line, ')');  // of any letters
    char state = 0;
    pid_t itsGroup = 0;
    if (name == nullptr || std::sscanf(name, ") %c %*d %d", &state, &itsGroup) != 2) return false;
    return itsGroup == group && state != 'Z' && state != 'X';
}

}  // namespace

pid_t _runningMember(pid_t group) {
    Uncancelled const untilClosed;
    std::unique_ptr<DIR, CloseListing> const listing(opendir("/proc"));
    if (listing == nullptr) return getpid();
    while (dirent const* const entry = readdir(listing.get())) {
        auto const pid = static_cast<pid_t>(std::strtol(entry->d_name, nullptr, 10));
        if (pid > 0 && _runsWithin(group, entry->d_name)) return pid;
    }
    return 0;
}
