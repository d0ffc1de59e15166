#include <ctime>
#include <utility>

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/stat.h>

#include <faults/interpose.h>
#include <fs/files.h>
#include <portinglayer/file_locks.h>

namespace fs = std::filesystem;
using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr unsigned int FOREVER = 4294967295U;

static std::function<void()> beforeLocking;  // happens once, when the file is open

static std::function<void()> insteadOfMaking;  // a file: happens once, and it is refused

INTERPOSE(flock, if (beforeLocking) std::exchange(beforeLocking, nullptr)())
INTERPOSE(
    open, if (insteadOfMaking && (b & O_CREAT) != 0) {
        std::exchange(insteadOfMaking, nullptr)();
        errno = EACCES;
        return -1;
    })

class FileLock : public InAFolder {
protected:
    PString const name = named(scratch.path("f"));
    PFileLock lock, other;
};

TEST_F(FileLock, IsHeldByOneObjectAtATime) {
    EXPECT_CODE(PERR_OK, lock.lock(name, 0));
    EXPECT_CODE(PERR_LOCKED, other.lock(name, 0));
    EXPECT_CODE(PERR_ALREADY_OPEN, lock.lock(L"/tmp", 0));
    EXPECT_CODE(PERR_OK, lock.unlock());
    EXPECT_CODE(PERR_NOT_OPEN, lock.unlock());
    EXPECT_CODE(PERR_OK, PFileLock().lock(name, FOREVER)) << "the destructor unlocks";
    EXPECT_CODE(PERR_OK, other.lock(name, 0));
}

TEST_F(FileLock, ExcludesAFileThatIsOpenedWithTheLock) {
    scratch.write("f", "content");
    EXPECT_CODE(PERR_OK, file.popen(name, READ, PFile::EXCLUSIVE));
    EXPECT_CODE(PERR_LOCKED, lock.lock(name, 0));
    EXPECT_CODE(PERR_OK, file.pclose());
    EXPECT_CODE(PERR_OK, lock.lock(name, 0));
    EXPECT_CODE(PERR_LOCKED, file.popen(name, READ, PFile::EXCLUSIVE));
    EXPECT_EQ("content", scratch.read("f"));
}

TEST_F(FileLock, IsTakenOnRegularFilesAndMakesThem) {
    ASSERT_EQ(0, mkfifo(scratch.path("pipe").c_str(), 0600));
    EXPECT_CODE(PERR_INVALID_ARGUMENT, lock.lock(L"", 0));
    EXPECT_CODE(PERR_BAD_FORMAT, lock.lock(L"\xD800", 0));
    EXPECT_CODE(PERR_NO_SUCH_FILE, lock.lock(named(scratch.path("none/file")), 0));
    EXPECT_CODE(PERR_NO_SUCH_FILE, lock.lock(L"/etc/passwd/file", 0));
    EXPECT_CODE(PERR_REFUSED, lock.lock(named(scratch.dir()), 0)) << "a folder";
    EXPECT_CODE(PERR_REFUSED, lock.lock(named(scratch.path("pipe")), 0));
    EXPECT_CODE(PERR_SYSTEM, lock.lock(named(scratch.path(std::string(256, 'n'))), 0));

    mode_t const before = umask(027);
    EXPECT_CODE(PERR_OK, lock.lock((scratch.wpath(" \\") + L"\xE9 ").c_str(), 0));
    EXPECT_EQ(027U, umask(before));
    EXPECT_EQ("640", modeOf(scratch.path(" \\\xC3\xA9 ")));
}

TEST_F(FileLock, WaitsAsLongAsItIsTold) {
    ASSERT_CODE(PERR_OK, other.lock(name, 0));
    auto const start = steady_clock::now();
    EXPECT_CODE(PERR_LOCKED, interrupted([&] { return lock.lock(name, 300); }));
    EXPECT_GE(steady_clock::now() - start, milliseconds(300));
}

