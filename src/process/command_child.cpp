#include "process/command_child.h"

#include <cerrno>
#include <csignal>
#include <utility>

#include <poll.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include "fs/descriptor.h"
#include "fs/uninterrupted.h"
#include "process/process_group.h"
#include "sync/uncancelled.h"

namespace {

constexpr unsigned int LOOK_MS = 50;     // at processes that may leave the group instead of ending
constexpr unsigned int DYING_MS = 1000;  // for killed processes, unless the system keeps one
constexpr unsigned int TRACED_MS = 1;    // between looks at an ended child that a tracer keeps

// The C library declares both for C alone.
Descriptor _openProcess(pid_t pid) {
    return Descriptor(static_cast<int>(syscall(SYS_pidfd_open, pid, 0)));
}
int _signalProcess(Descriptor const& process, int number) {
    return static_cast<int>(syscall(SYS_pidfd_send_signal, process.get(), number, nullptr, 0));
}

PEnding _endingOf(siginfo_t const& info) {
    if (info.si_code == CLD_EXITED) return {info.si_status, 0};
    return {-1, info.si_status};
}

/// Looks at an ended child and leaves it uncollected. 0 with an `info.si_pid` of 0 while it runs.
int _look(idtype_t type, int id, siginfo_t& info) {
    info.si_pid = 0;
    return waitid(type, static_cast<id_t>(id), &info, WEXITED | WNOHANG | WNOWAIT);
}

/// Waits for the end of one process, between looks at whether that can be collected.
class EndWatch {
public:
    /// Without a descriptor only the time counts.
    explicit EndWatch(int descriptor) : process(descriptor) {}

    /// Sleeps until the process ends or the time is over. Where it has ended already its tracer
    /// keeps it: then for a moment. PERR_OK also where a signal came first.
    int sleep(Deadline const& until) {
        timespec place{};
        pollfd look{process, POLLIN, 0};
        Deadline const over = ended ? until.within(TRACED_MS) : until;
        int const ready = ppoll(&look, ended ? 0 : 1, over.left(place), nullptr);
        ended = ended || ready > 0;
        return ready >= 0 || errno == EINTR ? PERR_OK : PERR_SYSTEM;
    }

private:
    int process;
    bool ended = false;
};

/// For a child that could not be held: nobody knows of it yet.
void _abandon(pid_t child, bool leadsGroup) {
    siginfo_t info{};
    bool const ours = _look(P_PID, child, info) == 0 || errno != ECHILD;
    if (ours) (void)(leadsGroup ? killpg(child, SIGKILL) : ::kill(child, SIGKILL));
    (void)_uninterrupted([&] { return waitpid(child, nullptr, 0); });
}

int _sendCode(int result) {
    if (result == 0) return PERR_OK;
    return errno == ESRCH ? PERR_NO_PROCESS : PERR_KILL;
}

}  // namespace

int _canHoldChildren() {
    Descriptor const self = _openProcess(getpid());
    siginfo_t info{};
    // Nobody is a child of itself, and is told so where one can be awaited by its descriptor.
    if (self.isOpen() && (_look(P_PIDFD, self.get(), info) == 0 || errno == ECHILD)) return PERR_OK;
    switch (errno) {
    case EINVAL:  // of waiting: it came later than the descriptors
    case ENOSYS:
    case EPERM: return PERR_NOT_SUPPORTED;  // a filter of calls refuses what it does not know
    case ENOMEM: return PERR_NO_MEMORY;
    default: return PERR_SYSTEM;
    }
}

int CommandChild::hold(pid_t child, bool leadsGroup) {
    Descriptor opened = _openProcess(child);
    int const error = errno;
    (void)_leaveStandardStreams(opened);  // where none is left it may stay
    // Where others collect any child, that of this command may be gone, its id even used anew.
    siginfo_t info{};
    bool const gone = opened.isOpen() ? _look(P_PIDFD, opened.get(), info) != 0 && errno == ECHILD
                                      : error == ESRCH;
    if (gone) {
        opened.close();
    } else if (!opened.isOpen()) {
        _abandon(child, leadsGroup);
        return error == ENOMEM ? PERR_NO_MEMORY : PERR_SYSTEM;
    }
    process = std::move(opened);
    pid = child;
    grouped = leadsGroup;
    uncollected = !gone;
    collected = false;
    return PERR_OK;
}

