#include <cerrno>
#include <cstdlib>
#include <cwchar>
#include <memory>
#include <new>
#include <string>

#include <unistd.h>

#include <portinglayer/processes.h>

#include "process/proc_files.h"
#include "sync/uncancelled.h"
#include "text/multibyte.h"
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

/// The multibyte text that the locale makes of `limit` characters, cut to as many bytes; empty
/// where it cannot. Throws without memory.
std::string _narrowed(wchar_t const* text, std::size_t limit) {
    std::string bytes(limit, '\0');
    std::size_t const made = limit == 0 ? 0 : _narrow(bytes.data(), text, limit);
    bytes.resize(made == MULTIBYTE_FAILED ? 0 : made);
    return bytes;
}

/// Takes the text apart at its single spaces. Throws without memory.
std::vector<std::string> _takeArguments(PString& text) {
    std::vector<std::string> arguments;
    PString token;
    while (text.len() > 0) {
        if (PLiteral::getNextToken(text, token, L' ') != PERR_OK) throw std::bad_alloc();
        arguments.push_back(_narrowed(token.ptr(), token.len()));
    }
    return arguments;
}

/// The vector that the program sees. An empty argument becomes a null pointer, which ends it there.
std::vector<char*> _argumentVector(std::string& program, std::vector<std::string>& arguments) {
    std::vector<char*> entries{program.data()};
    for (std::string& argument : arguments)
        entries.push_back(argument.empty() ? nullptr : argument.data());
    entries.push_back(nullptr);
    return entries;
}

void _enterFolder(PString const& folder) {
    if (folder.len() == 0) return;
    NarrowText const path(folder);
    if (path.get() == nullptr || chdir(path.get()) != 0) std::exit(EXIT_BAD_WORKING_DIR);
}

/// Throws without memory.
void _addToEnvironment(PString const& entry) {
    std::string text = _narrowed(entry.ptr(), entry.len());
    std::size_t const separator = text.find('=');
    if (separator == std::string::npos) return;
    text[separator] = '\0';
    if (setenv(text.c_str(), text.c_str() + separator + 1, 1) == 0) return;
    if (errno != EINVAL) throw std::bad_alloc();  // an empty name is skipped
}

/// The child's way from the fork to its program. Returns only when memory runs out.
int _becomeProgram(PString const& executable, PString& argumentText, PString const& workingDir,
                   std::vector<PString> const& environment) try {
    std::string program = _narrowed(executable.ptr(), std::wcslen(executable.ptr()));
    std::vector<std::string> arguments = _takeArguments(argumentText);
    std::vector<char*> const entries = _argumentVector(program, arguments);

    _enterFolder(workingDir);
    for (PString const& entry : environment) _addToEnvironment(entry);

    if (program.empty()) std::exit(EFAULT);  // as execvp would refuse a name that is none
    (void)execvp(program.c_str(), entries.data());
    std::exit(errno);
} catch (std::bad_alloc const&) {
    return PERR_NO_MEMORY;
}

/// Makes an object ready for another child.
int _forgetEndedChild(PProcess& process) {
    bool running = false;
    (void)process.isRunning(running);
    return running ? PERR_PROCESS_RUNNING : process.clearProcessInfo();
}

int _startKept(PProcess* process, unsigned int& pid) {
    if (process == nullptr) return PERR_NO_MEMORY;
    std::unique_ptr<PProcess> const holder(process);
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
    int const result = _forgetEndedChild(*this);
    if (result != PERR_OK) return result;
    if (executable.ptr() == nullptr || executable.len() == 0) return PERR_NOT_FOUND;

    pid = static_cast<unsigned int>(fork());
    if (pid != 0) return PERR_OK;  // also when the fork failed: callers find out through getPID

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
    int const result = _forgetEndedChild(*this);
    return result == PERR_OK ? PERR_NOT_SUPPORTED : result;
}

int PProcess::initProcessInfo() {
    pid = 0;
    return PERR_OK;
}

int PProcess::clearProcessInfo() {
    Uncancelled const whole;
    if (pid != 0) (void)_reapIfEnded(pid);  // it may still run
    return initProcessInfo();
}

unsigned int PProcess::getCurrentPID() {
    return static_cast<unsigned int>(getpid());
}
