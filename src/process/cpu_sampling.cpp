#include "process/cpu_sampling.h"

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <unistd.h>

#include <portinglayer/processes.h>
#include <portinglayer/synchronisation.h>
#include <portinglayer/threads.h>

#include "process/proc_files.h"

// Three measurements stand here side by side: the machine, a process, a processor. They differ in
// what they read, how long they pause and how they cut, and callers compare their results with
// earlier ones, so each keeps its own way.

namespace {

constexpr char COUNTERS[] = "/proc/stat";           // for the streams
constexpr wchar_t COUNTERS_WIDE[] = L"/proc/stat";  // for a PFile
constexpr unsigned long READ_BYTES = 1024;
constexpr unsigned long MACHINE_LINE_BYTES = 512;
constexpr unsigned long PROCESSOR_BLOCK_BYTES = 2048;
constexpr unsigned int MACHINE_PAUSE_S = 1;
constexpr unsigned int PROCESSOR_PAUSE_MS = 400;
constexpr unsigned int DEFAULT_SAMPLE_TIME_MS = 400;
constexpr float OUT_OF_RANGE = 9223372036854775808.0F;  ///< 2^63

/// Cuts toward zero; the low 32 bits of what is negative or too large.
unsigned int _wholePercents(float value) {
    bool const inRange = value > -OUT_OF_RANGE && value < OUT_OF_RANGE;
    return inRange ? static_cast<unsigned int>(static_cast<long long>(value)) : 0;
}

int _scanCounters(char const* line, cpu_stat& sample) {
    return std::sscanf(line, "cpu %llu %llu %llu %llu %llu %llu %llu %llu", &sample.user,
                       &sample.nice, &sample.system, &sample.idle, &sample.iowait, &sample.irq,
                       &sample.softirq, &sample.steal);
}

/// What the counters moved by. Those that ran backwards wrap, but for the idle time, which stands
/// still then.
cpu_stat _movement(cpu_stat const& first, cpu_stat const& second) {
    auto const idle = static_cast<long long>(second.idle - first.idle);
    return {second.user - first.user,       second.nice - first.nice,
            second.system - first.system,   static_cast<unsigned long long>(std::max(idle, 0LL)),
            second.iowait - first.iowait,   second.irq - first.irq,
            second.softirq - first.softirq, second.steal - first.steal};
}

unsigned long long _sum(cpu_stat const& d) {
    return d.user + d.nice + d.system + d.idle + d.iowait + d.irq + d.softirq + d.steal;
}

/// Line and numbers that are missing leave zeros.
cpu_stat _sampleMachine(std::FILE* stream) {
    cpu_stat sample = {};
    char line[MACHINE_LINE_BYTES + 1];
    std::rewind(stream);
    (void)std::fflush(stream);  // drops what was read before, so that the system is asked again
    if (std::fgets(line, sizeof line, stream) != nullptr) (void)_scanCounters(line, sample);
    return sample;
}

/// Opens both files and takes the first or the second sample of a process.
class ProcessSampler {
public:
    explicit ProcessSampler(unsigned int processId) : pid(processId) {}

    int open() {
        int result = machineFile.popen(COUNTERS_WIDE, PFile::OPEN_READ, PFile::UNLOCKED);
        if (result != PERR_OK) return result;
        PString path;
        result = PUtils::pformatString(path, L"/proc/%u/stat", pid);
        if (result != PERR_OK) return result;
        return processFile.popen(path, PFile::OPEN_READ, PFile::UNLOCKED);
    }

    int rewind() {
        int const result = processFile.pseek(0, SEEK_SET);
        return result == PERR_OK ? machineFile.pseek(0, SEEK_SET) : result;
    }

