#include <fcntl.h>
#include <sys/stat.h>

#include <fs/files.h>

namespace fs = std::filesystem;

constexpr unsigned int APPEND = PFile::OPEN_APPEND, TRUNCATE = PFile::OPEN_TRUNCATE;

using FileOpen = InAFolder;
using FileTransfer = InAFolder;

TEST_F(FileOpen, TurnsModeBitsIntoThoseOfTheSystem) {
    struct {
        char const* what;
        unsigned int flags;
        int system;
        char const* content;
    } const rows[] = {
        {"nothing asked for", 0, O_RDONLY, "old"},
        {"writing", WRITE, O_WRONLY, "old"},
        {"both, and a bit without meaning", READ | WRITE | 64, O_RDWR, "old"},
        {"appending", APPEND, O_RDONLY | O_APPEND, "old"},
        {"truncating", WRITE | TRUNCATE, O_WRONLY, ""},
        {"creating and truncating, to be read", CREATE | TRUNCATE, O_RDONLY, ""},
    };
    for (auto const& row : rows) {
        SCOPED_TRACE(row.what);
        PString const name = named(scratch.write("f", "old"));
        int const descriptor = dup(0);  // and free again, for the file to get it
        (void)close(descriptor);
        PFile opened;
        ASSERT_CODE(PERR_OK, opened.popen(name, row.flags, PFile::UNLOCKED));
        EXPECT_EQ(row.system, fcntl(descriptor, F_GETFL) & (O_ACCMODE | O_APPEND));
        EXPECT_EQ(FD_CLOEXEC, fcntl(descriptor, F_GETFD));
        EXPECT_EQ(row.content, scratch.read("f"));
    }
}

TEST_F(FileOpen, TellsWhyNothingIsOpened) {
    struct {
        char const* what;
        std::wstring name;
        unsigned int flags, share;
        int code;
    } const rows[] = {
        {"no name", L"", READ, 1, PERR_INVALID_ARGUMENT},
        {"truncating unwritten", L"/dev/null", TRUNCATE | READ, 1, PERR_INVALID_ARGUMENT},
        {"safe writing, no lock", L"/dev/null", SAFE_WRITE, 1, PERR_INVALID_ARGUMENT},
        {"safe writing and reading", L"/dev/null", SAFE_WRITE | READ, 0, PERR_INVALID_ARGUMENT},
        {"nothing there", scratch.wpath("f"), WRITE, 1, PERR_NO_SUCH_FILE},
        {"a folder", wide(scratch.dir()), WRITE, 1, PERR_OPEN},
        {"what the C locale cannot express", L"/tmp/\u00e9", READ, 1, PERR_OPEN},
    };
    for (auto const& row : rows) {
        EXPECT_CODE(row.code, file.popen(row.name.c_str(), row.flags, row.share)) << row.what;
        EXPECT_FALSE(file.isOpen()) << row.what;
    }
}

TEST_F(FileOpen, MakesAFileForAllToReadWhoseBackslashesAreSlashes) {
    mode_t const mask = umask(0);
    EXPECT_CODE(PERR_OK, file.popen(named(scratch.dir() + "\\f"), CREATE, PFile::EXCLUSIVE));
    (void)umask(mask);
    EXPECT_EQ("644", modeOf(scratch.path("f")));
    EXPECT_CODE(PERR_ALREADY_OPEN, file.popen(L"/dev/null", READ, PFile::UNLOCKED));
    EXPECT_CODE(PERR_OK, file.pgetName(text));
    EXPECT_TEXT(scratch.wpath("f"), text);
}

TEST_F(FileOpen, LockedByAnotherIsRefusedAndLeavesTheHandleHalfOpen) {
    PString const path = named(scratch.write("f", "content"));
    PFile other;
    EXPECT_CODE(PERR_OK, file.popen(path, READ, PFile::EXCLUSIVE));
    EXPECT_CODE(PERR_OK, PFile().popen(path, READ, PFile::UNLOCKED)) << "it asks for no lock";
    EXPECT_CODE(PERR_LOCKED, other.popen(path, READ, PFile::EXCLUSIVE));
    EXPECT_TRUE(other.isOpen());
    EXPECT_CODE(PERR_OK, other.pgetName(text));
    EXPECT_TEXT(L"", text);
    EXPECT_CODE(PERR_OK, other.pread(&byte, 1, done)) << "half open, it reads";
    EXPECT_CODE(PERR_OK, other.pclose());

    EXPECT_CODE(PERR_OK, file.pclose());
    EXPECT_CODE(PERR_OK, other.popen(path, READ, PFile::EXCLUSIVE)) << "the lock is gone";
}

