#include <set>
#include <type_traits>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <portinglayer/files.h>
#include <support/child_run.h>
#include <support/scratch.h>

static_assert(sizeof(PFile) == 64 && alignof(PFile) == 8);
static_assert(std::has_virtual_destructor_v<PFile> && !std::is_copy_constructible_v<PFile>);

namespace {

constexpr unsigned int WRITE_NEW = PFile::OPEN_WRITE | PFile::OPEN_CREATE | PFile::OPEN_TRUNCATE;

/// The descriptor that the next opening will get.
int _nextDescriptor() {
    int const next = dup(0);
    (void)close(next);
    return next;
}

std::wstring _name(PFile& file) {
    PString name;
    EXPECT_EQ(file.pgetName(name), PERR_OK);
    return name.len() == 0 ? L"" : name.ptr();
}

}  // namespace

TEST(FileHandle, ModeBitsGiveAccessOfTheSystem) {
    struct {
        char const* what;
        unsigned int flags;
        int code, access;
        long long size;
    } const rows[] = {
        {"no bit reads", 0, PERR_OK, O_RDONLY, 3},
        {"read", 1, PERR_OK, O_RDONLY, 3},
        {"write", 2, PERR_OK, O_WRONLY, 3},
        {"both", 3, PERR_OK, O_RDWR, 3},
        {"append alone", 4, PERR_OK, O_RDONLY | O_APPEND, 3},
        {"append", 6, PERR_OK, O_WRONLY | O_APPEND, 3},
        {"truncate needs write", 8, PERR_INVALID_ARGUMENT, 0, 0},
        {"truncate", 10, PERR_OK, O_WRONLY, 0},
        {"create", 16, PERR_OK, O_RDONLY, 3},
        {"create truncates unwritten", 24, PERR_OK, O_RDONLY, 0},
        {"unknown bits", 64 + 3, PERR_OK, O_RDWR, 3},
        {"safe write stands alone", 33, PERR_INVALID_ARGUMENT, 0, 0},
    };
    Scratch scratch;
    for (auto const& row : rows) {
        SCOPED_TRACE(row.what);
        scratch.write("f", "old");
        int const descriptor = _nextDescriptor();
        long long size = -1;
        PFile file;
        ASSERT_EQ(file.popen(scratch.wpath("f").c_str(), row.flags, 1), row.code);
        EXPECT_EQ(file.isOpen(), row.code == PERR_OK);
        if (row.code != PERR_OK) continue;
        EXPECT_EQ(fcntl(descriptor, F_GETFL) & (O_ACCMODE | O_APPEND), row.access);
        EXPECT_EQ(fcntl(descriptor, F_GETFD), FD_CLOEXEC);
        EXPECT_EQ(file.pgetSize(size), PERR_OK);
        EXPECT_EQ(size, row.size);
    }
}

TEST(FileHandle, RefusedOpeningLeavesItClosed) {
    Scratch scratch;
    struct {
        std::wstring name;
        unsigned int flags, share;
        int code;
    } const rows[] = {
        {L"", 1, 1, PERR_INVALID_ARGUMENT},
        {scratch.wpath("none"), 3, 1, PERR_NO_SUCH_FILE},
        {scratch.wpath("none/f"), 18, 1, PERR_NO_SUCH_FILE},
        {scratch.wpath(""), 2, 1, PERR_OPEN},
        {L"/tmp/\u00e9", 16, 1, PERR_OPEN},  // not in the C locale
        {scratch.wpath("f"), 32, 1, PERR_INVALID_ARGUMENT},
        {scratch.wpath("none/f"), 32, 0, PERR_NO_SUCH_FILE},
    };
    for (auto const& row : rows) {
        PFile file;
        EXPECT_EQ(file.popen(row.name.c_str(), row.flags, row.share), row.code) << row.flags;
        EXPECT_EQ(file.pclose(), PERR_NOT_OPEN);
    }
    EXPECT_TRUE(scratch.names().empty());
}

