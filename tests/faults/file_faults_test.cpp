// What the system refuses at its worst. The definitions here win over those of the C library.
#include <cerrno>
#include <cstdlib>
#include <memory>
#include <set>

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <portinglayer/files.h>
#include <support/scratch.h>

namespace {
int refusal = 0;  // errno of every call below
int drawn = 0;    // what the generator gives

int _refuse() {
    errno = refusal;
    return -1;
}
}  // namespace

extern "C" {
int rename(char const*, char const*) noexcept {
    return _refuse();
}
int flock(int, int) noexcept {
    return _refuse();
}
int closedir(DIR* stream) {
    (void)reinterpret_cast<int (*)(DIR*)>(dlsym(RTLD_NEXT, "closedir"))(stream);
    return _refuse();
}
int rand() noexcept {
    return drawn;
}
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
}

TEST(FileFaults, RefusedLocksLeaveHandlesHalfOpenAndListingsCloseAllTheSame) {
    Scratch scratch;
    for (auto const& [error, code] : {std::pair(EAGAIN, PERR_LOCKED), {ENOLCK, PERR_OPEN}})
        for (unsigned int const flags : {18U, 32U}) {
            refusal = error;
            PString name(L"old", 3);
            PFile file;
            EXPECT_EQ(file.popen(scratch.wpath("f").c_str(), flags, 0), code) << error;
            EXPECT_TRUE(file.pgetName(name) == PERR_OK && name.len() == 0) << "open, unnamed";
            EXPECT_EQ(file.pclose(), PERR_OK) << "and nothing is moved";
        }
    PDir dir(L"/tmp", L"");
    EXPECT_TRUE(dir.pclose() == PERR_OK && dir == PERR_OK);
}

TEST(FileFaults, RandomNumbersFitTheirRoomAndTakenOnesAreGivenUp) {
    for (int const number : {0, 1, 2, 3, 9, 10, 99, 100, 238327, 238328}) {
        drawn = number;
        std::unique_ptr<wchar_t[]> const made(PTempFile().getRandStr());
        EXPECT_EQ(made.get(), std::to_wstring(number % 238328));
    }
    drawn = 2147483647;
    EXPECT_EQ(PSystem::getRandom(5, 10), 15);

    Scratch scratch;
    scratch.write("job7", "");
    drawn = 7;
    PTempFile file;
    EXPECT_EQ(file.popen(scratch.wpath("job").c_str(), 18, 0), PERR_OPEN) << "taken each time";
}
