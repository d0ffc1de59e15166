#include <sys/stat.h>

#include <fs/files.h>
#include <portinglayer/threads.h>

namespace fs = std::filesystem;

static void _openSafely(PFile& file, std::string const& path) {
    ASSERT_CODE(PERR_OK, file.popen(named(path), PFile::OPEN_SAFE_WRITE, PFile::EXCLUSIVE));
}

TEST(SafeWrite, KeepsTheOldContentUntilItIsClosed) {
    Scratch const scratch;
    PString name;
    PFile file;
    _openSafely(file, scratch.write("f", "old"));
    EXPECT_CODE(PERR_OK, file.pwriteLine(L"new"));
    EXPECT_EQ("old", scratch.read("f"));
    EXPECT_CODE(PERR_OK, file.pgetName(name));
    EXPECT_TEXT(scratch.wpath("f"), name) << "not that of the sibling";

    EXPECT_CODE(PERR_OK, file.pclose());
    EXPECT_EQ("new\n", scratch.read("f"));
    EXPECT_EQ(std::set<std::string>{"f"}, namesIn(scratch.dir()));
    EXPECT_CODE(PERR_NOT_OPEN, file.pclose());
}

TEST(SafeWrite, GoesToALockedSiblingNamedForProcessAndTick) {
    Scratch const scratch;
    long long const before = PTime::getTickCount();
    PFile file, other;
    _openSafely(file, scratch.path("f"));
    long long const after = PTime::getTickCount();
    std::string const sibling = *namesIn(scratch.dir()).begin();
    std::string const start = "f.talv_temp-" + std::to_string(getpid()) + "-";
    EXPECT_EQ(start, sibling.substr(0, start.size()));
    long long const tick = std::stoll(sibling.substr(start.size()));
    EXPECT_LE(before, tick);
    EXPECT_GE(after, tick);
    EXPECT_CODE(PERR_LOCKED, other.popen(named(scratch.path(sibling)), 1, PFile::EXCLUSIVE));
}

TEST(SafeWrite, IsMovedByTheDestructorToo) {
    Scratch const scratch;
    {
        PFile file;
        _openSafely(file, scratch.write("f", "old"));
    }
    EXPECT_EQ("", scratch.read("f"));
    EXPECT_EQ(std::set<std::string>{"f"}, namesIn(scratch.dir()));
}

TEST(SafeWrite, ThatCannotBeMovedLeavesTheSiblingAndAClosedHandle) {
    Scratch const scratch;
    PFile file;
    _openSafely(file, scratch.path("f"));
    EXPECT_CODE(PERR_OK, file.pwriteLine(L"new"));
    std::string const sibling = *namesIn(scratch.dir()).begin();
    fs::create_directory(scratch.path("f"));
    EXPECT_CODE(PERR_SYSTEM, file.pclose());
    EXPECT_EQ("new\n", scratch.read(sibling));
    EXPECT_CODE(PERR_NOT_OPEN, file.pclose());
    _openSafely(file, scratch.path("another"));
}
