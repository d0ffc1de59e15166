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
    ~Script();
    Script(Script const&) = delete;

    /// What was recorded: "sleep 1", "usleep 400000", "kill 4711 9".
    std::vector<std::string> const& calls() const { return recorded; }

    /// The script that exists now; null without one.
    static Script* current();

    int record(std::string const& call, long argument);
    long standIn(long path) const;

private:
    void showNext();

    std::vector<std::string> contents;
    std::vector<std::string> recorded;
    std::size_t shown = 0;
    Scratch scratch;
    std::string file = scratch.path("file");
};

#endif
