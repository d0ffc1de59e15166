#include <cstring>
#include <optional>

#include <faults/sweep.h>
#include <portinglayer/portinglayer.h>
#include <support/child_run.h>
#include <support/scratch.h>

namespace {

using Codes = std::set<int>;

void _sweep(
    char const* name, Codes const& codes, std::function<int()> const& operation,
    std::function<void()> const& before = [] {}, int most = 10'000) {
    sweep({.name = name, .codes = codes, .operation = operation, .before = before, .most = most});
}

}  // namespace

#define STEPS(...) [&] { return firstFailure({__VA_ARGS__}); }

TEST(FaultSweep, Text) {
    PString s, out, value, source;
    _sweep("PString", {PERR_NO_MEMORY},
           STEPS(s.set(L" a b ", 5), s.cat(L"abc", 3), s.insert(1, L"abc", 3), s.stripall(),
                 s.fill(L'x', 99), s.cat("abc", 3), s.set("x", 1)));
    _sweep("PUtils, getNextToken", {PERR_NO_MEMORY, PERR_TOKEN}, [&] {
        PString* list = nullptr;
        char program[] = "p", option[] = "a=1", *arguments[] = {program, option, nullptr};
        unsigned char* read = nullptr;
        unsigned long count = 0;
        int const code =
            firstFailure({PUtils::int32ToStr(-5, out), PUtils::uint64ToStr(7, out),
                          PUtils::strToBinary(L"0x00, 0xA0", read, count),
                          PUtils::binaryToStr(reinterpret_cast<unsigned char*>(option), 2, out),
                          PUtils::pformatString(out, L"%500d of %ls", 1, L"x"),
                          PUtils::getKeyValue(L"k = v", out, value, L'='),
                          PUtils::convertArgs(2, arguments, list, count, L'='),
                          source.set(L"a b", 3), PLiteral::getNextToken(source, out, L' ')});
        delete[] read;
        delete[] list;
        return code;
    });
    int const known = PUtils::getHostAddress(out);  // a failure where there is no network at all
    _sweep("PUtils::getHostAddress", {PERR_SYSTEM - known},
           STEPS(PUtils::getHostAddress(out) - known));
}

TEST(FaultSweep, Streams) {
    std::vector<PString> const list(3, PString(L"abc", 3));
    std::vector<PTargetInfo> records(2);
    for (PTargetInfo& record : records) record.targetId.name = L"n", record.targetId.id = 1;
    _sweep("PDataWriter, PDataReader", {PERR_NO_MEMORY, PERR_DATA_ENCODE, PERR_DATA_DECODE}, [&] {
        std::vector<unsigned char> data;
        std::vector<PString> strings;
        std::vector<PTargetInfo> found;
        PDataWriter out(data);
        int const written = firstFailure(
            {out.writeStrings(list), PDataFormaterUtils::writePTargetInfoArray(out, records)});
        PDataReader in(data);
        return firstFailure({written, in.readStrings(strings),
                             PDataFormaterUtils::readPTargetInfoArray(in, found)});
    });
    std::vector<unsigned char> full;
    full.reserve(3);
    auto const append = STEPS((PDataWriter(full).appendDword(0x01020304), PERR_OK));
    EXPECT_THROW(runFailing(1, true, append), std::bad_alloc);
    stopFailing();
    EXPECT_EQ(full, (std::vector<unsigned char>{1, 2, 3})) << "what found room stays";
}

