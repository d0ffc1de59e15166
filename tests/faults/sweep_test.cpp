#include <cerrno>
#include <filesystem>
#include <optional>

#include <faults/sweep.h>
#include <portinglayer/portinglayer.h>
#include <support/child_run.h>
#include <support/scratch.h>
#include <sys/wait.h>
#include <unistd.h>

TEST(FaultSweep, Text) {
    sweep("PString", {PERR_NO_MEMORY}, [] {
        PString s(L" a b ", 5);
        return first({s.cat(L"abc", 3), s.insert(1, L"abc", 3), s.stripall(), s.fill(L'x', 99),
                      s.cat("abc", 3), s.set(L"abc", 3), s.set("x", 1)});
    });
    sweep("PUtils, getNextToken", {PERR_NO_MEMORY, PERR_TOKEN}, [] {
        PString out, value, source(L"a b", 3), *list = nullptr;
        char program[] = "p", option[] = "a=1", *arguments[] = {program, option, nullptr};
        unsigned char const bytes[] = {1, 2};
        unsigned char* read = nullptr;
        unsigned long count = 0;
        int const code = first({PUtils::int32ToStr(-5, out), PUtils::uint64ToStr(7, out),
                                PUtils::binaryToStr(bytes, 2, out),
                                PUtils::strToBinary(L"0x00, 0xA0", read, count),
                                PUtils::pformatString(out, L"%500d of %ls", 1, L"x"),
                                PUtils::getKeyValue(L"k = v", out, value, L'='),
                                PUtils::convertArgs(2, arguments, list, count, L'='),
                                PLiteral::getNextToken(source, out, L' ')});
        delete[] read;
        delete[] list;
        return code;
    });
    PString address;
    int const known = PUtils::getHostAddress(address);  // not where there is no network at all
    sweep("PUtils::getHostAddress", {PERR_SYSTEM}, [&] {
        int const code = PUtils::getHostAddress(address);
        return code == known ? PERR_OK : code;
    });
}

TEST(FaultSweep, Streams) {
    std::vector<PString> const list(3, PString(L"abc", 3));
    std::vector<PTargetInfo> records(2);
    for (PTargetInfo& record : records) record.targetId.name = L"n", record.targetId.id = 1;
    sweep("streams", {PERR_NO_MEMORY, PERR_DATA_ENCODE, PERR_DATA_DECODE}, [&] {
        std::vector<unsigned char> data;
        std::vector<PString> strings;
        std::vector<PTargetInfo> found;
        PString string;
        PDataWriter out(data);
        int const written = first({out.writeStrings(list), out.writeString(list[0]),
                                   PDataFormaterUtils::writePTargetInfoArray(out, records)});
        PDataReader in(data);
        return first({written, in.readStrings(strings), in.readString(string),
                      PDataFormaterUtils::readPTargetInfoArray(in, found)});
    });
}

TEST(FaultSweep, LocksThreadsAndTime) {
    std::wstring const name = wide(uniqueName());
    PMutex held, mutex, shared(name.c_str());
    PSemaphore semaphore, sharedSemaphore(name.c_str());
    PConditionalVar condition;
    PThread thread;
    ASSERT_EQ(first({held.init(true), held.lock()}), PERR_OK);
    for (PMutex* const m : {&mutex, &shared})
        sweep("PMutex", {PERR_MUTEX, PERR_MUTEX_LOCK, PERR_MUTEX_UNLOCK, PERR_MUTEX_CLOSE}, [=] {
            int const locked = first({m->init(true), m->lock()});
            int const unlocked = locked == PERR_OK ? m->unlock() : PERR_OK;  // only what is held
            return first({locked, unlocked, m->close()});
        });
    Codes const codes{PERR_NO_MEMORY,      PERR_SEMAPHORE,        PERR_SEMAPHORE_POST,
                      PERR_SEMAPHORE_WAIT, PERR_SEMAPHORE_VALUE,  PERR_SEMAPHORE_CLOSE,
                      PERR_CONDITION,      PERR_CONDITION_NOTIFY, PERR_CONDITION_WAIT,
                      PERR_CONDITION_CLOSE};
    for (PSemaphore* const s : {&semaphore, &sharedSemaphore})
        sweep("PSemaphore", codes, [=] {
            int n = 0;
            return first({s->init(2, true), s->post(), s->wait(), s->wait(9U), s->trywait(),
                          s->getValue(n), s->close()});
        });
    sweep("PConditionalVar", codes, [&] {
        int const begun = first({condition.init(), condition.notify(), condition.notifyAll()});
        int const waited = condition.wait(&held, 1);
        return first(
            {begun, waited == PERR_CONDITION_TIMEOUT ? PERR_OK : waited, condition.close()});
    });
    sweep("PThread", {PERR_THREAD, PERR_THREAD_JOIN}, [&] {
        void* result = nullptr;
        return first({thread.pcreate([](void* p) { return p; }, nullptr), thread.pjoin(result)});
    });
    sweep("PThread::psleep", {-1}, [] { return PThread::psleep(1); });
    sweep("PTime::getTickCount", {}, [] { return static_cast<int>(PTime::getTickCount() <= 0); });
    EXPECT_EQ(held.unlock(), PERR_OK);
}

