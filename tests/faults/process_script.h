/// What a program linked with this sees instead of the system, for what a healthy system will not do.
#ifndef TESTS_FAULTS_PROCESS_SCRIPT_H
#define TESTS_FAULTS_PROCESS_SCRIPT_H

#include <functional>
#include <string>
#include <vector>

/// Above the system's largest process id: its files under /proc are those of the script.
constexpr unsigned int SCRIPTED_PID = 99999999;

/// While one exists, pauses and signals are recorded instead of done, and the files that it is given
/// stand in for those of the system.
class ProcessScript {
public:
    ProcessScript();
    ~ProcessScript();
    ProcessScript(ProcessScript const&) = delete;
    ProcessScript& operator=(ProcessScript const&) = delete;

    /// `path` reads as the first content, and from each pause on as the next one.
    void file(std::string const& path, std::vector<std::string> contents);

    std::vector<std::string> calls;  ///< such as "sleep 1", "usleep 400000", "kill 17 9"
    bool forkFails = false;
};

#endif
