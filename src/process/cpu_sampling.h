/// The counters of processor time that the system keeps, and how the load of a process is sampled.
/// Exported for the product's own diagnosis tools, but no part of the installed interface.
#ifndef PORTINGLAYER_PROCESS_CPU_SAMPLING_H
#define PORTINGLAYER_PROCESS_CPU_SAMPLING_H

#include <portinglayer/export.h>
#include <portinglayer/files.h>

/// The first line of /proc/stat: jiffies of all processors together.
struct cpu_stat {
    unsigned long long user;
    unsigned long long nice;
    unsigned long long system;
    unsigned long long idle;
    unsigned long long iowait;
    unsigned long long irq;
    unsigned long long softirq;
    unsigned long long steal;
};

/// The line of /proc/PID/stat, its fields named as in proc(5).
struct proc_stat {
    static constexpr unsigned long COMM_BYTES = 1024;

    int pid;
    char comm[COMM_BYTES];  ///< with its parentheses
    char state;
    int ppid;
    int pgrp;
    int session;
    int tty_nr;
    int tpgid;
    unsigned long flags;
    unsigned long minflt;
    unsigned long cminflt;
    unsigned long majflt;
    unsigned long cmajflt;
    unsigned long long utime;
    unsigned long long stime;
    unsigned long long cutime;
    unsigned long long cstime;
    long priority;  ///< holds the real-time priority after a successful read
    long nice;
    int num_threads;
    long itrealvalue;
    unsigned long long starttime;
    unsigned long vsize;
    long rss;
    unsigned long rsslim;
    unsigned int startcode;  ///< this and the next nine: the low 32 bits
    unsigned int endcode;
    unsigned int startstack;
    unsigned int kstkesp;
    unsigned int kstkeip;
    unsigned int signal;
    unsigned int blocked;
    unsigned int sigignore;
    unsigned int sigcatch;
    unsigned int wchan;
    unsigned long nswap;
    unsigned long cnswap;
    int exit_signal;
    int processor;
    unsigned long rt_priority;  ///< never written, stays 0: see `priority`
    unsigned long policy;
};

/// Reads one process line at the current position of an open file, with one read of 1024 bytes.
///
/// @param pid  unused
/// @param[out] record  cleared first
/// @return PERR_OK
/// @return PERR_INVALID_ARGUMENT  `record` is null
/// @return PERR_SYSTEM  the line has not all 41 fields, such as for a name that holds a space
/// @return PERR_NOT_OPEN, PERR_READ, PERR_END_OF_FILE  from the read
[[nodiscard]] PORTINGLAYER_EXPORT int _readProcStat(PFile& file, unsigned int pid,
                                                    proc_stat* record);

/// Reads the line of all processors from the current position of an open file on, in blocks of 1024
/// bytes: it must stand at the beginning of one.
///
/// @param[out] record  cleared first
/// @return PERR_OK
/// @return PERR_INVALID_ARGUMENT  `record` is null
/// @return PERR_NOT_OPEN, PERR_READ, PERR_END_OF_FILE  from the read; the last one where no block
///         holds the line
[[nodiscard]] PORTINGLAYER_EXPORT int _readCpuStat(PFile& file, cpu_stat* record);

/// The pause between two samples of a process in milliseconds, read once from the environment.
PORTINGLAYER_EXPORT unsigned int _getSampleTime();

/// Measures the load of one process, see `PProcess::getCPUUsage`.
[[nodiscard]] PORTINGLAYER_EXPORT int _getCpuUsageLinux(unsigned int pid, unsigned int& percent);

#endif
