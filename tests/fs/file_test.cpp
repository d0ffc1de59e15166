#include <fcntl.h>
#include <sys/stat.h>

#include <fs/files.h>

constexpr unsigned int APPEND = PFile::OPEN_APPEND, TRUNCATE = PFile::OPEN_TRUNCATE;

class FileOpen : public InAFolder {
protected:
    /// The mode bits of the system of a file that reads "old" and is opened.
    int openedAs(unsigned int flags) {
        PString const name = named(scratch.write("f", "old"));
        int const descriptor = dup(0);  // and free again, for the file to get it
        (void)close(descriptor);
        PFile opened;
        EXPECT_CODE(PERR_OK, opened.popen(name, flags, PFile::UNLOCKED));
        EXPECT_EQ(FD_CLOEXEC, fcntl(descriptor, F_GETFD));
        return fcntl(descriptor, F_GETFL) & (O_ACCMODE | O_APPEND);
    }
};

using FileTransfer = InAFolder;

TEST_F(FileOpen, TurnsModeBitsIntoThoseOfTheSystem) {
    EXPECT_EQ(O_RDONLY, openedAs(0));
    EXPECT_EQ(O_WRONLY, openedAs(WRITE));
    EXPECT_EQ(O_RDWR, openedAs(READ | WRITE | 64)) << "with a bit without meaning";
    EXPECT_EQ(O_RDONLY | O_APPEND, openedAs(APPEND));
    EXPECT_EQ("old", scratch.read("f"));
    EXPECT_EQ(O_WRONLY, openedAs(WRITE | TRUNCATE));
    EXPECT_EQ("", scratch.read("f"));
    EXPECT_EQ(O_RDONLY, openedAs(CREATE | TRUNCATE));
    EXPECT_EQ("", scratch.read("f"));
}

TEST_F(FileOpen, TellsWhyNothingIsOpened) {
    PString const missing = named(scratch.path("f"));
    EXPECT_CODE(PERR_INVALID_ARGUMENT, file.popen(L"", READ, 1));
    EXPECT_CODE(PERR_INVALID_ARGUMENT, file.popen(missing, TRUNCATE | READ, 1));
    EXPECT_CODE(PERR_INVALID_ARGUMENT, file.popen(missing, SAFE_WRITE, 1)) << "no lock";
    EXPECT_CODE(PERR_INVALID_ARGUMENT, file.popen(missing, SAFE_WRITE | READ, 0));
    EXPECT_CODE(PERR_OPEN, file.popen(named(scratch.dir()), WRITE, 1)) << "a folder";
    EXPECT_CODE(PERR_OPEN, file.popen(L"/tmp/\u00e9", READ, 1)) << "no name in the C locale";
    EXPECT_CODE(PERR_NO_SUCH_FILE, file.popen(missing, WRITE, 1));
    EXPECT_EQ(ENOENT, errno) << "the system's reason stays";
    EXPECT_FALSE(file.isOpen());
}

TEST_F(FileOpen, MakesAFileForAllToReadAndLockedLeavesAnotherHandleHalfOpen) {
    PString const path = named(scratch.path("f"));
    PFile other;
    mode_t const mask = umask(0);
    EXPECT_CODE(PERR_OK, file.popen(named(scratch.dir() + "\\f"), CREATE, PFile::EXCLUSIVE));
    (void)umask(mask);
    EXPECT_EQ("644", modeOf(scratch.path("f")));
    EXPECT_CODE(PERR_ALREADY_OPEN, file.popen(L"/dev/null", READ, PFile::UNLOCKED));
    EXPECT_CODE(PERR_OK, file.pgetName(text));
    EXPECT_TEXT(view(path), text) << "with slashes";

    EXPECT_CODE(PERR_OK, PFile().popen(path, READ, PFile::UNLOCKED)) << "it asks for no lock";
    EXPECT_CODE(PERR_LOCKED, other.popen(path, READ, PFile::EXCLUSIVE));
    EXPECT_TRUE(other.isOpen());
    EXPECT_CODE(PERR_OK, other.pgetName(text));
    EXPECT_TEXT(L"", text);
    EXPECT_CODE(PERR_END_OF_FILE, other.pread(&byte, 1, done)) << "half open, it reads";
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
}

TEST_F(FileOpen, NameIsCutToWhatFollowsItsLastSlash) {
    text = L"a/b\\c";
    PFile::getFileName(text);
    EXPECT_TEXT(L"b\\c", text);
}