TEST(FileHandle, ReadsWritesAndSeeks) {
    Scratch scratch;
    std::wstring const path = scratch.wpath("f");
    char buffer[8] = {};
    unsigned long done = 77;
    long long size = 0;
    PFile file;
    EXPECT_EQ(file.pread(nullptr, 1, done), PERR_INVALID_ARGUMENT);
    EXPECT_EQ(file.pread(buffer, 1, done), PERR_NOT_OPEN);
    EXPECT_EQ(file.pwrite(buffer, 1, done), PERR_NOT_OPEN);
    EXPECT_EQ(file.pseek(0, 0), PERR_NOT_OPEN);
    EXPECT_EQ(file.pgetSize(size), PERR_NOT_OPEN);
    EXPECT_EQ(file.pflush(), PERR_NOT_OPEN);

    ASSERT_EQ(file.popen(path.c_str(), WRITE_NEW, 1), PERR_OK);
    EXPECT_EQ(file.pread(buffer, 1, done), PERR_READ);
    EXPECT_EQ(file.pwrite(buffer, 0, done), PERR_END_OF_FILE);
    EXPECT_EQ(done, 77U);
    EXPECT_EQ(file.pwrite("hello", 5, done), PERR_OK);
    EXPECT_EQ(file.pflush(), PERR_OK);
    EXPECT_EQ(file.pclose(), PERR_OK);

    ASSERT_EQ(file.popen(path.c_str(), PFile::OPEN_READ, 1), PERR_OK);
    EXPECT_EQ(file.popen(path.c_str(), PFile::OPEN_READ, 1), PERR_ALREADY_OPEN);
    EXPECT_EQ(file.pread(buffer, 0, done), PERR_INVALID_ARGUMENT);
    EXPECT_EQ(file.pwrite("x", 1, done), PERR_WRITE);
    EXPECT_EQ(file.pseek(-2, 2), PERR_OK);
    EXPECT_EQ(file.pread(buffer, sizeof buffer, done), PERR_OK);
    EXPECT_EQ(std::string(buffer, done), "lo");
    EXPECT_EQ(file.pread(buffer, sizeof buffer, done), PERR_END_OF_FILE);
    EXPECT_EQ(file.pseek(-1, 0), PERR_SEEK);
    EXPECT_EQ(file.pgetSize(size), PERR_OK);
    EXPECT_EQ(size, 5);
    EXPECT_EQ(file.pclose(), PERR_OK);
    EXPECT_EQ(file.pclose(), PERR_NOT_OPEN);

    ASSERT_EQ(file.popen(L"\\dev\\full", PFile::OPEN_WRITE, 1), PERR_OK);
    EXPECT_EQ(_name(file), L"/dev/full");
    EXPECT_EQ(file.pwrite("x", 1, done), PERR_WRITE);
    EXPECT_EQ(file.pwriteLine(L"x"), PERR_WRITE);
}

TEST(FileHandle, SecondExclusiveOpenIsRefusedAndStaysHalfOpen) {
    Scratch scratch;
    std::wstring const path = scratch.wpath("f");
    PString name(L"old", 3);
    PFile first;
    PFile second;
    ASSERT_EQ(first.popen(path.c_str(), WRITE_NEW, 0), PERR_OK);
    EXPECT_EQ(second.popen(path.c_str(), PFile::OPEN_READ, 0), PERR_LOCKED);
    EXPECT_TRUE(second.isOpen());
    EXPECT_EQ(_name(second), L"");
    EXPECT_EQ(second.popen(path.c_str(), PFile::OPEN_READ, 1), PERR_ALREADY_OPEN);
    EXPECT_EQ(second.pclose(), PERR_OK);
    EXPECT_EQ(second.pgetName(name), PERR_NOT_OPEN);
    EXPECT_EQ(name, L"old");
    EXPECT_EQ(second.popen(path.c_str(), PFile::OPEN_READ, 1), PERR_OK);
    EXPECT_EQ(second.pclose(), PERR_OK);
    EXPECT_EQ(first.pclose(), PERR_OK);
    EXPECT_EQ(second.popen(path.c_str(), PFile::OPEN_READ, 0), PERR_OK);
}

