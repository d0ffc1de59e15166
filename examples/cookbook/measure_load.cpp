/// Measures the load of the machine and of one process, and how much memory there is.
#include <cstdio>

#include <portinglayer/processes.h>

int main() {
    unsigned int const id = PProcess::getCurrentPID();
    unsigned int machine = 0, own = 0;
    unsigned long long available = 0, used = 0;

    int result = PProcess::getCPUUsage(machine);                     // over one second
    if (result == PERR_OK) result = PProcess::getCPUUsage(id, own);  // a share of all processors
    if (result == PERR_OK) result = PProcess::getFreeMemory(available);
    if (result == PERR_OK) result = PProcess::getMemoryUsage(id, used);
    if (result != PERR_OK) return std::printf("not measured: %s\n", perrorName(result)), 1;

    std::printf("machine %u %%, this process %u %%, %llu MiB free, %llu KiB used\n", machine, own,
                available >> 20, used >> 10);
    return 0;
}