bool CommandChild::isHeld() {
    Uncancelled const uncancelled;
    siginfo_t info{};
    if (uncollected && _look(P_PIDFD, process.get(), info) != 0 && errno == ECHILD)
        uncollected = false;
    return uncollected;
}

int CommandChild::await(PEnding& how, Deadline const& until) {
    for (EndWatch watch(process.get());;) {
        int const code = collect(how);
        if (code != PERR_PROCESS_RUNNING || until.isOver()) return code;
        int const slept = watch.sleep(until);
        if (slept != PERR_OK) return slept;
    }
}

int CommandChild::collect(PEnding& how) {
    if (!uncollected && !collected) return PERR_NO_PROCESS;
    if (uncollected) {
        Uncancelled const uncancelled;  // what the system has given out is written down here
        siginfo_t info{};
        if (waitid(P_PIDFD, static_cast<id_t>(process.get()), &info, WEXITED | WNOHANG) != 0) {
            uncollected = errno != ECHILD;
            return uncollected ? PERR_SYSTEM : PERR_NO_PROCESS;
        }
        if (info.si_pid == 0) return PERR_PROCESS_RUNNING;
        uncollected = false;
        collected = true;
        ending = _endingOf(info);
    }
    how = ending;
    return PERR_OK;
}

int CommandChild::signal(int number) const {
    if (number < 1 || number > SIGRTMAX) return PERR_INVALID_ARGUMENT;
    if (!process.isOpen()) return PERR_NO_PROCESS;
    return _sendCode(_signalProcess(process, number));
}

int CommandChild::end(PEnding& how, Deadline const& grace) {
    if (!isHeld()) return collect(how);
    int code = signalGroup(SIGTERM);
    if (code == PERR_OK) code = awaitGroup(grace);
    bool const someStay = code == PERR_PROCESS_RUNNING;
    if (code == PERR_OK || someStay) code = kill();  // also what began while it was looked for
    if (code == PERR_OK && someStay) (void)awaitGroup(Deadline(DYING_MS));

    // What was refused is of no account where the child has ended.
    int const collectedCode = await(how, Deadline(code == PERR_OK ? PCommand::FOREVER : 0));
    return collectedCode == PERR_PROCESS_RUNNING ? code : collectedCode;
}

int CommandChild::kill() {
    if (!isHeld()) return PERR_OK;
    if (grouped) (void)killpg(pid, SIGKILL);  // none may be left in it
    return signal(SIGKILL);                   // the child may have gone into another
}

int CommandChild::signalGroup(int number) {
    if (!grouped) return signal(number);
    if (killpg(pid, number) == 0) return PERR_OK;
    // None is left in the group; the child may have gone into another.
    return errno == ESRCH ? signal(number) : PERR_KILL;
}

int CommandChild::awaitGroup(Deadline const& until) {
    for (EndWatch watch(process.get());;) {
        siginfo_t info{};
        if (_look(P_PIDFD, process.get(), info) != 0)
            return errno == ECHILD ? PERR_OK : PERR_SYSTEM;
        bool const ended = info.si_pid != 0;
        pid_t const member = ended && grouped ? _runningMember(pid) : 0;
        if (ended && member == 0) return PERR_OK;
        if (until.isOver()) return PERR_PROCESS_RUNNING;

        Descriptor const other = ended ? _openProcess(member) : Descriptor();
        int const slept =
            ended ? EndWatch(other.get()).sleep(until.within(LOOK_MS)) : watch.sleep(until);
        if (slept != PERR_OK) return slept;
    }
}
