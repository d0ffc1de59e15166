/// Children of a test, which are real programs, and the facts that are asked of any process.
#ifndef TESTS_PROCESS_CHILDREN_H
#define TESTS_PROCESS_CHILDREN_H

#include <algorithm>
#include <map>

#include <portinglayer/processes.h>
#include <support/child_run.h>
#include <support/scratch.h>

using Number = unsigned int;
using Bytes = unsigned long long;
using Ids = std::vector<Number>;
using Texts = std::vector<PString>;

inline PString owned(std::string const& ascii) {
    return PString(ascii.c_str(), P_WHOLE_STRING);
}

/// A shell's arguments: behind tabs, since spaces would take the command apart.
inline std::string shell(std::string command) {
    std::replace(command.begin(), command.end(), ' ', '\t');
    return "-c " + command;
}

/// For gtest: as UTF-8.
inline void PrintTo(PString const& text, std::ostream* out) {
    *out << std::filesystem::path(std::u32string(text.ptr(), text.ptr() + text.len())).string();
}

using Answer = std::pair<int, std::string>;  ///< the code, and what the query gave as gtest has it

/// Asks for a fact of a process. What it gives held what stands here before.
template <typename Out, int (*query)(unsigned int, Out&)>
Answer ask(unsigned int pid) {
    std::tuple outs(owned("kept"), 7, 7U, 7ULL, true, Ids(1), Texts(1));
    int const code = query(pid, std::get<Out>(outs));
    return {code, testing::PrintToString(std::get<Out>(outs))};
}

/// The queries of a process, and the others in the same form.
struct Queries : PProcess {
    static int getUser(Number pid, PString& out) { return getUserName(pid, out); }
    static int getFree(Number, Bytes& out) { return getFreeMemory(out); }
    static int getLoad(Number, Number& out) { return getCPUUsage(out); }
    static int findAll(Number, Ids& out) { return find(PString(), out, out); }
    static int listAll(Number, Ids& out) { return listPIDs(*std::make_unique<Ids>(out)); }
};

struct Fact {
    Answer (*ask)(unsigned int pid);
    bool reaps;        ///< every ended child of the caller
    int starved;       ///< where no descriptor is left
    Answer gone = {};  ///< for an id that no process bears; none for what the machine is asked
    std::set<int> meanwhile = {};  ///< besides, of one that ends
};

// clang-format off
#define FACT(query, Out, ...) {#query, {ask<Out, Queries::query>, __VA_ARGS__}}
inline std::map<std::string, Fact> const FACTS = {
    FACT(getName, PString, true, PERR_NOT_FOUND, {PERR_NOT_FOUND, ""}),
    FACT(getPath, PString, true, PERR_OK, {PERR_NOT_FOUND, "kept"}),
    FACT(getCmdLine, PString, false, PERR_NOT_FOUND, {PERR_NOT_FOUND, "kept"}),
    FACT(getWorkingDir, PString, false, PERR_NOT_FOUND, {PERR_NOT_FOUND, "kept"}),
    FACT(getEnvironment, Texts, false, PERR_NOT_FOUND, {PERR_NOT_FOUND, "{}"}),
    FACT(getPriority, int, false, PERR_OK, {PERR_NOT_FOUND, "7"}),
    FACT(getParentPID, Number, false, PERR_NOT_FOUND, {PERR_NOT_FOUND, "0"}),
    FACT(getMemoryUsage, Bytes, false, PERR_NO_PROCESS, {PERR_NO_PROCESS, "7"}, {PERR_NOT_FOUND}),
    FACT(getUser, PString, false, PERR_NOT_FOUND, {PERR_NOT_FOUND, "kept"}),
    FACT(getCPUUsage, Number, false, PERR_OPEN, {PERR_NO_SUCH_FILE, "0"}, {PERR_READ, PERR_SYSTEM}),
    FACT(isRunning, bool, true, PERR_OK, {PERR_OK, "false"}),
    FACT(getChildPID, Ids, true, PERR_NOT_FOUND, {PERR_NOT_FOUND, "{}"}),
    FACT(findAll, Ids, true, PERR_NOT_FOUND, {PERR_NOT_FOUND, "{}"}),
    FACT(listAll, Ids, true, PERR_NOT_FOUND, {PERR_OK, "{ 0 }"}),
    FACT(getFree, Bytes, false, PERR_IO),
    FACT(getLoad, Number, false, PERR_IO),
    FACT(getSpecCPUUsage, Number, false, PERR_OPEN),
};
// clang-format on

inline Answer ask(char const* fact, unsigned int pid) {
    return FACTS.at(fact).ask(pid);
}

struct Child {
    explicit Child(std::string const& arguments = "60", std::string const& program = "/bin/sleep")
        : process(owned(program), owned(arguments)) {
        if (process.start() != PERR_OK || process.getPID(pid) != PERR_OK || !isOne(pid))
            throw std::runtime_error("no child");  // its id would mean others
        std::string const ours = ask("getCmdLine", getpid()).second;
        EXPECT_TRUE(eventually([&] {
            std::string const line = ask("getCmdLine", pid).second;
            return line != ours && !line.empty();  // it runs its program
        }));
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

#endif
