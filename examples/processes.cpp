/// Prints the machine's processes as a tree, each with its id, name, memory and command line.
/// `processes ID` prints the tree of that process, `processes NAME` those of that name, each on its own.
#include <portinglayer/portinglayer.h>

#include <clocale>
#include <cstdio>
#include <map>
#include <vector>

namespace {

using Children = std::map<unsigned int, std::vector<unsigned int>>;

/// One line. What a process no longer tells, because it ended meanwhile, shows as "-".
void _show(unsigned int pid, int depth) {
    PString name, command;
    unsigned long long memory = 0;
    if (PProcess::getName(pid, name) != PERR_OK) return;  // it is gone
    (void)PProcess::getCmdLine(pid, command);
    bool const measured = PProcess::getMemoryUsage(pid, memory) == PERR_OK;  // not in the kernel

    std::printf("%*s%u  %ls", depth * 2, "", pid, name.ptr());
    if (measured) std::printf("  %llu KiB", memory / 1024);
    std::printf("  %ls\n", command.len() > 0 ? command.ptr() : L"-");
}

void _showTree(Children const& children, unsigned int pid, int depth) {
    _show(pid, depth);
    auto const own = children.find(pid);
    if (own == children.end()) return;
    for (unsigned int const child : own->second) _showTree(children, child, depth + 1);
}

/// The tree below a process; 0 is above all. One walk over the list gives the whole tree; asking each
/// process for its children would read the list once for each.
int _showBelow(unsigned int top) {
    std::vector<unsigned int> pids;
    int const result = PProcess::listPIDs(pids);
    if (result != PERR_OK) return result;

    Children children;
    for (unsigned int const pid : pids) {
        unsigned int parent = 0;
        if (PProcess::getParentPID(pid, parent) == PERR_OK) children[parent].push_back(pid);
    }
    if (top != 0) children[0].assign(1, top);
    for (unsigned int const root : children[0]) _showTree(children, root, 0);
    return PERR_OK;
}

int _showNamed(PString const& name) {
    std::vector<unsigned int> pids, parents;
    int const result = PProcess::find(name, pids, parents);
    for (unsigned int const pid : pids) _show(pid, 0);
    return result;
}

int _showAsked(PString const& what) {
    unsigned int id = 0;
    bool const isId =
        what.len() > 0 && what.len() < 10 && PUtils::isDec(what.ptr(), what.len(), false);
    if (isId && PUtils::strToUint32(what, id) == PERR_OK) return _showBelow(id);
    return _showNamed(what);
}

}  // namespace

int main(int argc, char** argv) {
    (void)std::setlocale(LC_ALL, "");  // names are in the user's character set
    if (argc > 2) {
        std::fputs("usage: processes [ID | NAME]\n", stderr);
        return 2;
    }
    int const result = argc == 2 ? _showAsked(PString(argv[1], P_WHOLE_STRING)) : _showBelow(0);
    if (result != PERR_OK) std::fprintf(stderr, "processes: %s\n", perrorName(result));
    return result == PERR_OK ? 0 : 1;
}
