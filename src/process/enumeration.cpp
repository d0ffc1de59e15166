#include <csignal>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>

#include <dirent.h>

#include <portinglayer/processes.h>

#include "process/proc_files.h"

namespace {

constexpr unsigned int TREE_WAIT_MS = 2000;
constexpr unsigned long CUT_NAME_LENGTH = 15;  ///< the system cuts the names of programs to this

struct CloseDirectory {
    void operator()(DIR* directory) const { (void)closedir(directory); }
};

/// The entries of the process directory that stand for a process, in the order of the system.
class ProcessEntries {
public:
    bool isOpen() const { return directory != nullptr; }

    /// The name of the next entry, valid until the next call; null at the end.
    char const* next() {
        while (dirent const* const entry = readdir(directory.get()))
            if (isProcess(*entry)) return entry->d_name;
        return nullptr;
    }

private:
    static constexpr std::size_t LONGEST_NAME = 127 - 16;

    static bool isProcess(dirent const& entry) {
        return entry.d_type == DT_DIR && entry.d_name[0] >= '0' && entry.d_name[0] <= '9' &&
               std::strlen(entry.d_name) <= LONGEST_NAME;
    }

    std::unique_ptr<DIR, CloseDirectory> directory{opendir("/proc")};
};

unsigned int _processId(char const* entry) {
    return static_cast<unsigned int>(std::strtol(entry, nullptr, 10));
}

unsigned int _readParent(char const* entry) {
    unsigned int parent = 0;
    ProcLines status(ProcPath(entry, "status"));
    char const* const line = status.isOpen() ? status.find("PPid:") : nullptr;
    if (line != nullptr) _readNumber(line, parent);
    return parent;
}

struct ProcessStatus {
    PString name;
    unsigned int parent = 0;
};

/// False for a process that ended meanwhile or whose status lacks one of the three.
bool _readStatus(char const* entry, ProcessStatus& found) {
    ProcLines status(ProcPath(entry, "status"));
    if (!status.isOpen()) return false;

    bool name = false;
    bool pid = false;
    bool parent = false;
    while (!name || !pid || !parent) {
        char const* const line = status.next();
        if (line == nullptr) return false;
        if (!name && _startsWith(line, "Name:")) {
            name = true;
            (void)_readName(line, found.name);  // one that cannot be converted counts as empty
        } else if (!pid && _startsWith(line, "Pid:")) {
            pid = true;
        } else if (!parent && _startsWith(line, "PPid:")) {
            parent = true;
            _readNumber(line, found.parent);
        }
    }
    return true;
}

void _keepLastPart(PString& path) {
    (void)PUtils::fixFileSeparator(path);
    unsigned long slash = 0;
    if (path.chr(L'/', slash, true, false) == PERR_OK) (void)path.erase(0, slash + 1);
}

/// The last part of the path with which a process was started. False when the system does not tell.
bool _readProgramName(char const* entry, PString& name) {
    ProcLines arguments(ProcPath(entry, "cmdline"));
    char const* const first = arguments.isOpen() ? arguments.next() : nullptr;
    if (first == nullptr) return false;
    name = PString(first, P_WHOLE_STRING);  // up to the zero byte behind the program
    _keepLastPart(name);
    return true;
}

/// A program that is searched for.
class WantedProgram {
public:
    explicit WantedProgram(PString const& name)
        : base(name), longName(name.len() >= CUT_NAME_LENGTH), whole(base.len() == name.len()) {
        _keepLastPart(base);
    }

    bool isWhole() const { return whole; }  ///< false: memory ran out for it

    /// Replaces a name that may have been cut by what the process was started with.
    bool matches(char const* entry, PString& name) const {
        bool const cut = longName && name.len() == CUT_NAME_LENGTH;
        if (cut && !_readProgramName(entry, name)) return false;
        unsigned long position = 0;
        return name.len() == base.len() && name.str(base, position, false, true) == PERR_OK;
    }

private:
    PString base;
    bool longName;
    bool whole;
};

int _find(WantedProgram const& wanted, std::vector<unsigned int>& pids,
          std::vector<unsigned int>& parentPids) {
    ProcessEntries entries;
    if (!entries.isOpen()) return PERR_NOT_FOUND;

    while (char const* const entry = entries.next()) {
        ProcessStatus status;
        if (!_readStatus(entry, status) || !wanted.matches(entry, status.name)) continue;
        parentPids.push_back(status.parent);
        pids.push_back(_processId(entry));
    }
    return pids.empty() ? PERR_NOT_FOUND : PERR_OK;
}

/// The process and all its descendants, breadth first.
int _listTree(unsigned int root, std::vector<unsigned int>& tree) {
    tree.push_back(root);
    std::vector<unsigned int> children;
    for (std::size_t i = 0; i < tree.size(); ++i) {
        int const result = PProcess::getChildPID(tree[i], children);
        if (result == PERR_NO_MEMORY) return result;
        if (result == PERR_OK) tree.insert(tree.end(), children.begin(), children.end());
    }
    return PERR_OK;
}

}  // namespace

int PProcess::listPIDs(std::vector<unsigned int>& pids) try {
    pids.clear();
    _reapEndedChildren();
    ProcessEntries entries;
    if (!entries.isOpen()) return PERR_NOT_FOUND;

    while (char const* const entry = entries.next()) pids.push_back(_processId(entry));
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
    while (char const* const entry = entries.next())
        if (_readParent(entry) == wanted) children.push_back(_processId(entry));
    return children.empty() ? PERR_NOT_FOUND : PERR_OK;
} catch (std::bad_alloc const&) {
    return PERR_NO_MEMORY;
}

int PProcess::killTree(unsigned int processId) try {
    std::vector<unsigned int> tree;
    int result = _listTree(processId, tree);
    if (result != PERR_OK) return result;

    auto const signalOne = [&result](unsigned int one, int signal) {
        int const sent = killSignal(one, signal);
        if (sent != PERR_OK) result = sent;
    };
    for (unsigned int const one : tree) {
        signalOne(one, SIGTERM);
        if (waitFinish(one, TREE_WAIT_MS)) signalOne(one, SIGKILL);
    }
    return result;
} catch (std::bad_alloc const&) {
    return PERR_NO_MEMORY;
}

int PProcess::find(PString const& name, std::vector<unsigned int>& pids,
                   std::vector<unsigned int>& parentPids) try {
    pids.clear();
    parentPids.clear();
    _reapEndedChildren();
    WantedProgram const wanted(name);
    return wanted.isWhole() ? _find(wanted, pids, parentPids) : PERR_NO_MEMORY;
} catch (std::bad_alloc const&) {
    parentPids.resize(pids.size());  // the last match may have found memory for its parent only
    return PERR_NO_MEMORY;
}
