/// What the supervising example reads from its command line, and what it prints.
#ifndef EXAMPLES_SUPERVISE_H
#define EXAMPLES_SUPERVISE_H

#include <vector>

#include <portinglayer/portinglayer.h>

struct Request {
    PString program;
    PString arguments;
    PString dir;
    std::vector<PString> environment;
    unsigned int seconds = 0;
    bool limited = false;
};

/// How the program ended: result and exit code of the blocking wait, whether its time was over, and
/// how long it took.
struct Outcome {
    int result;
    int exitCode;
    bool timeOver;
    long long milliseconds;
};

/// False when the command line is not a valid request.
bool readRequest(int argc, char** argv, Request& request);

/// The id of this process's one child, running or just ended; 0 without one. It reaps nothing.
unsigned int onlyChild();

/// Prints what the program does now, through queries that reap nothing.
void showFacts(Request const& request, unsigned int pid, long long milliseconds);

/// Ends the program and everything it started, and says what ended.
void endTree(unsigned int pid);

/// Says how the program ended. Returns this program's own exit code.
int report(Request const& request, unsigned int pid, Outcome const& outcome);

#endif
