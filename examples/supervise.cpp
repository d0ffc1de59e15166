/// Supervises programs: starts each of them, says once a second that it runs, starts it again after a
/// failure, and ends it with all that it started when the time is over or SIGINT or SIGTERM comes.
#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <list>
#include <string>
#include <vector>

#include <portinglayer/portinglayer.h>

namespace {

constexpr unsigned int LOOK_MS = 100;      // how soon a request to stop is seen
constexpr long long GRACE_MS = 500;        // for leaving on SIGTERM, within the time
constexpr long long FIRST_PAUSE_MS = 100;  // before a new start, twice as long before the next

volatile std::sig_atomic_t stopRequested = 0;

struct Program {
    Program(char const* given, PString const& text) : name(given), command(text) {}

    char const* name;
    PCommand command;
    PThread thread;
    long long until = 0;  // a tick count at which nothing of it runs any more
    unsigned int restarts = 0;
    bool good = false;  // ended by itself and without failure
};

bool _isOver(Program const& program) {
    return stopRequested != 0 || PTime::getTickCount() >= program.until - GRACE_MS;
}

/// Waits for the end of a program that was started, or ends it when its time is over.
int _await(Program& program, PEnding& ending) {
    unsigned long long memory = 0;
    unsigned int const id = program.command.getPID();
    for (int looks = 1; !_isOver(program); ++looks) {
        int const code = program.command.wait(ending, LOOK_MS);
        if (code != PERR_PROCESS_RUNNING) return code;
        if (looks % 10 == 0 && PProcess::getMemoryUsage(id, memory) == PERR_OK)
            std::printf("%s (id %u): runs, %llu KiB\n", program.name, id, memory / 1024);
    }
    long long const left = program.until - PTime::getTickCount();
    return program.command.end(ending, static_cast<unsigned int>(std::clamp(left, 0LL, GRACE_MS)));
}

bool _runOnce(Program& program) {
    PEnding ending{};
    long long const start = PTime::getTickCount();
    int code = program.command.start();
    if (code == PERR_OK) code = _await(program, ending);
    if (code != PERR_OK) {
        std::printf("%s: could not be run (%s)\n", program.name, perrorName(code));
        return false;
    }
    bool const killed = ending.signal != 0;
    long long const took = PTime::getTickCountDiff(start, PTime::getTickCount());
    std::printf("%s (id %u): ended %s %d after %lld.%03lld s\n", program.name,
                program.command.getPID(), killed ? "by signal" : "with exit code",
                killed ? ending.signal : ending.exitCode, took / 1000, took % 1000);
    return ending.exitCode == 0;
}

void* _supervise(void* argument) {
    Program& program = *static_cast<Program*>(argument);
    program.good = _runOnce(program);
    for (long long pause = FIRST_PAUSE_MS; !program.good && program.restarts-- > 0; pause *= 2) {
        long long const again = PTime::getTickCount() + pause;
        while (PTime::getTickCount() < again && !_isOver(program)) PThread::psleep(10);
        if (_isOver(program)) break;
        program.good = _runOnce(program);
    }
    return nullptr;
}

/// What the command line says: options, then programs with their arguments and "--" between them.
class Request {
public:
    bool read(char** words) {
        PString text;
        for (; *words != nullptr && std::strncmp(*words, "--", 2) == 0; words += 2)
            if (words[1] == nullptr || !readOption(*words, words[1])) return false;
        for (bool begins = true; *words != nullptr; begins = std::strcmp(*words++, "--") == 0) {
            if (PUtf8::decode(*words, P_WHOLE_STRING, text) != PERR_OK) return false;
            if (begins && !add(*words, text)) return false;
            if (begins || text == L"--") continue;
            if (programs.back().command.addArgument(text) != PERR_OK) return false;
        }
        return !programs.empty();
    }

    std::list<Program> programs;

private:
    bool readOption(std::string const& option, char const* value) {
        PString text;
        unsigned int number = 0;
        if (PUtf8::decode(value, P_WHOLE_STRING, text) != PERR_OK) return false;
        if (option == "--dir") return dir.set(text, P_WHOLE_STRING) == PERR_OK;
        if (option == "--env") return variables.push_back(text), true;
        bool const digits = text.len() < 7 && PUtils::isDec(text.ptr(), text.len(), false);
        if (!digits || PUtils::strToUint32(text, number) != PERR_OK) return false;
        if (option == "--restarts") restarts = number;
        if (option == "--seconds") milliseconds = 1000LL * number;
        return option == "--restarts" || option == "--seconds";
    }

    bool add(char const* name, PString const& text) {
        Program& program = programs.emplace_back(name, text);
        program.restarts = restarts;
        program.until = PTime::getTickCount() + milliseconds;
        for (PString value : variables) {
            PString variable;
            (void)PLiteral::getNextToken(value, variable, L'=');
            if (program.command.setEnvironment(variable, value) != PERR_OK) return false;
        }
        return dir.len() == 0 || program.command.setWorkingDir(dir) == PERR_OK;
    }

    long long milliseconds = 1LL << 50;
    unsigned int restarts = 0;
    PString dir;
    std::vector<PString> variables;  // NAME=VALUE
};

}  // namespace

int main(int, char** argv) {
    Request request;
    if (!request.read(argv + 1)) {
        std::puts("usage: supervise [--seconds N] [--restarts N] [--dir DIR] [--env NAME=VALUE]... "
                  "PROGRAM [ARGUMENT...] [-- PROGRAM [ARGUMENT...]]...");
        return 2;
    }
    for (int const number : {SIGINT, SIGTERM})
        (void)std::signal(number, [](int) { stopRequested = 1; });
    (void)std::setvbuf(stdout, nullptr, _IOLBF, 0);
    for (Program& program : request.programs)
        if (program.thread.pcreate(_supervise, &program) != PERR_OK) stopRequested = 1;
    void* nothing = nullptr;
    bool good = true;
    for (Program& program : request.programs) {
        (void)program.thread.pjoin(nothing);
        good = good && program.good;
    }
    return good ? 0 : 1;
}