    int sample(proc_stat& process, cpu_stat& machine) {
        int const result = _readProcStat(processFile, pid, &process);
        return result == PERR_OK ? _readCpuStat(machineFile, &machine) : result;
    }

private:
    unsigned int pid;
    PFile machineFile;
    PFile processFile;
};

struct ProcessorTimes {
    int user;
    int nice;
    int system;
    int idle;
};

/// Searches the line of a processor block by block; a line that lies across two blocks is not seen
/// whole.
int _sampleProcessor(std::FILE* stream, char const* key, ProcessorTimes& times) {
    char block[PROCESSOR_BLOCK_BYTES + 1];
    char const* found = nullptr;
    while (found == nullptr) {
        std::size_t const got = std::fread(block, 1, PROCESSOR_BLOCK_BYTES, stream);
        block[got] = '\0';
        found = std::strstr(block, key);
        if (found == nullptr && got < PROCESSOR_BLOCK_BYTES) return PERR_SYSTEM;  // end or error
    }

    char const* const numbers = std::strchr(found, ' ');
    if (numbers == nullptr) return PERR_SYSTEM;
    int const count =
        std::sscanf(numbers, "%d %d %d %d", &times.user, &times.nice, &times.system, &times.idle);
    return count == 4 ? PERR_OK : PERR_SYSTEM;
}

/// What a counter moved by; one that ran backwards wraps.
unsigned int _movement(int first, int second) {
    return static_cast<unsigned int>(second) - static_cast<unsigned int>(first);
}

unsigned int _processorLoad(ProcessorTimes const& first, ProcessorTimes const& second) {
    unsigned int const user = _movement(first.user, second.user);
    unsigned int const nice = _movement(first.nice, second.nice);
    unsigned int const system = _movement(first.system, second.system);
    unsigned int const idle = _movement(first.idle, second.idle);
    int const total = static_cast<int>(user + system + nice + idle);

    float const factor = 100.0F / static_cast<float>(std::max(total, 1));
    auto const percents = [&](unsigned int part) {
        return static_cast<float>(static_cast<int>(part)) * factor;
    };
    return _wholePercents(percents(user) + percents(nice) + percents(system));
}

}  // namespace

int _readProcStat(PFile& file, unsigned int /*pid*/, proc_stat* record) {
    if (record == nullptr) return PERR_INVALID_ARGUMENT;
    *record = proc_stat();
    char line[READ_BYTES + 1];
    unsigned long count = 0;
    int const result = file.pread(line, READ_BYTES, count);
    if (result != PERR_OK) return result;
    if (count == 0) return PERR_SYSTEM;
    line[count] = '\0';

    proc_stat& r = *record;
    // Field 40 goes where field 18 went: readers of `priority` want the real-time priority.
    auto* const realTime = reinterpret_cast<unsigned long*>(&r.priority);
    int const fields = std::sscanf(
        line,
        "%d %1023s %c %d %d %d %d %d %lu %lu %lu %lu %lu %llu %llu %llu %llu %ld %ld %d %ld %llu "
        "%lu %ld %lu %u %u %u %u %u %u %u %u %u %u %lu %lu %d %d %lu %lu",
        &r.pid, r.comm, &r.state, &r.ppid, &r.pgrp, &r.session, &r.tty_nr, &r.tpgid, &r.flags,
        &r.minflt, &r.cminflt, &r.majflt, &r.cmajflt, &r.utime, &r.stime, &r.cutime, &r.cstime,
        &r.priority, &r.nice, &r.num_threads, &r.itrealvalue, &r.starttime, &r.vsize, &r.rss,
        &r.rsslim, &r.startcode, &r.endcode, &r.startstack, &r.kstkesp, &r.kstkeip, &r.signal,
        &r.blocked, &r.sigignore, &r.sigcatch, &r.wchan, &r.nswap, &r.cnswap, &r.exit_signal,
        &r.processor, realTime, &r.policy);
    constexpr int ALL_FIELDS = 41;
    return fields == ALL_FIELDS ? PERR_OK : PERR_SYSTEM;
}

int _readCpuStat(PFile& file, cpu_stat* record) {
    if (record == nullptr) return PERR_INVALID_ARGUMENT;
    *record = cpu_stat();
    constexpr int ALL_COUNTERS = 8;
    for (;;) {
        char block[READ_BYTES];
        unsigned long count = 0;
        int const result = file.pread(block, READ_BYTES, count);
        if (result != PERR_OK) return result;
        if (count == 0) return PERR_SYSTEM;
        block[count - 1] = '\0';  // the last byte gives its place to the terminator
        if (_scanCounters(block, *record) == ALL_COUNTERS) return PERR_OK;
    }
}

