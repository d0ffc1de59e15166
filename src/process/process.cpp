#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <new>
#include <utility>

#include <sys/wait.h>
#include <unistd.h>

#include <portinglayer/processes.h>

#include "text/narrow_text.h"

PORTINGLAYER_HELD_PPTR(, PProcess);

namespace {

/// What a child gives to `exit` when it cannot enter its folder: its parent sees 139.
constexpr int EXIT_BAD_WORKING_DIR = -629;

bool _copyTrimmed(PString& to, PLiteral const& from) {
    to = from;
    bool const whole = to.len() == from.len();
    (void)to.trim();  // shortens in place, cannot fail
    return whole;
}

/// A text whose copy failed is empty and does not throw, so the copies are looked at.
bool _copyEntries(std::vector<PString>& to, std::vector<PString> const& from) {
    try {
        to = from;
    } catch (std::bad_alloc const&) {
        return false;
    }
    for (std::size_t i = 0; i < to.size(); ++i)
        if (to[i].len() != from[i].len()) return false;
    return true;
}

/// Takes the text apart at its single spaces. An empty token becomes a null pointer, which ends the
/// list that the program sees.
std::vector<PPtr<char>> _takeTokens(PString& text) {
    std::vector<PPtr<char>> tokens;
    PString token;
    while (PLiteral::getNextToken(text, token, L' ') == PERR_OK)
        tokens.emplace_back(PLiteral::pwchar2pchar(token.ptr(), P_WHOLE_STRING));
    return tokens;
}

char** _newArgumentVector(PPtr<char> const& program, std::vector<PPtr<char>> const& tokens) {
    char** const entries = new (std::nothrow) char*[tokens.size() + 2];
    if (entries == nullptr) return nullptr;
    entries[0] = program.get();
    for (std::size_t i = 0; i < tokens.size(); ++i) entries[i + 1] = tokens[i].get();
    entries[tokens.size() + 1] = nullptr;
    return entries;
}

void _enterFolder(PString const& folder) {
    if (folder.len() == 0) return;
    NarrowText const path(folder);
    if (path.get() == nullptr || chdir(path.get()) != 0) std::exit(EXIT_BAD_WORKING_DIR);
}

void _addToEnvironment(PString const& entry) {
    PPtr<char> const text(entry.ascii());
    char* const separator = text.get() == nullptr ? nullptr : std::strchr(text.get(), '=');
    if (separator == nullptr) return;
    *separator = '\0';
    (void)setenv(text.get(), separator + 1, 1);  // an entry that is refused is skipped
}

/// The child's way from the fork to its program. Returns only when memory runs out.
int _becomeProgram(PString const& executable, PString& arguments, PString const& workingDir,
                   std::vector<PString> const& environment) try {
    PPtr<char> const program(PLiteral::pwchar2pchar(executable.ptr(), P_WHOLE_STRING));
    std::vector<PPtr<char>> const tokens = _takeTokens(arguments);
    PPtr<char*> const argv(_newArgumentVector(program, tokens));
    if (argv.get() == nullptr) return PERR_NO_MEMORY;

    _enterFolder(workingDir);
    for (PString const& entry : environment) _addToEnvironment(entry);

    if (program.get() == nullptr) std::exit(EFAULT);  // as execvp would refuse it
    (void)execvp(program.get(), argv.get());
    std::exit(errno);
} catch (std::bad_alloc const&) {
    return PERR_NO_MEMORY;
}

int _startKept(PProcess* process, unsigned int& pid) {
    if (process == nullptr) return PERR_NO_MEMORY;
    PPtr<PProcess> const holder(process, PPtr<PProcess>::SINGLE);
    int const result = process->start();
    return result == PERR_OK ? process->getPID(pid) : result;
}

}  // namespace

PProcess::PProcess(PLiteral const& program, PLiteral const& allArguments)
    : PProcess(program, allArguments, PLiteral(), std::vector<PString>()) {
}

PProcess::PProcess(PLiteral const& program, PLiteral const& allArguments, PLiteral const& folder)
    : PProcess(program, allArguments, folder, std::vector<PString>()) {
}

PProcess::PProcess(PLiteral const& program, PLiteral const& allArguments,
                   std::vector<PString> const& entries)
    : PProcess(program, allArguments, PLiteral(), entries) {
}

PProcess::PProcess(PLiteral const& program, PLiteral const& allArguments, PLiteral const& folder,
                   std::vector<PString> const& entries) {
    (void)initProcessInfo();
    bool const whole = _copyTrimmed(executable, program) && _copyTrimmed(arguments, allArguments) &&
                       _copyTrimmed(workingDir, folder) && _copyEntries(environment, entries);
    (void)PUtils::fixFileSeparator(executable);
    (void)PUtils::fixFileSeparator(workingDir);

    if (!whole) executable.clear();  // start() then refuses, instead of running half of it
}

PProcess::~PProcess() {
    environment.clear();
    (void)clearProcessInfo();
}

int PProcess::start() {
    bool running = false;
    int const result = isRunning(running);
    if (running) return PERR_PROCESS_RUNNING;

    (void)clearProcessInfo();
    (void)initProcessInfo();
    if (executable.ptr() == nullptr || executable.len() == 0) return PERR_NOT_FOUND;

    pid = static_cast<unsigned int>(fork());
    if (pid != 0) return result;  // also when the fork failed: callers find out through getPID

    pid = getCurrentPID();
    return _becomeProgram(executable, arguments, workingDir, environment);
}

int PProcess::start(PLiteral const& executable, PLiteral const& arguments,
                    PLiteral const& workingDir, std::vector<PString> const& environment,
                    unsigned int& pid) {
    return _startKept(new (std::nothrow) PProcess(executable, arguments, workingDir, environment),
                      pid);
}

int PProcess::start(PLiteral const& executable, PLiteral const& arguments,
                    std::vector<PString> const& environment, unsigned int& pid) {
    return _startKept(new (std::nothrow) PProcess(executable, arguments, environment), pid);
}

int PProcess::start(PLiteral const& executable, PLiteral const& arguments,
                    PLiteral const& workingDir, unsigned int& pid) {
    return _startKept(new (std::nothrow) PProcess(executable, arguments, workingDir), pid);
}

int PProcess::start(PLiteral const& executable, PLiteral const& arguments, unsigned int& pid) {
    return _startKept(new (std::nothrow) PProcess(executable, arguments), pid);
}

// By value, as the interface has it.
// NOLINTNEXTLINE(performance-unnecessary-value-param)
int PProcess::startProcAsDifferentUser(PString /*user*/, PString /*password*/) {
    bool running = false;
    (void)isRunning(running);
    if (running) return PERR_PROCESS_RUNNING;

    (void)clearProcessInfo();
    (void)initProcessInfo();
    return PERR_NOT_SUPPORTED;
}

int PProcess::initProcessInfo() {
    pid = 0;
    return PERR_OK;
}

int PProcess::clearProcessInfo() {
    unsigned int const remembered = pid;
    pid = 0;

    int status = 0;
    if (remembered != 0)
        (void)waitpid(static_cast<pid_t>(remembered), &status, WNOHANG);  // it may still run
    return PERR_OK;
}

unsigned int PProcess::getCurrentPID() {
    return static_cast<unsigned int>(getpid());
}
