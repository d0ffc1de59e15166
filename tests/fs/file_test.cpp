#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <portinglayer/files.h>
#include <support/child_run.h>
#include <support/scratch.h>

static_assert(sizeof(PFile) == 64 && alignof(PFile) == 8 && !std::is_copy_constructible_v<PFile>);

constexpr unsigned int WRITE_NEW = PFile::OPEN_WRITE | PFile::OPEN_CREATE;

TEST(FileHandle, OpensByItsModeBits) {
    Scratch scratch;
    std::wstring const f = scratch.wpath("f");
    struct {
        char const* what;
        std::wstring name;
        unsigned int flags, share;
        int code, access;
    } const rows[] = {
        {"no bit reads", f, 0, 1, PERR_OK, O_RDONLY},
        {"both, unknown bits", f, 64 + 3, 1, PERR_OK, O_RDWR},
        {"append alone", f, 4, 1, PERR_OK, O_RDONLY | O_APPEND},
        {"truncate", f, 10, 1, PERR_OK, O_WRONLY},
        {"create keeps", f, 16, 1, PERR_OK, O_RDONLY},
        {"create truncates unwritten", f, 24, 1, PERR_OK, O_RDONLY},
        {"truncate needs write", f, 8, 1, PERR_INVALID_ARGUMENT, 0},
        {"safe write stands alone", f, 33, 0, PERR_INVALID_ARGUMENT, 0},
        {"and is exclusive", f, 32, 1, PERR_INVALID_ARGUMENT, 0},
        {"no name", L"", 1, 1, PERR_INVALID_ARGUMENT, 0},
        {"no file", scratch.wpath("none"), 3, 1, PERR_NO_SUCH_FILE, 0},
        {"no folder", scratch.wpath("none/f"), 32, 0, PERR_NO_SUCH_FILE, 0},
        {"a folder", scratch.wpath(""), 2, 1, PERR_OPEN, 0},
        {"not in the C locale", L"/tmp/\u00e9", 16, 1, PERR_OPEN, 0},
    };
    for (auto const& row : rows) {
        SCOPED_TRACE(row.what);
        scratch.write("f", "old");
        int const descriptor = dup(0);  // and free again, for the file to get it
        (void)close(descriptor);
        PFile file;
        EXPECT_EQ(file.popen(row.name.c_str(), row.flags, row.share), row.code);
        ASSERT_EQ(file.isOpen(), row.code == PERR_OK);
        if (!file.isOpen()) continue;
        EXPECT_EQ(fcntl(descriptor, F_GETFL) & (O_ACCMODE | O_APPEND), row.access);
        EXPECT_EQ(fcntl(descriptor, F_GETFD), FD_CLOEXEC);
        EXPECT_EQ(scratch.read("f"), (row.flags & PFile::OPEN_TRUNCATE) != 0 ? "" : "old");
    }
}

TEST(FileHandle, ReadsWritesAndSeeks) {
    Scratch scratch;
    char buffer[8] = {};
    unsigned long done = 77;
    long long size = 0;
    PString line(L"kept", 4);
    PFile file;
    EXPECT_EQ(file.pread(nullptr, 1, done), PERR_INVALID_ARGUMENT)
        << "before openness is looked at";
    for (int const code : {file.pread(buffer, 1, done), file.pwrite(buffer, 1, done), file.pflush(),
                           file.pseek(0, 0), file.pgetSize(size), file.pgetName(line),
                           file.preadLine(line), file.pwriteLine(line), file.pclose()})
        EXPECT_EQ(code, PERR_NOT_OPEN);

    ASSERT_EQ(file.popen(scratch.wpath("f").c_str(), WRITE_NEW, 1), PERR_OK);
    EXPECT_EQ(file.preadLine(line), PERR_READ);
    EXPECT_EQ(file.pwrite(buffer, 0, done), PERR_END_OF_FILE);
    EXPECT_TRUE(done == 77 && line == L"kept") << "failures leave outputs alone";
    EXPECT_EQ(file.pwrite("hello", 5, done), PERR_OK);
    EXPECT_EQ(file.pclose(), PERR_OK);
    ASSERT_EQ(file.popen(scratch.wpath("f").c_str(), PFile::OPEN_READ, 1), PERR_OK);
    EXPECT_EQ(file.pseek(-2, 2), PERR_OK);
    EXPECT_EQ(file.pseek(-1, 0), PERR_SEEK);
    EXPECT_EQ(file.pread(buffer, sizeof buffer, done), PERR_OK);
    EXPECT_TRUE(std::string(buffer, done) == "lo" && file.pgetSize(size) == PERR_OK && size == 5);
    EXPECT_EQ(file.pread(buffer, sizeof buffer, done), PERR_END_OF_FILE);
    EXPECT_EQ(file.pclose(), PERR_OK);
    ASSERT_EQ(file.popen(L"\\dev\\full", PFile::OPEN_WRITE, 1), PERR_OK);
    EXPECT_TRUE(file.pgetName(line) == PERR_OK && line == L"/dev/full");
    EXPECT_EQ(file.pwriteLine(L"x"), PERR_WRITE) << "no space";
}

