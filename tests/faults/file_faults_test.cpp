// What the system refuses at its worst. The definitions here win over those of the C library.
#include <cerrno>
#include <cstdlib>
#include <map>
#include <memory>

#include <gtest/gtest.h>
#include <portinglayer/files.h>
#include <support/scratch.h>

static int refusal = 0;  // errno of both calls below; 0 lets a lock be taken
static int drawn = 0;    // what the generator gives

extern "C" {
int rename(char const*, char const*) noexcept {
    errno = refusal;
    return -1;
}
int flock(int, int) noexcept {
    errno = refusal;
    return refusal == 0 ? 0 : -1;
}
int rand() noexcept {
    return drawn;
}
}

TEST(FileFaults, RenameTellsTheReasonByItsTable) {
    std::map<int, int> codes{{ENOENT, PERR_NOT_FOUND}};
    for (int const error : {EIO, EMLINK, ENAMETOOLONG, ELOOP}) codes[error] = PERR_IO;
    for (int const error :
         {EPERM, EBUSY, EEXIST, EXDEV, ENOTDIR, EISDIR, EINVAL, ENOSPC, EROFS, ENOTEMPTY})
        codes[error] = PERR_REFUSED;
    for (refusal = 1; refusal < 134; ++refusal)
        EXPECT_EQ(PFile::rename(L"a", L"b"), codes.contains(refusal) ? codes[refusal] : PERR_SYSTEM)
            << refusal;
}

TEST(FileFaults, RefusedLocksLeaveHandlesHalfOpenAndRefusedMovesTheSibling) {
    for (auto const& [error, code] :
         {std::pair(EAGAIN, PERR_LOCKED), {ENOLCK, PERR_OPEN}, {0, PERR_OK}}) {
        SCOPED_TRACE(error);
        refusal = error;
        Scratch scratch;
        std::wstring const path = scratch.wpath("f");
        PString name;
        PFile file;
        EXPECT_EQ(file.popen(path.c_str(), PFile::OPEN_SAFE_WRITE, 0), code);
        EXPECT_EQ(file.popen(path.c_str(), PFile::OPEN_SAFE_WRITE, 0), PERR_ALREADY_OPEN);
        EXPECT_TRUE(file.pgetName(name) == PERR_OK && name == (error == 0 ? path.c_str() : L""));
        refusal = ENOENT;  // which a rename itself would tell
        EXPECT_EQ(file.pclose(), error == 0 ? PERR_SYSTEM : PERR_OK) << "nothing to move";
    }
}

TEST(FileFaults, TemporaryNamesEndInANumberThatFitsItsRoom) {
    for (int const number : {0, 1, 2, 3, 9, 10, 99, 100, 238327, 238328, 2147483647}) {
        drawn = number;
        std::unique_ptr<wchar_t[]> const made(PTempFile().getRandStr());
        EXPECT_EQ(made.get(), std::to_wstring(number % 238328));
        EXPECT_EQ(PSystem::getRandom(5, 10), number == 2147483647 ? 15 : 5);
    }
    EXPECT_EQ(PSystem::getTempDir(), L"/tmp/");
    refusal = 0;
    drawn = 7;
    Scratch scratch;
    std::wstring const prefix = scratch.wpath("\\job");
    PTempFile file, second;
    EXPECT_EQ(file.popen(prefix.c_str(), 18, 0), PERR_OK);
    EXPECT_EQ(scratch.names(), std::vector<std::string>{"job7"});
    EXPECT_EQ(second.popen(prefix.c_str(), 18, 0), PERR_OPEN) << "taken at each attempt";
    EXPECT_EQ(file.PFile::pclose(), PERR_OK);
    EXPECT_EQ(file.popen(L"x", 18, 0), PERR_ALREADY_OPEN) << "closed as another class";
    EXPECT_EQ(file.pclose(), PERR_NOT_OPEN);
    EXPECT_EQ(file.popen(L"", 18, 0), PERR_INVALID_ARGUMENT) << "free again";
}
