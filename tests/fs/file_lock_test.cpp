#include <chrono>
#include <csignal>
#include <memory>
#include <thread>

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <portinglayer/file_locks.h>
#include <portinglayer/files.h>
#include <portinglayer/processes.h>
#include <support/child_run.h>
#include <support/expect.h>
#include <support/scratch.h>

namespace fs = std::filesystem;
using std::chrono::milliseconds;
using std::chrono::steady_clock;

namespace {

constexpr unsigned int FOREVER = 4294967295U;

milliseconds _since(steady_clock::time_point start) {
    return std::chrono::duration_cast<milliseconds>(steady_clock::now() - start);
}

milliseconds _processorTime() {
    rusage used = {};
    (void)getrusage(RUSAGE_THREAD, &used);
    return milliseconds((used.ru_utime.tv_sec + used.ru_stime.tv_sec) * 1000 +
                        (used.ru_utime.tv_usec + used.ru_stime.tv_usec) / 1000);
}

/// A child that holds the lock, and may have a child of its own, until both are killed.
class Holder {
public:
    explicit Holder(
        std::wstring const& name, pid_t (*start)() = [] { return pid_t(0); }) {
        (void)prctl(PR_SET_CHILD_SUBREAPER, 1);  // what it leaves behind becomes a child of ours
        Scratch scratch;
        child = std::make_unique<ChildRun>([&] {
            PFileLock lock;
            if (lock.lock(name.c_str(), 0) == PERR_OK)
                fs::rename(scratch.write("made", std::to_string(start())), scratch.path("id"));
            return pause();
        });
        EXPECT_TRUE(eventually([&] { return fs::exists(scratch.path("id")); }));
        grandchild = std::atoi(scratch.read("id").c_str());
    }
    ~Holder() {
        end();
        (void)prctl(PR_SET_CHILD_SUBREAPER, 0);
        if (grandchild <= 0) return;
        EXPECT_EQ(0, kill(grandchild, SIGKILL));
        EXPECT_EQ(grandchild, waitpid(grandchild, nullptr, 0));
    }
    void end() { child.reset(); }

private:
    std::unique_ptr<ChildRun> child;
    pid_t grandchild = 0;
};

}  // namespace

TEST(FileLock, IsHeldByOneObjectAtATime) {
    Scratch scratch;
    std::wstring const name = scratch.wpath("f");
    PFileLock first, second;
    EXPECT_CODE(PERR_OK, first.lock(name.c_str(), 0));
    EXPECT_CODE(PERR_LOCKED, second.lock(name.c_str(), 0));
    EXPECT_CODE(PERR_ALREADY_OPEN, first.lock(scratch.wpath("other").c_str(), 0));
    EXPECT_CODE(PERR_NOT_OPEN, second.unlock());
    EXPECT_CODE(PERR_OK, first.unlock());
    EXPECT_CODE(PERR_NOT_OPEN, first.unlock());
    EXPECT_CODE(PERR_OK, PFileLock().lock(name.c_str(), FOREVER)) << "the destructor unlocks";
    EXPECT_CODE(PERR_OK, second.lock(name.c_str(), 0));
    EXPECT_EQ(1, std::distance(fs::directory_iterator(scratch.dir()), {}));
}

TEST(FileLock, ExcludesAFileThatIsOpenedWithTheLock) {
    Scratch scratch;
    std::wstring const name = wide(scratch.write("f", "content"));
    PFileLock lock;
    PFile file;
    EXPECT_CODE(PERR_OK, lock.lock(name.c_str(), 0));
    EXPECT_CODE(PERR_LOCKED, file.popen(name.c_str(), PFile::OPEN_READ, 0));
    EXPECT_CODE(PERR_OK, file.pclose());
    EXPECT_CODE(PERR_OK, lock.unlock());
    EXPECT_CODE(PERR_OK, file.popen(name.c_str(), PFile::OPEN_READ, 0));
    EXPECT_CODE(PERR_LOCKED, lock.lock(name.c_str(), 0));
    EXPECT_EQ("content", scratch.read("f"));
}

TEST(FileLock, IsTakenOnRegularFilesAndMakesThem) {
    Scratch scratch;
    (void)scratch.write("file", "");
    fs::create_directory(scratch.path("folder"));
    fs::create_symlink("ring", scratch.path("ring"));
    fs::create_symlink("not there", scratch.path("dangling"));
    ASSERT_EQ(0, mkfifo(scratch.path("pipe").c_str(), 0600));
    struct {
        char const* what;
        std::wstring name;
        int code;
    } const rows[] = {
        {"no name", L"", PERR_INVALID_ARGUMENT},
        {"a zero character", scratch.wpath("a") + L'\0', PERR_INVALID_ARGUMENT},
        {"a surrogate", scratch.wpath("a") + wchar_t(0xD800), PERR_BAD_FORMAT},
        {"no such folder", scratch.wpath("none/file"), PERR_NO_SUCH_FILE},
        {"a file for a folder", scratch.wpath("file/file"), PERR_NO_SUCH_FILE},
        {"a folder", scratch.wpath("folder"), PERR_REFUSED},
        {"a ring of links", scratch.wpath("ring"), PERR_REFUSED},
        {"a pipe", scratch.wpath("pipe"), PERR_REFUSED},
        {"too long a name", scratch.wpath(std::string(256, 'n')), PERR_SYSTEM},
        {"a dangling link", scratch.wpath("dangling"), PERR_OK},
        {"more than ASCII", scratch.wpath(" \\") + L"\xE9 ", PERR_OK},
    };
    mode_t const before = umask(027);
    for (auto const& row : rows) {
        SCOPED_TRACE(row.what);
        PFileLock lock;
        EXPECT_CODE(row.code, lock.lock(PString(row.name.data(), row.name.size()), 0));
        EXPECT_CODE(row.code == PERR_OK ? PERR_OK : PERR_NOT_OPEN, lock.unlock());
    }
    EXPECT_EQ(027U, umask(before));
    EXPECT_EQ(fs::perms(0640), fs::status(scratch.path(" \\\xC3\xA9 ")).permissions());
    EXPECT_TRUE(fs::exists(scratch.path("not there")));
}