TEST(FileHandle, SecondExclusiveOpenIsRefusedAndStaysHalfOpen) {
    Scratch scratch;
    std::wstring const path = scratch.wpath("f");
    PFile first, second;
    ASSERT_EQ(first.popen(path.c_str(), WRITE_NEW, 0), PERR_OK);
    EXPECT_EQ(second.popen(path.c_str(), PFile::OPEN_READ, 0), PERR_LOCKED);
    EXPECT_EQ(second.popen(path.c_str(), PFile::OPEN_READ, 1), PERR_ALREADY_OPEN);
    EXPECT_EQ(second.pclose(), PERR_OK);
    EXPECT_EQ(second.popen(path.c_str(), PFile::OPEN_READ, 1), PERR_OK) << "without a lock";
}

TEST(FileHandle, OneOfEightProcessesGetsTheFile) {
    Scratch scratch;
    std::string const path = scratch.write("f", "");
    {
        std::vector<ChildRun> holders;
        for (int i = 0; i < 8; ++i)
            holders.emplace_back(ChildRun({"hold", path, scratch.path("go"), scratch.path("")}));
        scratch.write("go", "");
        ASSERT_TRUE(eventually([&] { return scratch.names().size() == 2 + 8; }));
    }
    EXPECT_EQ(scratch.names().at(6).substr(0, 5), std::to_string(PERR_LOCKED) + ".");
    EXPECT_EQ(scratch.names().at(7).substr(0, 2), std::to_string(PERR_OK) + ".");
    PFile file;
    EXPECT_EQ(file.popen(wide(path).c_str(), PFile::OPEN_WRITE, 0), PERR_OK) << "all are gone";
}

TEST(SafeWrite, SurvivesTheDeathOfTheWriter) {
    for (std::string const stage : {"open", "written", "flushed", "closed"}) {
        SCOPED_TRACE(stage);
        bool const closed = stage == "closed";
        Scratch scratch;
        std::string const path = scratch.write("f", "old");
        ChildRun writer({"replace", path, stage, scratch.path("ready")});
        std::string const sibling = "f.talv_temp-" + std::to_string(writer.pid) + "-";
        ASSERT_TRUE(eventually([&] { return scratch.read("ready") == "there"; }));
        writer.kill();
        EXPECT_EQ(scratch.read("f"), closed ? "new" : "old");
        ASSERT_EQ(scratch.names().size(), closed ? 2U : 3U) << "file, sibling, ready";
        if (closed) continue;
        std::string const name = scratch.names().at(1);
        EXPECT_EQ(name.substr(0, sibling.size()), sibling);
        EXPECT_EQ(name.find_first_not_of("0123456789", sibling.size()), name.npos);
    }
}

TEST(SafeWrite, LeavesItsSiblingWhenItCannotBeMoved) {
    Scratch scratch;
    PString name;
    PFile file;
    ASSERT_EQ(PDir::pcreate(scratch.wpath("f").c_str()), PERR_OK);
    ASSERT_EQ(file.popen(scratch.wpath("f").c_str(), PFile::OPEN_SAFE_WRITE, 0), PERR_OK);
    EXPECT_TRUE(file.pgetName(name) == PERR_OK && name == scratch.wpath("f").c_str());
    EXPECT_EQ(file.pclose(), PERR_SYSTEM) << "a folder is in the way";
    EXPECT_EQ(scratch.names().size(), 2U);
}

TEST(FileName, IsWhatFollowsTheLastSlash) {
    for (auto const& [path, expected] :
         {std::pair(L"/a/b/c.txt", L"c.txt"), {L"dir/", L""}, {L"a\\b", L"a\\b"}, {L"", L""}}) {
        PString name(path, P_WHOLE_STRING);
        PFile::getFileName(name);
        EXPECT_EQ(name, expected);
    }
}
