/// What `supervise` asks of the running program, and how it reports.
#include "supervise.h"

#include <cstdio>
#include <filesystem>

namespace {

constexpr int NO_SUCH_PROGRAM = 2;  // what a child exits with when its program isn't found
constexpr int NO_SUCH_DIR = 139;    // and when it can't enter its working directory

/// On a terminal the facts stand in one line that is rewritten.
bool _onTerminal() {
    static bool const terminal = std::filesystem::is_character_file("/dev/stdout");
    return terminal;
}

bool _found(PLiteral const& dir, PString const& program) {
    PString path(dir);
    path += L"/";
    path += program;
    return PFile::exists(path);
}

/// Whether the program is there, by its own path or along PATH.
bool _programExists(Request const& request) {
    unsigned long slash = 0;
    if (request.program.chr(L'/', slash, false, false) == PERR_OK)
        return PFile::exists(request.program) || _found(request.dir, request.program);

    std::vector<PString> environment;
    (void)PProcess::getCurrentEnvironment(environment);
    for (PString& entry : environment) {
        if (!entry.startsWith(L"PATH=", P_WHOLE_STRING, false)) continue;
        (void)entry.erase(0, 5);
        for (PString dir; PLiteral::getNextToken(entry, dir, L':') == PERR_OK;)
            if (_found(dir, request.program)) return true;
    }
    return false;
}

}  // namespace

unsigned int onlyChild() {
    // getPID, listPIDs and getChildPID would reap a program that ended at once, and its exit code
    // with it. The listing of a directory and getParentPID reap nothing, and an ended child that
    // nobody reaped yet is still listed.
    PDir listing(L"/proc", L"[0-9]*");
    for ((void)listing.preaddir(); listing == PERR_OK; ++listing) {
        unsigned int pid = 0, parent = 0;
        (void)PUtils::strToUint32(listing.getEntry(), pid);
        if (PProcess::getParentPID(pid, parent) == PERR_OK && parent == PProcess::getCurrentPID())
            return pid;
    }
    return 0;
}

void showFacts(Request const& request, unsigned int pid, long long milliseconds) {
    PString name(request.program), user, command;
    unsigned long long memory = 0;
    unsigned int percent = 0;
    PFile::getFileName(name);  // asking the system for the name would reap
    (void)PProcess::getUserName(pid, user);
    (void)PProcess::getCmdLine(pid, command);
    if (PProcess::getMemoryUsage(pid, memory) != PERR_OK) return;  // it ended just now
    (void)PProcess::getCPUUsage(pid, percent);
    std::printf("%s%3lld s  id %u  %ls  user %ls  %llu KiB  cpu %u %%  %ls%s",
                _onTerminal() ? "\r\033[K" : "", milliseconds / 1000, pid, name.ptr(),
                user.len() > 0 ? user.ptr() : L"?", memory / 1024, percent,
                command.len() > 0 ? command.ptr() : L"-", _onTerminal() ? "" : "\n");
    (void)std::fflush(stdout);
}

void endTree(unsigned int pid) {
    std::vector<unsigned int> tree(1, pid);
    for (std::size_t i = 0; i < tree.size(); ++i) {
        std::vector<unsigned int> children;
        if (PProcess::getChildPID(tree[i], children) == PERR_OK)
            tree.insert(tree.end(), children.begin(), children.end());
    }
    std::vector<PString> commands(tree.size());
    for (std::size_t i = 0; i < tree.size(); ++i) (void)PProcess::getCmdLine(tree[i], commands[i]);

    std::printf("%stime is over\n", _onTerminal() ? "\n" : "");
    (void)PProcess::killTree(pid);
    for (std::size_t i = 0; i < tree.size(); ++i) {
        bool running = false;
        (void)PProcess::isRunning(tree[i], running);
        std::printf("  %s %u  %ls\n", running ? "still running" : "ended", tree[i],
                    commands[i].len() > 0 ? commands[i].ptr() : L"-");
    }
}

int report(Request const& request, unsigned int pid, Outcome const& outcome) {
    std::printf("%s%ls (id %u): ", _onTerminal() && outcome.milliseconds >= 1000 ? "\n" : "",
                request.program.ptr(), pid);
    if (outcome.result != PERR_OK)
        std::printf("its ending is not known (%s)", perrorName(outcome.result));
    else if (outcome.exitCode < 0)
        std::printf("ended by signal %d", -outcome.exitCode);
    else if (outcome.exitCode == NO_SUCH_DIR && !PFile::exists(request.dir))
        std::printf("could not be started: no such working directory (exit code %d)", NO_SUCH_DIR);
    else if (outcome.exitCode == NO_SUCH_PROGRAM && !_programExists(request))
        std::printf("could not be started: no such program (exit code %d)", NO_SUCH_PROGRAM);
    else
        std::printf("ended with exit code %d", outcome.exitCode);
    std::printf(" after %lld.%03lld s\n", outcome.milliseconds / 1000, outcome.milliseconds % 1000);
    return outcome.result == PERR_OK && outcome.exitCode == 0 && !outcome.timeOver ? 0 : 1;
}
