// Commands: starting and waiting in a large process, and the whole of a program's output.

#include "operation.h"

#include <cstdlib>
#include <vector>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <portinglayer/commands.h>

namespace {

/// Has this process use so much memory besides.
void _become(std::size_t bytes) {
    static std::vector<char> ballast;
    if (ballast.size() == bytes) return;
    ballast = std::vector<char>();
    ballast = std::vector<char>(bytes, 1);
}

int _waitFor(pid_t pid) {
    int status = -1;
    waitpid(pid, &status, 0);
    return WEXITSTATUS(status);
}

void _addStarting() {
    Operation op("start a command and wait, parent of 512 MiB", 1.10, 1, "posix_spawn, waitpid");
    op.clock(Clock::WALL).setup([] { _become(512UL << 20U); });
    op.way(BARE, [] {
        char program[] = "/bin/false";
        char* const arguments[] = {program, nullptr};
        pid_t pid = 0;
        posix_spawn(&pid, program, nullptr, nullptr, arguments, environ);
        return _waitFor(pid);
    });
    op.way(OURS, [] {
        PCommand command(L"/bin/false");
        PEnding ending{};
        bool const ended =
            command.start() == PERR_OK && command.wait(ending, PCommand::FOREVER) == PERR_OK;
        return ended ? ending.exitCode : -1;
    });
}

/// `seq COUNT`, with everything that a caller has to do by hand.
std::string _outputOfSpawned(char* count) {
    char program[] = "/usr/bin/seq";
    char* const arguments[] = {program, count, nullptr};
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) std::abort();
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
    pid_t pid = 0;
    posix_spawn(&pid, program, &actions, nullptr, arguments, environ);
    posix_spawn_file_actions_destroy(&actions);
    close(ends[1]);

    std::string output;
    char buffer[32768];
    for (ssize_t got = 0; (got = read(ends[0], buffer, sizeof buffer)) > 0;)
        output.append(buffer, static_cast<std::size_t>(got));
    close(ends[0]);
    return _waitFor(pid) == 0 ? output : "failed";
}

void _addRunning(std::size_t numbers) {
    std::string const count = std::to_string(numbers);
    std::string lines;
    for (std::size_t i = 1; i <= numbers; ++i) lines += std::to_string(i) + '\n';
    Operation op("run a program for its lines of output, " + count, NO_LIMIT, lines,
                 "posix_spawn, read, waitpid");
    op.clock(Clock::WALL).setup([] { _become(0); });
    op.way(BARE, [number = count]() mutable { return _outputOfSpawned(number.data()); });
    op.way(OURS, [number = std::wstring(count.begin(), count.end())] {
        PCommand seq(L"/usr/bin/seq");
        PEnding ending{};
        std::string output, errors;
        int code = seq.addArgument(number.c_str());
        if (code == PERR_OK) code = seq.run("", output, errors, ending, PCommand::FOREVER);
        return code == PERR_OK && ending.exitCode == 0 ? output : "failed";
    });
    WITH_POCO(op.way("POCO", [count] {
        Poco::Pipe pipe;
        std::string output;
        auto const handle = Poco::Process::launch("/usr/bin/seq", {count}, nullptr, &pipe, nullptr);
        Poco::PipeInputStream stream(pipe);
        Poco::StreamCopier::copyToString(stream, output);
        return handle.wait() == 0 ? output : "failed";
    }));
    WITH_GLIB(op.way("GLib", [number = count]() mutable {
        char program[] = "/usr/bin/seq";
        char* arguments[] = {program, number.data(), nullptr};
        char *output = nullptr, *errors = nullptr;
        int status = -1;
        g_spawn_sync(nullptr, arguments, nullptr, G_SPAWN_DEFAULT, nullptr, nullptr, &output,
                     &errors, &status, nullptr);
        GText const text(output);
        GText const unused(errors);
        return std::string(status == 0 ? output : "failed");
    }));
    WITH_QT(op.way("Qt", [count] {
        QProcess seq;
        seq.start("/usr/bin/seq", {QString::fromStdString(count)});
        return seq.waitForFinished(-1) ? seq.readAllStandardOutput().toStdString() : "failed";
    }));
}

}  // namespace

void addCommands() {
    _addStarting();
    for (std::size_t const numbers : {10UL, 160'000UL}) _addRunning(numbers);
}