unsigned int _getSampleTime() {
    static PMutex mutex;  // never initialised, so it excludes nobody: the cache guards itself
    static std::atomic<unsigned int> cached{0};

    (void)mutex.lock();
    unsigned int milliseconds = cached.load(std::memory_order_relaxed);
    if (milliseconds == 0) {
        char const* const wanted = std::getenv("TALV_PROC_SAMPLE_TIME_MS");
        if (wanted != nullptr)
            milliseconds = static_cast<unsigned int>(std::strtol(wanted, nullptr, 10));
        if (milliseconds == 0) milliseconds = DEFAULT_SAMPLE_TIME_MS;
        cached.store(milliseconds, std::memory_order_relaxed);
    }
    (void)mutex.unlock();
    return milliseconds;
}

int _getCpuUsageLinux(unsigned int pid, unsigned int& percent) {
    percent = 0;
    ProcessSampler sampler(pid);
    int result = sampler.open();
    if (result != PERR_OK) return result;

    proc_stat before;
    cpu_stat machineBefore;
    result = sampler.sample(before, machineBefore);
    if (result != PERR_OK) return result;
    (void)PThread::psleep(_getSampleTime());  // a shorter pause gives a coarser result only

    proc_stat after;
    cpu_stat machineAfter;
    result = sampler.rewind();
    if (result != PERR_OK) return result;
    result = sampler.sample(after, machineAfter);
    if (result != PERR_OK) return result;

    unsigned long long const total = _sum(_movement(machineBefore, machineAfter));
    if (total == 0) return PERR_SYSTEM;
    auto const all = static_cast<float>(total);
    float const user = static_cast<float>((after.utime - before.utime) * 100) / all;
    float const system = static_cast<float>((after.stime - before.stime) * 100) / all;
    percent = _wholePercents(system + user);
    return PERR_OK;
}

int PProcess::getCPUUsage(unsigned int& percent) {
    percent = 0;
    ProcStream const stream = _openProcStream(COUNTERS);
    if (stream == nullptr) return PERR_IO;

    cpu_stat const before = _sampleMachine(stream.get());
    (void)sleep(MACHINE_PAUSE_S);  // a shorter pause gives a coarser result only
    cpu_stat const d = _movement(before, _sampleMachine(stream.get()));

    auto const total = std::max(static_cast<long long>(_sum(d)), 1LL);
    // In 32 bits, as callers have it: it wraps for a machine that was suspended between the
    // samples.
    unsigned int const busy = static_cast<unsigned int>(d.user + d.system + d.nice) * 100;
    percent = static_cast<unsigned int>(static_cast<long long>(busy) / total);
    return PERR_OK;
}

int PProcess::getCPUUsage(unsigned int processId, unsigned int& percent) {
    percent = 0;
    return _getCpuUsageLinux(processId, percent);
}

int PProcess::getSpecCPUUsage(unsigned int cpu, unsigned int& percent) {
    constexpr std::size_t KEY_BYTES = 16;
    char key[KEY_BYTES];
    if (std::snprintf(key, sizeof key, "cpu%u", cpu) < 0) return PERR_SYSTEM;
    ProcStream const stream = _openProcStream(COUNTERS);
    if (stream == nullptr) return PERR_OPEN;
    // Unbuffered: blocks are read straight into the searched one, and none is kept between samples.
    (void)std::setvbuf(stream.get(), nullptr, _IONBF, 0);

    ProcessorTimes before = {};
    int result = _sampleProcessor(stream.get(), key, before);
    if (result != PERR_OK) return result;
    (void)PThread::psleep(PROCESSOR_PAUSE_MS);  // a shorter pause gives a coarser result only

    ProcessorTimes after = {};
    std::rewind(stream.get());
    result = _sampleProcessor(stream.get(), key, after);
    if (result != PERR_OK) return result;
    percent = _processorLoad(before, after);
    return PERR_OK;
}
