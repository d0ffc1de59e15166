/// Finds the processes of a program by its name and ends each with all that it has started: by SIGTERM,
/// then by SIGKILL for what is still there two seconds later.
#include <cstdio>
#include <vector>

#include <portinglayer/processes.h>

int main(int argc, char** argv) {
    if (argc != 2) return std::puts("usage: find_and_end NAME"), 2;
    std::vector<unsigned int> ids, parents;
    int result = PProcess::find(PString(argv[1], P_WHOLE_STRING), ids, parents);
    if (result == PERR_NOT_FOUND) return std::printf("no process is called %s\n", argv[1]), 1;

    for (unsigned int const id : ids) {
        if (id == PProcess::getCurrentPID()) continue;
        result = PProcess::killTree(id);
        std::printf("process %u: %s\n", id, perrorName(result));
    }
    return result == PERR_OK ? 0 : 1;
}
