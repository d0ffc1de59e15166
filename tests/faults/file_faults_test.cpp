// What the system refuses at its worst. The definitions here win over those of the C library.
#include <cerrno>
#include <cstdlib>
#include <memory>
#include <set>

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <portinglayer/files.h>
#include <support/scratch.h>

namespace {
int refusal = 0;  // errno of every call below; 0 lets it happen
int drawn = 0;    // what the generator gives

long _answer(long done) {
    if (refusal == 0) return done;
    errno = refusal;
    return -1;
}
}  // namespace

extern "C" int rename(char const* from, char const* to) noexcept {
    return static_cast<int>(_answer(refusal == 0 ? syscall(SYS_rename, from, to) : 0));
}
extern "C" int flock(int fd, int operation) noexcept {
    return static_cast<int>(_answer(syscall(SYS_flock, fd, operation)));
}
extern "C" int closedir(DIR* stream) {
    return static_cast<int>(
        _answer(reinterpret_cast<int (*)(DIR*)>(dlsym(RTLD_NEXT, "closedir"))(stream)));
}
extern "C" int rand() noexcept {
    return drawn;
}

TEST(FileFaults, RenameTellsTheReasonByItsTable) {
    std::set<int> const refused{EPERM,  EBUSY,  EEXIST, EXDEV, ENOTDIR,
                                EISDIR, EINVAL, ENOSPC, EROFS, ENOTEMPTY};
    std::set<int> const device{EIO, EMLINK, ENAMETOOLONG, ELOOP};
    for (refusal = 1; refusal < 134; ++refusal)
        EXPECT_EQ(PFile::rename(L"a", L"b"), refusal == ENOENT           ? PERR_NOT_FOUND
                                             : refused.contains(refusal) ? PERR_REFUSED
                                             : device.contains(refusal)  ? PERR_IO
                                                                         : PERR_SYSTEM)
            << refusal;
    refusal = 0;
}

TEST(FileFaults, RefusedLocksLeaveHandlesHalfOpenAndListingsCloseAllTheSame) {
    Scratch scratch;
    PDir dir(L"/tmp", L"");
    for (auto const& [error, code] : {std::pair(EAGAIN, PERR_LOCKED), {ENOLCK, PERR_OPEN}})
        for (unsigned int const flags : {18U, 32U}) {
            refusal = error;
            PString name(L"old", 3);
            PFile file;
            EXPECT_EQ(file.popen(scratch.wpath("f").c_str(), flags, 0), code) << error;
            EXPECT_TRUE(file.pgetName(name) == PERR_OK && name.len() == 0) << "open, unnamed";
            EXPECT_EQ(file.pclose(), PERR_OK) << "and nothing is moved";
        }
    EXPECT_TRUE(dir.pclose() == PERR_OK && dir == PERR_OK);
    refusal = 0;
}

TEST(FileFaults, RandomNumbersFitTheirRoomAndTakenOnesAreGivenUp) {
    for (auto const& [number, text] : {std::pair(0, L"0"),
                                       {1, L"1"},
                                       {2, L"2"},
                                       {3, L"3"},
                                       {9, L"9"},
                                       {10, L"10"},
                                       {99, L"99"},
                                       {100, L"100"},
                                       {238327, L"238327"},
                                       {238328, L"0"}}) {
        drawn = number;
        std::unique_ptr<wchar_t[]> const made(PTempFile().getRandStr());
        EXPECT_STREQ(made.get(), text);
    }
    drawn = 2147483647;
    EXPECT_EQ(PSystem::getRandom(5, 10), 15);

    Scratch scratch;
    scratch.write("job7", "");
    drawn = 7;
    PTempFile file;
    EXPECT_EQ(file.popen(scratch.wpath("job").c_str(), 18, 0), PERR_OPEN) << "taken each time";
}
