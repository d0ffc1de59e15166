#include "process/children.h"

#include <chrono>
#include <csignal>
#include <fstream>
#include <iterator>
#include <thread>

#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/wait.h>

namespace {

std::vector<char*> _pointers(std::vector<std::string>& texts) {
    std::vector<char*> pointers;
    for (std::string& text : texts) pointers.push_back(text.data());
    pointers.push_back(nullptr);
    return pointers;
}

unsigned int _spawn(std::vector<std::string>& arguments, std::vector<std::string>& environment,
                    char const* program) {
    pid_t child = 0;
    EXPECT_EQ(0, posix_spawn(&child, program, nullptr, nullptr, _pointers(arguments).data(),
                             _pointers(environment).data()));
    return static_cast<unsigned int>(child);
}

}  // namespace

bool eventually(std::function<bool()> const& condition) {
    auto const deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (!condition()) {
        if (std::chrono::steady_clock::now() > deadline) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    return true;
}

PString owned(std::string const& ascii) {
    return PString(ascii.c_str(), P_WHOLE_STRING);
}

char stateOf(unsigned int pid) {
    std::ifstream file("/proc/" + std::to_string(pid) + "/stat");
    std::string const line{std::istreambuf_iterator<char>(file), {}};
    return line.empty() ? '-' : line[line.rfind(')') + 2];
}

Child::Child(std::vector<std::string> arguments, std::vector<std::string> environment,
             std::string const& program)
    : pid(_spawn(arguments, environment, program.c_str())) {
}

int Child::waitExitCode() const {
    int status = 0;
    EXPECT_EQ(static_cast<pid_t>(pid), waitpid(static_cast<pid_t>(pid), &status, 0));
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

Child::~Child() {
    auto const id = static_cast<pid_t>(pid);
    if (id <= 0 || waitpid(id, nullptr, WNOHANG) != 0)
        return;  // collected: another may bear the id
    (void)::kill(id, SIGKILL);
    (void)waitpid(id, nullptr, 0);
}

unsigned int startedId(PProcess& process) {
    unsigned int pid = 0;
    PString name;
    EXPECT_TRUE(eventually([&] {
        return process.getPID(pid) == PERR_OK && process.getName(name) == PERR_OK &&
               name == L"test_child";
    }));
    return pid;
}
