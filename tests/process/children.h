/// Children of a test, which are real programs, and the facts that are asked of any process.
#ifndef TESTS_PROCESS_CHILDREN_H
#define TESTS_PROCESS_CHILDREN_H

#include <algorithm>
#include <csignal>
#include <fstream>
#include <iterator>
#include <memory>
#include <set>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

#include <gtest/gtest.h>
#include <portinglayer/processes.h>
#include <support/child_run.h>
#include <support/scratch.h>
#include <sys/wait.h>

using Ids = std::vector<unsigned int>;

/// A file of a process; empty when it is gone.
inline std::string factOf(unsigned int pid, std::string const& file) {
    std::ifstream stream("/proc/" + std::to_string(pid) + "/" + file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

inline PString owned(std::string const& ascii) {
    return PString(ascii.c_str(), P_WHOLE_STRING);
}

/// A shell's arguments: behind tabs, since spaces would take the command apart.
inline std::string shell(std::string command) {
    std::replace(command.begin(), command.end(), ' ', '\t');
    return "-c " + command;
}

struct Child {
    explicit Child(std::string const& arguments = "60", std::string const& program = "/bin/sleep")
        : process(owned(program), owned(arguments)) {
        if (process.start() != PERR_OK || process.getPID(pid) != PERR_OK || !isOne(pid))
            throw std::runtime_error("no child");  // its id would mean others
        auto const begun = [&] {
            return factOf(pid, "comm") != factOf(getpid(), "comm") &&
                   !factOf(pid, "cmdline").empty();
        };
        EXPECT_TRUE(eventually(begun));
    }
    ~Child() {
        if (waitpid(pid, nullptr, WNOHANG) != 0) return;  // another may bear the id now
        end();
        (void)waitpid(pid, nullptr, 0);
    }

    void end() const { (void)(isOne(pid) && ::kill(pid, SIGKILL)); }

    static bool isOne(unsigned int id) { return static_cast<int>(id) > 0; }

    PProcess process;
    unsigned int pid = 0;
};

/// What a query gave, as text: characters beyond ASCII as numbers in <>, entries ended by |.
inline std::string shown(unsigned long long number) {
    return std::to_string(number);
}

inline std::string shown(PString const& text) {
    std::string ascii;
    for (unsigned long i = 0; i < text.len(); ++i) {
        auto const c = static_cast<unsigned char>(text.ptr()[i]);
        ascii += c > 0 && c < 128 ? std::string(1, static_cast<char>(c)) : "<" + shown(c) + ">";
    }
    return ascii;
}

template <typename Entry>
std::string shown(std::vector<Entry> const& entries) {
    std::string ascii;
    for (Entry const& entry : entries) ascii += shown(entry) + "|";
    return ascii;
}

using Answer = std::pair<int, std::string>;  ///< the code, and what the query gave
using Question = Answer (*)(unsigned int pid);

/// Asks for a fact of a process. What it gives held "kept", 7 or an empty entry before.
template <typename Out, int (*query)(unsigned int, Out&)>
Answer ask(unsigned int pid) {
    Out out{};
    if constexpr (std::is_arithmetic_v<Out>)
        out = static_cast<Out>(7);
    else if constexpr (std::is_same_v<Out, PString>)
        out = L"kept";
    else
        out.resize(1);
    int const code = query(pid, out);
    return {code, shown(out)};
}

constexpr Question askName = ask<PString, PProcess::getName>;
constexpr Question askPath = ask<PString, PProcess::getPath>;
constexpr Question askLine = ask<PString, PProcess::getCmdLine>;
constexpr Question askFolder = ask<PString, PProcess::getWorkingDir>;
constexpr Question askEnvironment = ask<std::vector<PString>, PProcess::getEnvironment>;
constexpr Question askNice = ask<int, PProcess::getPriority>;
constexpr Question askParent = ask<unsigned int, PProcess::getParentPID>;
constexpr Question askMemory = ask<unsigned long long, PProcess::getMemoryUsage>;
constexpr Question askRunning = ask<bool, PProcess::isRunning>;
constexpr Question askLoad = ask<unsigned int, PProcess::getCPUUsage>;
constexpr Question askProcessorLoad = ask<unsigned int, PProcess::getSpecCPUUsage>;
constexpr Question askChildren = ask<Ids, PProcess::getChildPID>;

// clang-format off
#define QUERY(name, Out, call) \
    constexpr Question name = ask<Out, []([[maybe_unused]] unsigned int pid, Out& out) { return call; }>
QUERY(askUser, PString, PProcess::getUserName(pid, out));
QUERY(askFree, unsigned long long, PProcess::getFreeMemory(out));
QUERY(askMachineLoad, unsigned int, PProcess::getCPUUsage(out));
QUERY(askFind, Ids, PProcess::find(PString(), out, out));
QUERY(askList, Ids, PProcess::listPIDs(*std::make_unique<Ids>(out)));

struct Fact {
    char const* name;
    Question ask;
    bool reaps;   ///< every ended child of the caller
    Answer gone;  ///< for an id that no process bears
    int starved;  ///< where no descriptor is left
    std::set<int> meanwhile = {};  ///< besides, of one that ends
};

inline Fact const FACTS[] = {
    {"getName", askName, true, {PERR_NOT_FOUND, ""}, PERR_NOT_FOUND},
    {"getPath", askPath, true, {PERR_NOT_FOUND, "kept"}, PERR_OK},
    {"getCmdLine", askLine, false, {PERR_NOT_FOUND, "kept"}, PERR_NOT_FOUND},
    {"getWorkingDir", askFolder, false, {PERR_NOT_FOUND, "kept"}, PERR_NOT_FOUND},
    {"getEnvironment", askEnvironment, false, {PERR_NOT_FOUND, ""}, PERR_NOT_FOUND},
    {"getPriority", askNice, false, {PERR_NOT_FOUND, "7"}, PERR_OK},
    {"getParentPID", askParent, false, {PERR_NOT_FOUND, "0"}, PERR_NOT_FOUND},
    {"getMemoryUsage", askMemory, false, {PERR_NO_PROCESS, "7"}, PERR_NO_PROCESS, {PERR_NOT_FOUND}},
    {"getUserName", askUser, false, {PERR_NOT_FOUND, "kept"}, PERR_NOT_FOUND},
    {"getCPUUsage", askLoad, false, {PERR_NO_SUCH_FILE, "0"}, PERR_OPEN, {PERR_READ, PERR_SYSTEM}},
    {"isRunning", askRunning, true, {PERR_OK, "0"}, PERR_OK},
    {"getChildPID", askChildren, true, {PERR_NOT_FOUND, ""}, PERR_NOT_FOUND},
    {"find", askFind, true, {PERR_NOT_FOUND, ""}, PERR_NOT_FOUND},
    {"listPIDs", askList, true, {PERR_OK, "0|"}, PERR_NOT_FOUND},
};
// clang-format on

#endif
