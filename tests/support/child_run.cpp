#include <support/child_run.h>

#include <chrono>
#include <csignal>
#include <stdexcept>
#include <thread>

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

ChildRun::ChildRun(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), TEST_CHILD);
    std::vector<char*> argv;
    for (std::string& argument : arguments) argv.push_back(argument.data());
    argv.push_back(nullptr);
    if (posix_spawn(&pid, TEST_CHILD, nullptr, nullptr, argv.data(), environ) != 0)
        throw std::runtime_error("no child program");
}

void ChildRun::kill() {
    if (pid <= 0) return;
    (void)::kill(pid, SIGKILL);
    (void)waitpid(pid, nullptr, 0);
    pid = 0;
}

bool eventually(std::function<bool()> const& holds) {
    auto const deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (!holds()) {
        if (std::chrono::steady_clock::now() > deadline) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    return true;
}
