#include <cerrno>

#include <faults/sweep.h>
#include <portinglayer/portinglayer.h>
#include <support/scratch.h>

TEST(FaultSweep, Text) {
    sweep("PString", {PERR_NO_MEMORY}, [](Fault& fault) {
        PString s(L" a b ", 5);
        int const code = fault([&] {
            return first({s.cat(L"abc", 3), s.insert(1, L"abc", 3), s.stripall(), s.fill(L'x', 99),
                          s.cat("abc", 3), s.set(L"abc", 3), s.set("x", 1)});
        });
        EXPECT_EQ(s.len(), s.ptr() == nullptr ? 0 : wcslen(s.ptr()));
        EXPECT_EQ(s.set(L"abc", 3), PERR_OK);
        return code;
    });
    sweep("PLiteral::getNextToken", {PERR_TOKEN}, [] {
        PString source(L"a b", 3), token;
        return PLiteral::getNextToken(source, token, L' ');
    });
    sweep("PUtils", {PERR_NO_MEMORY}, [] {
        PString out, value, *list = nullptr;
        char program[] = "p", option[] = "a=1", *arguments[] = {program, option, nullptr};
        unsigned char const bytes[] = {1, 2};
        unsigned char* read = nullptr;
        unsigned long count = 0;
        int const code = first({PUtils::int32ToStr(-5, out), PUtils::uint64ToStr(7, out),
                                PUtils::binaryToStr(bytes, 2, out),
                                PUtils::strToBinary(L"0x00, 0xA0", read, count),
                                PUtils::pformatString(out, L"%500d of %ls", 1, L"x"),
                                PUtils::getKeyValue(L"k = v", out, value, L'='),
                                PUtils::convertArgs(2, arguments, list, count, L'=')});
        delete[] read;
        delete[] list;
        return code;
    });
}

TEST(FaultSweep, Streams) {
    std::vector<PString> const list(3, PString(L"abc", 3));
    std::vector<PTargetInfo> records(2);
    for (PTargetInfo& record : records) record.targetId.name = L"n", record.targetId.id = 1;
    auto const write = [&](std::vector<unsigned char>& data) {
        PDataWriter out(data);
        return first({out.writeStrings(list), out.writeString(list[0]),
                      PDataFormaterUtils::writePTargetInfoArray(out, records)});
    };
    sweep("PDataWriter", {PERR_NO_MEMORY, PERR_DATA_ENCODE}, [&] {
        std::vector<unsigned char> data;
        return write(data);
    });
    std::vector<unsigned char> data;
    ASSERT_EQ(write(data), PERR_OK);
    sweep("PDataReader", {PERR_NO_MEMORY, PERR_DATA_DECODE}, [&] {
        std::vector<PString> strings;
        PString string;
        std::vector<PTargetInfo> found;
        PDataReader in(data);
        return first({in.readStrings(strings), in.readString(string),
                      PDataFormaterUtils::readPTargetInfoArray(in, found)});
    });
}

TEST(FaultSweep, LocksAndThreads) {
    std::wstring const name = wide(uniqueName());
    Codes const mutexCodes{PERR_MUTEX, PERR_MUTEX_LOCK, PERR_MUTEX_UNLOCK, PERR_MUTEX_CLOSE};
    Codes const semaphoreCodes{PERR_NO_MEMORY,      PERR_SEMAPHORE,       PERR_SEMAPHORE_POST,
                               PERR_SEMAPHORE_WAIT, PERR_SEMAPHORE_VALUE, PERR_SEMAPHORE_CLOSE};
    Codes const conditionCodes{PERR_CONDITION, PERR_CONDITION_NOTIFY, PERR_CONDITION_WAIT,
                               PERR_CONDITION_CLOSE};
    PMutex held;
    ASSERT_EQ(first({held.init(true), held.lock()}), PERR_OK);
    auto const useMutex = [](PMutex& mutex) {
        int const locked = first({mutex.init(true), mutex.lock()});
        int const unlocked = locked == PERR_OK ? mutex.unlock() : PERR_OK;  // only what is held
        return first({locked, unlocked, mutex.close()});
    };
    auto const useSemaphore = [](PSemaphore& s) {
        int n = 0;
        return first({s.init(2, true), s.post(), s.wait(), s.wait(9U), s.trywait(), s.getValue(n),
                      s.close()});
    };
    auto const useCondition = [&](PConditionalVar& c) {
        int const begun = first({c.init(), c.notify(), c.notifyAll()}), waited = c.wait(&held, 1);
        return first({begun, waited == PERR_CONDITION_TIMEOUT ? PERR_OK : waited, c.close()});
    };
    auto const useThread = [](PThread& thread) {
        void* result = nullptr;
        return first({thread.pcreate([](void* p) { return p; }, nullptr), thread.pjoin(result)});
    };
    PLiteral const named(name.c_str());
    sweep("PMutex", mutexCodes, reused<PMutex>(useMutex));
    sweep("PMutex, named", mutexCodes, reused<PMutex>(useMutex, named));
    sweep("PSemaphore", semaphoreCodes, reused<PSemaphore>(useSemaphore));
    sweep("PSemaphore, named", semaphoreCodes, reused<PSemaphore>(useSemaphore, named));
    sweep("PConditionalVar", conditionCodes, reused<PConditionalVar>(useCondition));
    sweep("PThread", {PERR_THREAD, PERR_THREAD_JOIN}, reused<PThread>(useThread));
    EXPECT_EQ(held.unlock(), PERR_OK);
}

