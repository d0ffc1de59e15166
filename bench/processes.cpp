// Processes: starting and waiting, listing and finding.

#include "operation.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

#include <dirent.h>
#include <fcntl.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <portinglayer/processes.h>

namespace {

std::string const crowdName = "crowd" + std::to_string(getpid());
constexpr std::size_t CROWD_SIZE = 200;

/// Sleeping processes to be found; they end with this one.
class Crowd {
public:
    Crowd() {
        for (pid_t& member : members) {
            member = fork();
            if (member == 0) sleepUnderName();
        }
        for (pid_t const member : members) waitpid(member, nullptr, WUNTRACED);
        for (pid_t const member : members) kill(member, SIGCONT);
    }
    Crowd(Crowd const&) = delete;
    Crowd& operator=(Crowd const&) = delete;
    ~Crowd() {
        for (pid_t const member : members)
            if (member > 0 && kill(member, SIGKILL) == 0) waitpid(member, nullptr, 0);
    }

private:
    [[noreturn]] static void sleepUnderName() {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        prctl(PR_SET_NAME, crowdName.c_str());
        raise(SIGSTOP);  // seen by the parent, which goes on once all bear their name
        for (;;) pause();
    }
    pid_t members[CROWD_SIZE];
};

/// Memory in use, which `fork` has to account for.
class Ballast {
public:
    explicit Ballast(std::size_t mebibytes)
        : bytes(mebibytes << 20U),
          memory(mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0)) {
        madvise(memory, bytes, MADV_NOHUGEPAGE);
        memset(memory, 1, bytes);
    }
    Ballast(Ballast const&) = delete;
    Ballast& operator=(Ballast const&) = delete;
    ~Ballast() { munmap(memory, bytes); }

    std::size_t bytes;
    void* memory;
};

/// Brings this process to a size, with or without the crowd.
void _become(std::size_t mebibytes, bool crowded) {
    static std::unique_ptr<Ballast> ballast;
    static std::unique_ptr<Crowd> crowd;
    if (crowded != (crowd != nullptr)) {
        ballast.reset();
        crowd = crowded ? std::make_unique<Crowd>() : nullptr;
    }
    if (!ballast || ballast->bytes != mebibytes << 20U) {
        ballast.reset();
        ballast = std::make_unique<Ballast>(mebibytes);
    }
}

int _waitFor(pid_t pid) {
    int status = -1;
    waitpid(pid, &status, 0);
    return WEXITSTATUS(status);
}

int _forkAndWait() {
    pid_t const pid = fork();
    if (pid != 0) return _waitFor(pid);
    char program[] = "/bin/false";
    char* const arguments[] = {program, nullptr};
    execvp(program, arguments);
    _exit(127);
}

void _addStarting(std::size_t mebibytes) {
    Operation op("start and wait, parent of " + std::to_string(mebibytes) + " MiB", 1.10, 1,
                 "fork, execvp, waitpid");
    op.clock(Clock::WALL).setup([=] { _become(mebibytes, false); });
    op.way(BARE, _forkAndWait);
    op.way("posix_spawn", [] {
        char program[] = "/bin/false";
        char* const arguments[] = {program, nullptr};
        pid_t pid = 0;
        posix_spawnp(&pid, program, nullptr, nullptr, arguments, environ);
        return _waitFor(pid);
    });
    WITH_POCO(op.way("POCO", [] { return Poco::Process::launch("/bin/false", {}).wait(); }));
    WITH_GLIB(op.way("GLib", [] {
        char program[] = "/bin/false";
        char* arguments[] = {program, nullptr};
        int pid = 0;
        g_spawn_async(nullptr, arguments, nullptr, G_SPAWN_DO_NOT_REAP_CHILD, nullptr, nullptr,
                      &pid, nullptr);
        return _waitFor(pid);
    }));
    op.way(OURS, [] {
        PProcess process(L"/bin/false", L"");
        int code = 0;
        (void)process.start();
        (void)process.waitExitCode(code);
        return code;
    });
}

