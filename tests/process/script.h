/// Stands in for what a healthy system will not do.
#ifndef TESTS_PROCESS_SCRIPT_H
#define TESTS_PROCESS_SCRIPT_H

#include <string>
#include <vector>

#include <support/scratch.h>

/// While one exists, pauses and signals are recorded instead of done and forks fail. Where contents
/// are given, the first one stands in every file that is opened, and from each pause on the next.
class Script {
public:
    explicit Script(std::vector<std::string> contents = {});
    Script(Script const&) = delete;
    ~Script();

    /// What was recorded: "sleep 1", "usleep 400000", "kill 4711 9".
    std::vector<std::string> const& calls() const { return recorded; }

    /// For the calls that it stands in for.
    int record(std::string const& call, long argument);
    long path(long real) const;

private:
    void showNext();

    std::vector<std::string> contents, recorded;
    std::size_t shown = 0;
    Scratch scratch;
    std::string file = scratch.path("file");
};

#endif