TEST(FaultSweep, Files) {
    Scratch const scratch;
    std::wstring const name = scratch.wpath("file"), dir = scratch.wpath("dir"),
                       folder = scratch.wpath(""),
                       lines = wide(scratch.write("lines", std::string(300, 'a') + "\nb\n"));
    Codes const fileCodes{PERR_OPEN, PERR_LOCKED, PERR_NO_MEMORY, PERR_WRITE,
                          PERR_READ, PERR_SEEK,   PERR_STAT,      PERR_SYSTEM};
    for (unsigned int const flags : {27U, 32U}) {
        auto const use = [&](PFile& file) {
            long long size = 0;
            PString copy;
            return first({file.popen(name.c_str(), flags, 0), file.pwriteLine(L"text"),
                          file.pflush(), file.pseek(0, 0), file.pgetSize(size), file.pgetName(copy),
                          file.isOpen() ? file.pclose() : PERR_OK});
        };
        sweep(flags == 32 ? "PFile, safe write" : "PFile", fileCodes, reused<PFile>(use));
    }
    sweep("PFile::preadLine", fileCodes, [&] {
        PFile file;
        PString line;
        return first({file.popen(lines.c_str(), PFile::OPEN_READ, 1), file.preadLine(line)});
    });
    sweep(
        "PFile::removeAll",
        {PERR_DELETE, PERR_DIR_NOT_FOUND, PERR_INVALID_ARGUMENT, PERR_NO_MEMORY, PERR_NO_SUCH_FILE},
        [&](Fault& fault) {
            errno = 0;
            EXPECT_EQ(PDir::pcreate(dir.c_str()), PERR_OK);
            scratch.write("dir/a", "x");
            int const code = fault([&] { return PFile::removeAll(dir.c_str()); });
            EXPECT_TRUE(!PFile::exists(dir.c_str()) || PFile::removeAll(dir.c_str()) == PERR_OK);
            return code;
        });
    sweep("PDir", {PERR_DIR_NOT_OPEN, PERR_READ, PERR_CONVERSION, PERR_NO_MEMORY}, [&] {
        PDir listing;
        return first(
            {listing.popen(folder.c_str(), L"*"), listing.preaddir(), ++listing, listing.pclose()});
    });
    sweep("PTempFile", {PERR_OPEN, PERR_LOCKED, PERR_NO_MEMORY}, [&](Fault& fault) {
        Scratch const own;
        std::wstring const prefix = own.wpath("file");
        PTempFile file;
        return fault([&] { return file.popen(prefix.c_str(), 18, 0); });
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
    std::wstring const child = wide(TEST_CHILD);
    Codes const codes{PERR_NOT_FOUND, PERR_NO_MEMORY, PERR_NO_PROCESS, PERR_IO,
                      PERR_SYSTEM,    PERR_OPEN,      PERR_READ,       PERR_SEEK};
    unsigned long long memory = 0;
    unsigned int number = 0;
    int priority = 0;
    sweep("PProcess facts", codes, [&] {
        PString text;
        return first({PProcess::getName(self, text), PProcess::getPath(self, text),
                      PProcess::getWorkingDir(self, text), PProcess::getCmdLine(self, text),
                      PProcess::getPriority(self, priority), PProcess::getFreeMemory(memory),
                      PProcess::getMemoryUsage(self, memory), PProcess::getParentPID(self, number),
                      PProcess::getUserName(self, text)});
    });
    sweep("PProcess processor load", codes, [&](Fault& fault) {
        return fault([&] {
            return first({PProcess::getCPUUsage(number), PProcess::getSpecCPUUsage(0, number)});
        });
    });
    sweep("PProcess::start, waitExitCode", codes, [&](Fault& fault) {
        std::vector<PString> const environment(1, PString(L"A=B", 3));
        return fault([&] {
            PProcess process(child.c_str(), L"exit 0", L"/", environment);
            int const code = process.start();
            return code == PERR_OK ? process.waitExitCode(priority) : code;
        });
    });
}

// What walks over all processes is swept over a few calls only: what follows is more of the same.
TEST(FaultSweep, ProcessLists) {
    std::vector<unsigned int> ids, parents;
    PString const name(L"fault_sweep", 11);
    auto const list = [&] {
        return first({PProcess::listPIDs(ids), PProcess::find(name, ids, parents)});
    };
    for (int n = 1; n <= 40; ++n) {
        Fault fault{n, n % 2 == 0};
        EXPECT_TRUE((Codes{PERR_OK, PERR_NOT_FOUND, PERR_NO_MEMORY}).contains(fault(list))) << n;
        EXPECT_TRUE(fault.fired);
    }
    EXPECT_EQ(list(), PERR_OK);
    EXPECT_EQ(ids, std::vector<unsigned int>{PProcess::getCurrentPID()});
}