TEST_F(FileTransfer, TellsHowManyBytesWent) {
    char buffer[8] = "";
    long long size = 77;
    PString const name = named(scratch.path("f"));
    EXPECT_CODE(PERR_OK, file.popen(name, READ | WRITE | CREATE, PFile::UNLOCKED));
    EXPECT_CODE(PERR_END_OF_FILE, file.pwrite("abc", 0, done));
    EXPECT_EQ(77U, done) << "written on success only";
    EXPECT_CODE(PERR_OK, file.pwrite("abc", 3, done));
    EXPECT_EQ(3U, done);
    EXPECT_CODE(PERR_OK, file.pflush());
    EXPECT_CODE(PERR_OK, file.pgetSize(size));
    EXPECT_EQ(3, size);
    EXPECT_CODE(PERR_END_OF_FILE, file.pread(buffer, 8, done));
    EXPECT_CODE(PERR_OK, file.pseek(-2, 1)) << "from where it is";
    EXPECT_CODE(PERR_SEEK, file.pseek(-1, 0)) << "it stays there";
    EXPECT_CODE(PERR_INVALID_ARGUMENT, file.pread(nullptr, 1, done));
    EXPECT_CODE(PERR_INVALID_ARGUMENT, file.pread(buffer, 0, done));
    EXPECT_CODE(PERR_OK, file.pread(buffer, 8, done));
    EXPECT_EQ(2U, done);
    EXPECT_STREQ("bc", buffer);
}

TEST_F(FileTransfer, EndsAtASignalWhereItWaitsAndIsCutShortWhereItIsUnderWay) {
    std::string const much(1 << 20, 'x');
    EXPECT_EQ(0, mkfifo(scratch.path("pipe").c_str(), 0600));
    ASSERT_CODE(PERR_OK, file.popen(named(scratch.path("pipe")), READ | WRITE, PFile::UNLOCKED));
    EXPECT_CODE(PERR_READ, interrupted([&] { return file.pread(&byte, 1, done); }));
    EXPECT_CODE(PERR_OK, interrupted([&] { return file.pwrite(much.data(), much.size(), done); }));
    EXPECT_GT(much.size(), done) << "what found room";
}

TEST_F(FileTransfer, IsRefusedByFoldersAndByWhatIsFull) {
    PFile full;
    EXPECT_CODE(PERR_OK, file.popen(L"/tmp", READ, PFile::UNLOCKED));
    EXPECT_CODE(PERR_READ, file.pread(&byte, 1, done));
    EXPECT_CODE(PERR_OK, full.popen(L"/dev/full", WRITE, PFile::UNLOCKED));
    EXPECT_CODE(PERR_WRITE, full.pwrite(&byte, 1, done));
    EXPECT_CODE(PERR_WRITE, full.pwriteLine(L"x"));
    EXPECT_CODE(PERR_WRITE, full.pwriteLine(L"")) << "the line feed itself";
}

TEST_F(FileTransfer, IsOverOnceTheFileIsClosed) {
    long long size = 77;
    EXPECT_CODE(PERR_OK, file.popen(L"/dev/null", READ | WRITE, PFile::UNLOCKED));
    EXPECT_CODE(PERR_OK, file.pclose());
    EXPECT_FALSE(file.isOpen());
    EXPECT_CODE(PERR_NOT_OPEN, file.pclose());
    EXPECT_CODE(PERR_NOT_OPEN, file.pread(&byte, 1, done));
    EXPECT_CODE(PERR_NOT_OPEN, file.pwrite(&byte, 1, done));
    EXPECT_CODE(PERR_NOT_OPEN, file.pseek(0, 0));
    EXPECT_CODE(PERR_NOT_OPEN, file.pgetSize(size));
    EXPECT_CODE(PERR_NOT_OPEN, file.pflush());
    EXPECT_CODE(PERR_NOT_OPEN, file.pgetName(text));
    EXPECT_CODE(PERR_OK, file.popen(L"/dev/null", READ, PFile::UNLOCKED));
}

TEST_F(FileOpen, NameIsCutToWhatFollowsItsLastSlash) {
    text = L"a/b\\c";
    PFile::getFileName(text);
    EXPECT_TEXT(L"b\\c", text);
}