TEST(FaultSweep, LocksThreadsAndTime) {
    std::wstring const name = wide(uniqueName());
    PMutex held, mutex, shared(name.c_str());
    PSemaphore semaphore, sharedSemaphore(name.c_str());
    PConditionalVar condition;
    PThread thread;
    int n = 0;
    void* result = nullptr;
    ASSERT_EQ(firstFailure({held.init(true), held.lock()}), PERR_OK);
    for (PMutex* const m : {&mutex, &shared})
        _sweep("PMutex", {PERR_MUTEX, PERR_MUTEX_LOCK, PERR_MUTEX_UNLOCK, PERR_MUTEX_CLOSE}, [=] {
            int const locked = firstFailure({m->init(true), m->lock()});
            int const unlocked = locked == PERR_OK ? m->unlock() : PERR_OK;  // only what is held
            return firstFailure({locked, unlocked, m->close()});
        });
    for (PSemaphore* const s : {&semaphore, &sharedSemaphore})
        _sweep("PSemaphore",
               {PERR_NO_MEMORY, PERR_SEMAPHORE, PERR_SEMAPHORE_POST, PERR_SEMAPHORE_WAIT,
                PERR_SEMAPHORE_VALUE, PERR_SEMAPHORE_CLOSE},
               STEPS(s->init(2, true), s->post(), s->wait(), s->wait(9U), s->trywait(),
                     s->getValue(n), s->close()));
    auto const wait = [&] { return condition.wait(&held, 1) - PERR_CONDITION_TIMEOUT; };
    _sweep("PConditionalVar",
           {PERR_CONDITION, PERR_CONDITION_NOTIFY, PERR_CONDITION_WAIT - PERR_CONDITION_TIMEOUT,
            PERR_CONDITION_CLOSE},
           STEPS(condition.init(), condition.notify(), condition.notifyAll(), wait(),
                 condition.close()));
    _sweep("PThread", {PERR_THREAD, PERR_THREAD_JOIN},
           STEPS(thread.pcreate([](void* p) { return p; }, nullptr), thread.pjoin(result)));
    EXPECT_EQ(held.unlock(), PERR_OK);
}

TEST(FaultSweep, Processes) {
    unsigned int const self = PProcess::getCurrentPID(), parent = getppid();
    Codes const codes{PERR_NOT_FOUND, PERR_NO_MEMORY, PERR_NO_PROCESS, PERR_IO,  PERR_SYSTEM,
                      PERR_OPEN,      PERR_READ,      PERR_SEEK,       PERR_KILL};
    unsigned long long memory = 0;
    unsigned int number = 0;
    int value = 0;
    std::vector<unsigned int> ids, parents;
    PString text, first;
    std::vector<PString> environment, added(1, PString(L"A=B", 3));
    std::optional<ChildRun> child;
    auto const forget = [&] {  // no room is kept either
        for (auto* const list : {&ids, &parents}) std::vector<unsigned int>().swap(*list);
        environment = std::vector<PString>();
    };
    _sweep("PProcess facts", codes,
           STEPS(PProcess::getName(self, text), PProcess::getPath(self, text),
                 PProcess::getWorkingDir(self, text), PProcess::getCmdLine(self, text),
                 PProcess::getPriority(self, value), PProcess::getFreeMemory(memory),
                 PProcess::getMemoryUsage(self, memory), PProcess::getParentPID(self, number),
                 PProcess::getUserName(self, text), PProcess::getCurrentEnvironment(environment),
                 PProcess::getCPUUsage(number), PProcess::getSpecCPUUsage(0, number)),
           forget);
    auto const run = [&] {
        PProcess process(L"/usr/bin/test", L"0", L"/", added);
        return firstFailure({process.start(), process.kill(), process.start(),
                             process.waitExitCode(value), value == 1});  // that of no argument
    };
    _sweep("PProcess::start, waitExitCode", codes, run, [] {
        while (waitpid(-1, nullptr, 0) > 0) continue;
    });
    // What walks over all processes is swept at its beginning only: more of the same follows.
    EXPECT_EQ(PProcess::getName(1, first), PERR_OK);
    auto const find = [&] {
        int const code = PProcess::find(first, ids, parents);
        return ids.size() == parents.size() ? code : -1;
    };
    auto const start = [&] { child.emplace(pause); };
    _sweep("PProcess::listPIDs", codes, STEPS(PProcess::listPIDs(ids)), forget, 100);
    _sweep("PProcess::find", codes, find, forget, 100);
    _sweep("PProcess::getChildPID", codes, STEPS(PProcess::getChildPID(parent, ids)), forget, 100);
    _sweep("PProcess::killTree", codes, STEPS(PProcess::killTree(child->pid)), start, 40);
}