/// Calls `use` with the name of every process's entry.
template <typename Use>
void _forEachProcess(Use use) {
    DIR* const directory = opendir("/proc");
    while (dirent const* const entry = readdir(directory))
        if (entry->d_type == DT_DIR && entry->d_name[0] >= '0' && entry->d_name[0] <= '9')
            use(entry->d_name);
    closedir(directory);
}

struct Status {
    std::string name;
    unsigned int pid = 0;
    unsigned int parent = 0;
};

Status _readStatus(char const* entry) {
    std::string const path = std::string("/proc/") + entry + "/status";
    Status status;
    std::unique_ptr<FILE, decltype(&fclose)> const file(fopen(path.c_str(), "re"), fclose);
    char line[256];
    int missing = 3;
    while (file && missing > 0 && fgets(line, sizeof line, file.get()) != nullptr) {
        if (strncmp(line, "Name:", 5) == 0)
            status.name.assign(line + 6, strlen(line) - 7);
        else if (sscanf(line, "Pid: %u", &status.pid) != 1 &&
                 sscanf(line, "PPid: %u", &status.parent) != 1)
            continue;
        --missing;
    }
    return status;
}

void _addListing() {
    // Processes come and go on any machine: that all of the crowd is listed is what is checked.
    Operation op("list processes", 1.15, true, "opendir, readdir");
    op.setup([] { _become(10, true); });
    op.way(BARE, [] {
        std::vector<unsigned int> pids;
        waitpid(0, nullptr, WNOHANG);
        _forEachProcess([&](char const* entry) {
            pids.push_back(static_cast<unsigned int>(strtol(entry, nullptr, 10)));
        });
        return pids.size() > CROWD_SIZE;
    });
    WITH_PROC2(op.way("libproc2", [] {
        std::vector<unsigned int> pids;
        forEachProc2({PIDS_ID_PID}, [&](pids_result const* result) {
            pids.push_back(static_cast<unsigned int>(result->result.s_int));
        });
        return pids.size() > CROWD_SIZE;
    }));
    op.way(OURS,
           [] { return out<std::vector<unsigned int>>(PProcess::listPIDs).size() > CROWD_SIZE; });
}

void _addFinding() {
    Operation op("find a name among 200 more processes", 1.15, CROWD_SIZE,
                 "opendir, readdir, fopen, fgets");
    op.clock(Clock::WALL).setup([] { _become(10, true); });
    op.way(BARE, [] {
        std::vector<Status> found;
        waitpid(0, nullptr, WNOHANG);
        _forEachProcess([&](char const* entry) {
            Status status = _readStatus(entry);
            if (strcasecmp(status.name.c_str(), crowdName.c_str()) == 0)
                found.push_back(std::move(status));
        });
        return found.size();
    });
    WITH_PROC2(op.way("libproc2", [] {
        std::size_t found = 0;
        forEachProc2({PIDS_CMD, PIDS_ID_PID, PIDS_ID_PPID}, [&](pids_result const* result) {
            if (strcasecmp(result->result.str, crowdName.c_str()) == 0) ++found;
        });
        return found;
    }));
    op.way("pgrep", [] {
        std::unique_ptr<FILE, decltype(&pclose)> const output(
            popen(("pgrep -ix " + crowdName).c_str(), "re"), pclose);
        std::size_t found = 0;
        for (int c = 0; (c = fgetc(output.get())) != EOF;) found += c == '\n';
        return found;
    });
    static PString const name(crowdName.c_str(), P_WHOLE_STRING);
    op.way(OURS, [] {
        std::vector<unsigned int> pids;
        std::vector<unsigned int> parents;
        (void)PProcess::find(name, pids, parents);
        return pids.size();
    });
}

}  // namespace

void addProcesses() {
    _addStarting(10);
    _addStarting(512);
    _addListing();
    _addFinding();
}