TEST(FaultSweep, Files) {
    Scratch const scratch;
    std::wstring const folder = scratch.wpath("dir"), a = folder + L"/a", b = folder + L"/b";
    PLiteral const dir(folder.c_str()), name(a.c_str()), other(b.c_str());
    Codes const reading{PERR_OPEN, PERR_NO_MEMORY, PERR_READ},
        dirCodes{PERR_DIR_CREATE, PERR_DIR_DELETE};
    Codes const writing{PERR_OPEN, PERR_LOCKED, PERR_NO_MEMORY, PERR_WRITE,
                        PERR_SEEK, PERR_STAT,   PERR_SYSTEM};
    Codes const removing{PERR_DELETE, PERR_DIR_NOT_FOUND, PERR_INVALID_ARGUMENT, PERR_NO_MEMORY,
                         PERR_NO_SUCH_FILE};
    auto const fresh = [&] {
        std::filesystem::remove_all(scratch.path("dir"));
        std::filesystem::create_directory(scratch.path("dir"));
        scratch.write("dir/a", std::string(300, 'a') + "\nb\n");
        errno = 0;
    };
    PFile file;
    long long size = 0;
    PString text;
    for (unsigned int const flags : {27U, 32U}) {
        auto const use = [&] {
            return first({file.popen(name, flags, 0), file.pwriteLine(L"text"), file.pflush(),
                          file.pseek(0, 0), file.pgetSize(size), file.pgetName(text),
                          file.isOpen() ? file.pclose() : PERR_OK});
        };
        sweep(flags == 32 ? "PFile, safe write" : "PFile", writing, use, fresh);
    }
    auto const read = [&] {
        PFile reader;
        return first({reader.popen(name, PFile::OPEN_READ, 1), reader.preadLine(text)});
    };
    sweep("PFile::preadLine", reading, read, fresh);
    auto const move = [&] {
        return first({PFile::exists(name) ? PERR_OK : PERR_NO_SUCH_FILE, PFile::rename(name, other),
                      PFile::pdelete(other)});
    };
    sweep("PFile::exists, rename, pdelete", {PERR_NO_SUCH_FILE, PERR_IO, PERR_DELETE}, move, fresh);
    sweep(
        "PFile::removeAll", removing, [&] { return PFile::removeAll(dir); }, fresh);
    auto const create = [&] { return first({PDir::pcreate(other), PDir::pdelete(other)}); };
    sweep("PDir::pcreate, pdelete", dirCodes, create, fresh);
    sweep(
        "PTempFile", writing, [&] { return PTempFile().popen(name, 18, 0); }, fresh);
    sweep("PDir", {PERR_NO_MEMORY, PERR_DIR_NOT_OPEN, PERR_READ, PERR_CONVERSION}, [&] {
        PDir listing(dir, L"*");
        return first({listing.getResult(), listing.preaddir(), ++listing, listing.pclose()});
    });
    sweep("PLibrary::load", {PERR_LIBRARY_LOAD, PERR_NO_MEMORY}, [] {
        PLibrary* library = nullptr;
        int const code = PLibrary::load(L"libm.so.6", library, true);
        if (code == PERR_OK) delete library;
        return code;
    });
}

TEST(FaultSweep, Processes) {
    unsigned int const self = PProcess::getCurrentPID();
    Codes const codes{PERR_NOT_FOUND, PERR_NO_MEMORY, PERR_NO_PROCESS, PERR_IO,  PERR_SYSTEM,
                      PERR_OPEN,      PERR_READ,      PERR_SEEK,       PERR_KILL};
    unsigned long long memory = 0;
    unsigned int number = 0;
    int value = 0;
    std::vector<unsigned int> ids, parents;
    PString const name(L"fault_sweep", 11);
    std::vector<PString> const environment(1, PString(L"A=B", 3));
    std::optional<ChildRun> child;
    sweep("PProcess facts", codes, [&] {
        PString text;
        return first({PProcess::getName(self, text), PProcess::getPath(self, text),
                      PProcess::getWorkingDir(self, text), PProcess::getCmdLine(self, text),
                      PProcess::getPriority(self, value), PProcess::getFreeMemory(memory),
                      PProcess::getMemoryUsage(self, memory), PProcess::getParentPID(self, number),
                      PProcess::getUserName(self, text)});
    });
    sweep("PProcess processor load", codes, [&] {
        return first({PProcess::getCPUUsage(number), PProcess::getSpecCPUUsage(0, number)});
    });
    auto const run = [&] {
        PProcess process(L"/bin/true", L"0", L"/", environment);
        return first({process.start(), process.waitExitCode(value)});
    };
    auto const reap = [] {
        while (waitpid(-1, nullptr, 0) > 0) continue;
    };
    sweep("PProcess::start, waitExitCode", codes, run, reap);
    // What walks over all processes is swept at its beginning only: more of the same follows.
    auto const list = [&] {
        return first({PProcess::listPIDs(ids), PProcess::find(name, ids, parents)});
    };
    sweep(
        "PProcess::listPIDs, find", codes, list, [] {}, 40);
    auto const end = [&] { return PProcess::killTree(static_cast<unsigned int>(child->pid)); };
    sweep(
        "PProcess::killTree", codes, end, [&] { child.emplace(pause); }, 40);
}