TEST(FileLock, WaitsAsLongAsItIsTold) {
    Scratch scratch;
    std::wstring const name = scratch.wpath("f");
    PFileLock held, lock;
    ASSERT_CODE(PERR_OK, held.lock(name.c_str(), 0));
    auto const start = steady_clock::now();
    EXPECT_CODE(PERR_LOCKED, interrupted([&] { return lock.lock(name.c_str(), 300); }));
    EXPECT_GE(_since(start), milliseconds(300));
    EXPECT_CODE(PERR_LOCKED, lock.lock(name.c_str(), 0));
}

TEST(FileLock, IsTakenSoonAfterItComesFreeAtNextToNoProcessorTime) {
    Scratch scratch;
    std::wstring const name = scratch.wpath("f");
    auto soonest = milliseconds::max();
    auto const used = _processorTime();
    for (int round = 0; round < 5; ++round) {
        PFileLock held, lock;
        ASSERT_CODE(PERR_OK, held.lock(name.c_str(), 0));
        steady_clock::time_point released;
        std::thread releasing([&] {
            std::this_thread::sleep_for(milliseconds(203));
            released = steady_clock::now();
            EXPECT_CODE(PERR_OK, held.unlock());
        });
        EXPECT_CODE(PERR_OK, lock.lock(name.c_str(), FOREVER));
        auto const taken = steady_clock::now();
        releasing.join();
        soonest = std::min(soonest, std::chrono::duration_cast<milliseconds>(taken - released));
    }
    EXPECT_LE(soonest, milliseconds(20)) << "in the quietest round";
    EXPECT_LE(_processorTime() - used, milliseconds(50)) << "of a second";
}

TEST(FileLock, EndsWithItsHolderWhateverChildrenThatHas) {
    struct {
        char const* what;
        pid_t (*start)();
    } const rows[] = {
        {"none", [] { return pid_t(0); }},
        {"a forked one",
         [] { return std::make_unique<ChildRun>([] { return pause(); }).release()->pid; }},
        {"a started one",
         [] {
             unsigned int id = 0;
             return PProcess::start(L"sleep", L"60", id) == PERR_OK ? static_cast<pid_t>(id) : -1;
         }},
    };
    for (auto const& row : rows) {
        SCOPED_TRACE(row.what);
        Scratch scratch;
        Holder holder(scratch.wpath("f"), row.start);
        EXPECT_CODE(PERR_LOCKED, PFileLock().lock(scratch.wpath("f").c_str(), 0));
        holder.end();
        EXPECT_CODE(PERR_OK, PFileLock().lock(scratch.wpath("f").c_str(), 0));
    }
}

TEST(FileLock, IsNotHeldByAForkedChild) {
    Scratch scratch;
    std::wstring const name = scratch.wpath("f");
    PFileLock lock;
    ASSERT_CODE(PERR_OK, lock.lock(name.c_str(), 0));
    ChildRun child([&] {
        EXPECT_CODE(PERR_NOT_OPEN, lock.unlock());
        EXPECT_CODE(PERR_LOCKED, lock.lock(name.c_str(), 0));
        lock.~PFileLock();
        return testing::Test::HasFailure() ? 1 : 0;
    });
    EXPECT_EQ(0, child.wait());
    EXPECT_CODE(PERR_LOCKED, PFileLock().lock(name.c_str(), 0));
    EXPECT_CODE(PERR_OK, lock.unlock());
}

TEST(FileLock, IsNotTakenForAStandardStreamThatIsClosed) {
    Scratch scratch;
    ChildRun closed([&] {
        for (int const stream : {0, 1, 2}) (void)close(stream);
        PFileLock lock;
        if (lock.lock(scratch.wpath("f").c_str(), 0) != PERR_OK) return 1;
        for (int const stream : {0, 1, 2})
            if (fcntl(stream, F_GETFD) != -1) return 2;
        return PFileLock().lock(scratch.wpath("f").c_str(), 0) == PERR_LOCKED ? 0 : 3;
    });
    EXPECT_EQ(0, closed.wait());
}

TEST(FileLock, IsThatOfTheFileThatStandsUnderTheNameNow) {
    Scratch scratch;
    std::wstring const name = scratch.wpath("f");
    for (bool const replaced : {false, true}) {
        PFileLock old, now, waiting;
        ASSERT_CODE(PERR_OK, old.lock(name.c_str(), 0));
        std::thread changing([&] {
            std::this_thread::sleep_for(milliseconds(50));
            if (replaced) fs::rename(scratch.write("new", ""), scratch.path("f"));
            if (!replaced) fs::remove(scratch.path("f"));
        });
        EXPECT_CODE(PERR_OK, waiting.lock(name.c_str(), 20'000));
        changing.join();
        EXPECT_CODE(PERR_LOCKED, now.lock(name.c_str(), 0));
        EXPECT_CODE(PERR_OK, waiting.unlock());
        EXPECT_CODE(PERR_OK, now.lock(name.c_str(), 0));
    }
}
