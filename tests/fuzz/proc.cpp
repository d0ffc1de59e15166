#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <string>

#include <portinglayer/processes.h>

#include "process/cpu_sampling.h"

// What the readers of /proc make of files that hold anything: every fopen gives the input.

static std::string source;

extern "C" FILE* __real_fopen(char const* path, char const* mode);
extern "C" FILE* __wrap_fopen(char const* path, char const* mode) {
    return __real_fopen(std::string(path).starts_with("/proc/") ? source.c_str() : path, mode);
}

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* input, std::size_t size) {
    int const memory = memfd_create("input", 0);
    source = "/proc/self/fd/" + std::to_string(memory);
    if (write(memory, input, size) < 0) return 0;

    unsigned int self = PProcess::getCurrentPID(), parent = 0;
    PString text;
    std::vector<PString> list;
    std::vector<unsigned int> ids, parents;
    unsigned long long bytes = 0;
    (void)PProcess::getName(self, text);
    (void)PProcess::getCmdLine(self, text);
    (void)PProcess::getEnvironment(self, list);
    (void)PProcess::getMemoryUsage(self, bytes);
    (void)PProcess::getParentPID(self, parent);
    (void)PProcess::getFreeMemory(bytes);
    if (size < 64) (void)PProcess::find(PString(L"name", 4), ids, parents);

    PFile file;
    proc_stat process;
    cpu_stat machine;
    (void)file.popen(std::wstring(source.begin(), source.end()).c_str(), PFile::OPEN_READ, 1);
    (void)_readProcStat(file, self, &process);
    (void)file.pseek(0, 0);
    (void)_readCpuStat(file, &machine);
    (void)close(memory);
    return 0;
}
