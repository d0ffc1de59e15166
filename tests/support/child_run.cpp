#include <support/child_run.h>

#include <chrono>
#include <csignal>
#include <stdexcept>
#include <thread>
#include <utility>

#include <sys/wait.h>
#include <unistd.h>

ChildRun::ChildRun(std::function<int()> const& work) : pid(fork()) {
    if (pid < 0) throw std::runtime_error("no child");
    if (pid > 0) return;
    (void)alarm(60);
    _exit(work());
}

void ChildRun::kill() {
    if (pid <= 0) return;
    (void)::kill(pid, SIGKILL);
    (void)wait();
}

int ChildRun::wait() {
    int status = 0;
    (void)waitpid(std::exchange(pid, 0), &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

bool eventually(std::function<bool()> const& holds) {
    auto const deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (!holds()) {
        if (std::chrono::steady_clock::now() > deadline) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    return true;
}
