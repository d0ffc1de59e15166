#include <utility>

#include <fcntl.h>
#include <sys/fsuid.h>
#include <sys/stat.h>

#include <faults/interpose.h>
#include <fs/files.h>
#include <portinglayer/file_locks.h>

namespace fs = std::filesystem;
using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr unsigned int FOREVER = 4294967295U;

static std::function<void()> beforeLocking;  // happens once, when the file is open

INTERPOSE(flock, if (beforeLocking) std::exchange(beforeLocking, nullptr)())

class FileLock : public InAFolder {
protected:
    PString const name = named(scratch.path("f"));
    PFileLock lock, other;
};

TEST_F(FileLock, IsHeldByOneObjectAndExcludesAFileThatIsOpenedWithTheLock) {
    scratch.write("f", "content");
    EXPECT_CODE(PERR_OK, lock.lock(name, 0));
    EXPECT_CODE(PERR_LOCKED, other.lock(name, 0));
    EXPECT_CODE(PERR_LOCKED, file.popen(name, READ, PFile::EXCLUSIVE));
    EXPECT_EQ("content", scratch.read("f"));
    EXPECT_CODE(PERR_ALREADY_OPEN, lock.lock(L"/tmp", 0));
    EXPECT_CODE(PERR_OK, lock.unlock());
    EXPECT_CODE(PERR_NOT_OPEN, lock.unlock());
    EXPECT_CODE(PERR_OK, PFileLock().lock(name, FOREVER)) << "the destructor unlocks";
    EXPECT_CODE(PERR_OK, other.lock(name, 0));
}

TEST_F(FileLock, IsTakenOnRegularFilesAndMakesThem) {
    EXPECT_CODE(PERR_INVALID_ARGUMENT, lock.lock(L"", 0));
    EXPECT_CODE(PERR_NO_SUCH_FILE, lock.lock(named(scratch.path("none/file")), 0));
    EXPECT_CODE(PERR_REFUSED, lock.lock(named(scratch.dir()), 0)) << "a folder";
    mode_t const before = umask(027);
    EXPECT_CODE(PERR_OK, lock.lock((scratch.wpath(" \\") + L"\xE9 ").c_str(), 0));
    (void)umask(before);
    EXPECT_EQ("640", modeOf(scratch.path(" \\\xC3\xA9 ")));
}

TEST_F(FileLock, IsRefusedWhereNoFileMayBeMade) {
    fs::permissions(scratch.dir(), fs::perms(0555));
    (void)setfsuid(65534);  // nobody: root may everywhere
    EXPECT_CODE(PERR_REFUSED, lock.lock(name, 0));
    (void)setfsuid(geteuid());
    fs::permissions(scratch.dir(), fs::perms::owner_all);
}

TEST_F(FileLock, WaitsAsLongAsItIsTold) {
    ASSERT_CODE(PERR_OK, other.lock(name, 0));
    auto const start = steady_clock::now();
    EXPECT_CODE(PERR_LOCKED, interrupted([&] { return lock.lock(name, 300); }));
    EXPECT_GE(steady_clock::now() - start, milliseconds(300));
}

TEST_F(FileLock, IsTakenWhenItComesFree) {
    ASSERT_CODE(PERR_OK, other.lock(name, 0));
    std::jthread const releasing([&] {
        std::this_thread::sleep_for(milliseconds(50));
        EXPECT_CODE(PERR_OK, other.unlock());
    });
    EXPECT_CODE(PERR_OK, lock.lock(name, FOREVER));
}

TEST_F(FileLock, IsNotHeldByAForkedChild) {
    int const descriptor = dup(0);  // and free again, for the lock to get it
    (void)close(descriptor);
    ASSERT_CODE(PERR_OK, lock.lock(name, 0));
    EXPECT_EQ(FD_CLOEXEC, fcntl(descriptor, F_GETFD));
    inAChild([&] {
        EXPECT_EQ(-1, fcntl(descriptor, F_GETFD)) << "so it ends with its holder";
        EXPECT_CODE(PERR_NOT_OPEN, lock.unlock());
        EXPECT_CODE(PERR_LOCKED, lock.lock(name, 0));
        lock.~PFileLock();
    });
    EXPECT_CODE(PERR_LOCKED, other.lock(name, 0));
    EXPECT_CODE(PERR_OK, lock.unlock());
}

TEST_F(FileLock, IsThatOfTheFileThatStandsUnderTheNameOnceItIsLocked) {
    beforeLocking = [&] { rename(scratch.write("new", "").c_str(), scratch.path("f").c_str()); };
    EXPECT_CODE(PERR_OK, lock.lock(name, 0));
    EXPECT_CODE(PERR_LOCKED, other.lock(name, 0));
}