TEST_F(FileLock, IsTakenSoonAfterItComesFreeAtNextToNoProcessorTime) {
    auto soonest = steady_clock::duration::max();
    std::clock_t const used = std::clock();
    for (int round = 0; round < 5; ++round) {
        ASSERT_CODE(PERR_OK, other.lock(name, 0));
        auto const start = steady_clock::now();
        std::thread releasing([&] {
            std::this_thread::sleep_for(milliseconds(203));
            EXPECT_CODE(PERR_OK, other.unlock());
        });
        EXPECT_CODE(PERR_OK, lock.lock(name, FOREVER));
        soonest = std::min(soonest, steady_clock::now() - start);
        releasing.join();
        EXPECT_CODE(PERR_OK, lock.unlock());
    }
    EXPECT_LE(soonest, milliseconds(223)) << "in the quietest round";
    EXPECT_LE(std::clock() - used, CLOCKS_PER_SEC / 20) << "of a second";
}

TEST_F(FileLock, EndsWithItsHolderThoughItsChildrenLive) {
    (void)prctl(PR_SET_CHILD_SUBREAPER, 1);  // what it leaves behind becomes a child of ours
    ChildRun holder([&] {
        (void)setpgid(0, 0);
        if (lock.lock(name, 0) != PERR_OK) return 1;
        if (fork() > 0) scratch.write("ready", "");
        return pause();
    });
    pid_t const group = holder.pid;
    ASSERT_TRUE(eventually([&] { return fs::exists(scratch.path("ready")); }));
    EXPECT_CODE(PERR_LOCKED, other.lock(name, 0));
    EXPECT_EQ(0, kill(group, SIGKILL));
    EXPECT_EQ(-SIGKILL, holder.wait());
    EXPECT_CODE(PERR_OK, other.lock(name, 10'000)) << "a child may only just begin to run";

    EXPECT_EQ(0, kill(-group, SIGKILL)) << "the children were there";
    while (waitpid(-group, nullptr, 0) > 0) {}
    (void)prctl(PR_SET_CHILD_SUBREAPER, 0);
}

TEST_F(FileLock, IsNotHeldByAForkedChild) {
    ASSERT_CODE(PERR_OK, lock.lock(name, 0));
    inAChild([&] {
        EXPECT_CODE(PERR_NOT_OPEN, lock.unlock());
        EXPECT_CODE(PERR_LOCKED, lock.lock(name, 0));
        lock.~PFileLock();
    });
    EXPECT_CODE(PERR_LOCKED, other.lock(name, 0));
    EXPECT_CODE(PERR_OK, lock.unlock());
}

TEST_F(FileLock, IsNotTakenForAStandardStreamThatIsClosed) {
    inAChild([&] {
        for (int const stream : {0, 1, 2}) (void)close(stream);
        EXPECT_CODE(PERR_OK, lock.lock(name, 0));
        for (int const stream : {0, 1, 2}) EXPECT_EQ(-1, fcntl(stream, F_GETFD));
        EXPECT_CODE(PERR_LOCKED, other.lock(name, 0));
    });
}

TEST_F(FileLock, IsThatOfTheFileThatStandsUnderTheNameOnceItIsLocked) {
    beforeLocking = [&] { fs::rename(scratch.write("new", ""), scratch.path("f")); };
    EXPECT_CODE(PERR_OK, lock.lock(name, 0));
    EXPECT_CODE(PERR_LOCKED, other.lock(name, 0));

    EXPECT_CODE(PERR_OK, lock.unlock());
    beforeLocking = [&] { fs::remove(scratch.path("f")); };
    EXPECT_CODE(PERR_OK, lock.lock(name, 0));
    EXPECT_CODE(PERR_LOCKED, other.lock(name, 0)) << "of the file that was made anew";
}

TEST_F(FileLock, IsThatOfAFileWhichAnotherUserMakesFirst) {
    insteadOfMaking = [&] { scratch.write("f", ""); };
    EXPECT_CODE(PERR_OK, lock.lock(name, 0));
    EXPECT_CODE(PERR_LOCKED, other.lock(name, 0));
    insteadOfMaking = [] {};
    EXPECT_CODE(PERR_REFUSED, other.lock(named(scratch.path("none")), 0)) << "by the folder";
}