TEST(FileHandle, OneOfEightProcessesGetsTheFile) {
    Scratch scratch;
    std::string const path = scratch.write("f", "");
    auto const count = [&](std::string const& line) {
        std::string const log = scratch.read("log");
        int found = 0;
        for (auto at = log.find(line); at != log.npos; at = log.find(line, at + 1)) ++found;
        return found;
    };
    {
        std::vector<ChildRun> holders;
        for (int i = 0; i < 8; ++i)
            holders.emplace_back(ChildRun({"hold", path, scratch.path("go"), scratch.path("log")}));
        scratch.write("go", "");
        ASSERT_TRUE(eventually([&] { return count("\n") == 8; }));
    }
    EXPECT_EQ(count("0\n"), 1 + count(std::to_string(PERR_LOCKED) + "\n")) << scratch.read("log");
    PFile file;
    EXPECT_EQ(file.popen(wide(path).c_str(), PFile::OPEN_WRITE, 0), PERR_OK);
}

TEST(SafeWrite, MovesTheSiblingOverTheNameAtClose) {
    Scratch scratch;
    scratch.write("f", "old");
    unsigned long done = 0;
    PFile file;
    ASSERT_EQ(file.popen(scratch.wpath("f").c_str(), PFile::OPEN_SAFE_WRITE, 0), PERR_OK);
    EXPECT_EQ(_name(file), scratch.wpath("f"));
    EXPECT_EQ(file.pwrite("new", 3, done), PERR_OK);

    std::string const sibling = scratch.names().at(1);
    std::string const start = "f.talv_temp-" + std::to_string(getpid()) + "-";
    EXPECT_EQ(sibling.substr(0, start.size()), start);
    EXPECT_EQ(sibling.find_first_not_of("0123456789", start.size()), sibling.npos);
    EXPECT_EQ(scratch.read("f"), "old");

    EXPECT_EQ(file.pclose(), PERR_OK);
    EXPECT_EQ(scratch.names(), std::vector<std::string>{"f"});
    EXPECT_EQ(scratch.read("f"), "new");
}

TEST(SafeWrite, KeepsTheSiblingWhenItCannotBeMoved) {
    Scratch scratch;
    ASSERT_EQ(PDir::pcreate(scratch.wpath("f").c_str()), PERR_OK);
    PFile file;
    ASSERT_EQ(file.popen(scratch.wpath("f").c_str(), PFile::OPEN_SAFE_WRITE, 0), PERR_OK);
    EXPECT_EQ(file.pclose(), PERR_SYSTEM);
    EXPECT_FALSE(file.isOpen());
    EXPECT_EQ(scratch.names().size(), 2U);
}

TEST(SafeWrite, SurvivesTheDeathOfTheWriter) {
    for (std::string const stage : {"open", "written", "flushed", "closed"}) {
        SCOPED_TRACE(stage);
        Scratch scratch;
        std::string const path = scratch.write("f", "old");
        bool const closed = stage == "closed";
        {
            ChildRun writer({"replace", path, stage, scratch.path("ready")});
            ASSERT_TRUE(eventually([&] { return scratch.read("ready") == "there"; }));
        }
        EXPECT_EQ(scratch.read("f"), closed ? "new" : "old");
        EXPECT_EQ(scratch.names().size(), closed ? 2U : 3U) << "file, sibling, ready";
    }
}

TEST(FileName, IsWhatFollowsTheLastSlash) {
    for (auto const& [path, expected] : {std::pair(L"/a/b/c.txt", L"c.txt"),
                                         {L"dir/", L""},
                                         {L"plain", L"plain"},
                                         {L"a\\b", L"a\\b"},
                                         {L"", L""}}) {
        PString name(path, P_WHOLE_STRING);
        PFile::getFileName(name);
        EXPECT_EQ(name, expected);
    }
}
