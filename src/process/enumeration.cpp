#include <new>

#include <portinglayer/processes.h>

#include "process/proc_files.h"
#include "process/process_entries.h"

namespace {

constexpr unsigned long CUT_NAME_LENGTH = 15;  ///< the system cuts the names of programs to this

struct ProcessStatus {
    PString name;
    unsigned int parent = 0;
};

/// PERR_NOT_FOUND for a process that ended meanwhile or whose status lacks a line, PERR_CONVERSION
/// when the locale cannot convert its name; PERR_NO_MEMORY.
int _readStatus(unsigned int processId, ProcessStatus& found) {
    ProcFile status(ProcPath(processId, "status"));
    if (!status.isOpen()) return PERR_NOT_FOUND;

    int named = PERR_OK;
    bool const whole =
        status.takeFirstLines({"Name:", "PPid:", "Pid:"}, [&](std::size_t key, char* line) {
            if (key == 0) named = _readName(line, found.name);
            if (key == 1) _readNumber(line, found.parent);
        });
    if (named != PERR_OK) return named;
    return whole ? PERR_OK : PERR_NOT_FOUND;
}

void _keepLastPart(PString& path) {
    (void)PUtils::fixFileSeparator(path);
    unsigned long slash = 0;
    if (path.chr(L'/', slash, true, false) == PERR_OK) (void)path.erase(0, slash + 1);
}

/// The last part of the path with which a process was started. PERR_NOT_FOUND when the system does
/// not tell, PERR_CONVERSION when the locale cannot convert it; PERR_NO_MEMORY.
int _readProgramName(unsigned int processId, PString& name) {
    ProcFile arguments(ProcPath(processId, "cmdline"));
    char const* const first = arguments.isOpen() ? arguments.nextLine() : nullptr;
    if (first == nullptr) return PERR_NOT_FOUND;
    int const result = _convertText(first, name);
    if (result == PERR_OK) _keepLastPart(name);
    return result;
}

bool _equalIgnoringCase(PString const& a, PString const& b) {
    unsigned long position = 0;
    return a.len() == b.len() && a.str(b, position, false, true) == PERR_OK;
}

int _find(PString const& name, std::vector<unsigned int>& pids,
          std::vector<unsigned int>& parentPids) {
    PString base(name);
    if (base.len() != name.len()) return PERR_NO_MEMORY;
    _keepLastPart(base);
    ProcessEntries entries;
    if (!entries.isOpen()) return PERR_NOT_FOUND;

    unsigned int one = 0;
    while (entries.next(one)) {
        ProcessStatus status;
        int result = _readStatus(one, status);
        bool const cut = name.len() >= CUT_NAME_LENGTH && status.name.len() == CUT_NAME_LENGTH;
        if (result == PERR_OK && cut) result = _readProgramName(one, status.name);
        if (result == PERR_NO_MEMORY) return result;
        if (result != PERR_OK || !_equalIgnoringCase(status.name, base)) continue;

        parentPids.push_back(status.parent);
        pids.push_back(one);
    }
    return pids.empty() ? PERR_NOT_FOUND : PERR_OK;
}

}  // namespace

int PProcess::listPIDs(std::vector<unsigned int>& pids) try {
    pids.clear();
    _reapEndedChildren();
    ProcessEntries entries;
    if (!entries.isOpen()) return PERR_NOT_FOUND;

    unsigned int one = 0;
    while (entries.next(one)) pids.push_back(one);
    return PERR_OK;
} catch (std::bad_alloc const&) {
    return PERR_NO_MEMORY;
}

int PProcess::getChildPID(unsigned int processId, std::vector<unsigned int>& children) try {
    children.clear();
    _reapEndedChildren();
    ProcessEntries entries;
    if (!entries.isOpen()) return PERR_NOT_FOUND;

    unsigned int const wanted = processId == 0 ? 1 : processId;
    unsigned int one = 0;
    unsigned int parent = 0;
    while (entries.next(one))
        if (getParentPID(one, parent) == PERR_OK && parent == wanted) children.push_back(one);
    return children.empty() ? PERR_NOT_FOUND : PERR_OK;
} catch (std::bad_alloc const&) {
    return PERR_NO_MEMORY;
}

int PProcess::find(PString const& name, std::vector<unsigned int>& pids,
                   std::vector<unsigned int>& parentPids) try {
    pids.clear();
    parentPids.clear();
    _reapEndedChildren();
    return _find(name, pids, parentPids);
} catch (std::bad_alloc const&) {
    parentPids.resize(pids.size());  // the last match may have found memory for its parent only
    return PERR_NO_MEMORY;
}
