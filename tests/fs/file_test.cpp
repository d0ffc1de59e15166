#include <type_traits>

#include <fcntl.h>
#include <sys/stat.h>

#include <faults/interpose.h>
#include <fs/files.h>
#include <support/child_run.h>

static_assert(sizeof(PFile) == 64 && alignof(PFile) == 8);
static_assert(std::has_virtual_destructor_v<PFile> && !std::is_copy_constructible_v<PFile>);

constexpr unsigned int READ = PFile::OPEN_READ, WRITE = PFile::OPEN_WRITE;
constexpr unsigned int APPEND = PFile::OPEN_APPEND, TRUNCATE = PFile::OPEN_TRUNCATE;
constexpr unsigned int CREATE = PFile::OPEN_CREATE, SAFE_WRITE = PFile::OPEN_SAFE_WRITE;

static int lockRefusal = 0;  // the reason for which the system refuses locks; 0 lets it decide

INTERPOSE(flock, if (lockRefusal != 0) return errno = lockRefusal, -1)

TEST(FileOpen, TurnsModeBitsIntoThoseOfTheSystem) {
    struct {
        char const* what;
        unsigned int flags;
        int system;
        char const* content;
    } const rows[] = {
        {"nothing asked for", 0, O_RDONLY, "old"},
        {"reading", READ, O_RDONLY, "old"},
        {"writing", WRITE, O_WRONLY, "old"},
        {"both", READ | WRITE, O_RDWR, "old"},
        {"both, and a bit without meaning", READ | WRITE | 64, O_RDWR, "old"},
        {"appending", APPEND, O_RDONLY | O_APPEND, "old"},
        {"truncating", WRITE | TRUNCATE, O_WRONLY, ""},
        {"creating what is there", CREATE, O_RDONLY, "old"},
        {"creating and truncating, to be read", CREATE | TRUNCATE, O_RDONLY, ""},
    };
    for (auto const& row : rows) {
        SCOPED_TRACE(row.what);
        Scratch const scratch;
        PString const name = named(scratch.write("f", "old"));
        int const descriptor = dup(0);  // and free again, for the file to get it
        (void)close(descriptor);
        PFile file;
        ASSERT_CODE(PERR_OK, file.popen(name, row.flags, PFile::UNLOCKED));
        EXPECT_EQ(row.system, fcntl(descriptor, F_GETFL) & (O_ACCMODE | O_APPEND));
        EXPECT_EQ(FD_CLOEXEC, fcntl(descriptor, F_GETFD));
        EXPECT_EQ(row.content, scratch.read("f"));
    }
}

TEST(FileOpen, RefusesWhatIsNoNameOrNoMode) {
    PFile file;
    EXPECT_CODE(PERR_INVALID_ARGUMENT, file.popen(L"", READ, PFile::UNLOCKED));
    EXPECT_CODE(PERR_INVALID_ARGUMENT, file.popen(L"/dev/null", TRUNCATE, PFile::UNLOCKED));
    EXPECT_CODE(PERR_INVALID_ARGUMENT, file.popen(L"/dev/null", TRUNCATE | READ, PFile::UNLOCKED));
    EXPECT_CODE(PERR_INVALID_ARGUMENT, file.popen(L"/dev/null", SAFE_WRITE, PFile::UNLOCKED));
    EXPECT_CODE(PERR_INVALID_ARGUMENT, file.popen(L"/dev/null", SAFE_WRITE | READ, 0));
    EXPECT_FALSE(file.isOpen());
}

TEST(FileOpen, TellsWhatIsMissingFromWhatIsRefused) {
    Scratch const scratch;
    PFile file;
    EXPECT_CODE(PERR_NO_SUCH_FILE, file.popen(named(scratch.path("f")), WRITE, PFile::UNLOCKED));
    EXPECT_CODE(PERR_OPEN, file.popen(named(scratch.dir()), WRITE, PFile::UNLOCKED));
    EXPECT_CODE(PERR_OPEN, file.popen(L"/tmp/\u00e9", READ, PFile::UNLOCKED)) << "in no C locale";
    EXPECT_FALSE(file.isOpen());
}

TEST(FileOpen, MakesAFileForAllToReadWhoseBackslashesAreSlashes) {
    Scratch const scratch;
    PString name;
    PFile file;
    mode_t const mask = umask(0);
    EXPECT_CODE(PERR_OK, file.popen(named(scratch.dir() + "\\f"), CREATE, PFile::EXCLUSIVE));
    (void)umask(mask);
    struct stat facts {};
    EXPECT_EQ(0, stat(scratch.path("f").c_str(), &facts));
    EXPECT_EQ(0644U, facts.st_mode & 07777U);
    EXPECT_CODE(PERR_OK, file.pgetName(name));
    EXPECT_TEXT(scratch.wpath("f"), name);
}

TEST(FileOpen, IsRefusedWhileOpenAndChangesNothing) {
    Scratch const scratch;
    PString name;
    PFile file;
    EXPECT_CODE(PERR_OK, file.popen(named(scratch.write("f", "")), READ, PFile::EXCLUSIVE));
    EXPECT_CODE(PERR_ALREADY_OPEN, file.popen(L"/dev/null", READ, PFile::UNLOCKED));
    EXPECT_CODE(PERR_OK, file.pgetName(name));
    EXPECT_TEXT(scratch.wpath("f"), name);
}

TEST(ExclusiveOpen, OfASecondHandleIsRefusedAndLeavesItHalfOpen) {
    Scratch const scratch;
    PString const path = named(scratch.write("f", "content"));
    PString name(L"?", 1);
    char byte = 0;
    unsigned long done = 0;
    PFile holder, other;
    EXPECT_CODE(PERR_OK, holder.popen(path, READ, PFile::EXCLUSIVE));
    EXPECT_CODE(PERR_OK, PFile().popen(path, READ, PFile::UNLOCKED)) << "it asks for no lock";
    EXPECT_CODE(PERR_LOCKED, other.popen(path, READ, PFile::EXCLUSIVE));
    EXPECT_TRUE(other.isOpen());
    EXPECT_CODE(PERR_ALREADY_OPEN, other.popen(path, READ, PFile::EXCLUSIVE));
    EXPECT_CODE(PERR_OK, other.pgetName(name));
    EXPECT_TEXT(L"", name);
    EXPECT_CODE(PERR_OK, other.pread(&byte, 1, done)) << "half open, it reads";
    EXPECT_CODE(PERR_OK, other.pclose());

    EXPECT_CODE(PERR_OK, holder.pclose());
    EXPECT_CODE(PERR_OK, other.popen(path, READ, PFile::EXCLUSIVE)) << "the lock is gone";
}

TEST(ExclusiveOpen, RefusedForAnotherReasonLeavesTheHandleHalfOpen) {
    struct {
        char const* what;
        int reason;
        unsigned int flags;
        int code;
    } const rows[] = {
        {"no room for locks", ENOLCK, WRITE, PERR_OPEN},
        {"no room for locks, safe writing", ENOLCK, SAFE_WRITE, PERR_OPEN},
        {"held by another, safe writing", EAGAIN, SAFE_WRITE, PERR_LOCKED},
    };
    for (auto const& row : rows) {
        SCOPED_TRACE(row.what);
        Scratch const scratch;
        PFile file;
        lockRefusal = row.reason;
        EXPECT_CODE(row.code, file.popen(named(scratch.write("f", "old")), row.flags, 0));
        lockRefusal = 0;
        EXPECT_TRUE(file.isOpen());
        EXPECT_CODE(PERR_OK, file.pclose()) << "nothing is moved";
        EXPECT_EQ("old", scratch.read("f"));
        EXPECT_EQ(row.flags == SAFE_WRITE ? 2U : 1U, namesIn(scratch.dir()).size());
    }
}

TEST(FileRead, GivesBytesUpToTheEnd) {
    Scratch const scratch;
    char buffer[8] = "";
    unsigned long done = 77;
    PFile file;
    EXPECT_CODE(PERR_OK, file.popen(named(scratch.write("f", "abc")), READ, PFile::UNLOCKED));
    EXPECT_CODE(PERR_INVALID_ARGUMENT, file.pread(nullptr, 1, done));
    EXPECT_CODE(PERR_INVALID_ARGUMENT, file.pread(buffer, 0, done));
    EXPECT_EQ(77U, done);
    EXPECT_CODE(PERR_OK, file.pread(buffer, 8, done));
    EXPECT_EQ(3U, done);
    EXPECT_STREQ("abc", buffer);
    EXPECT_CODE(PERR_END_OF_FILE, file.pread(buffer, 8, done));
    EXPECT_EQ(3U, done) << "written on success only";
}

TEST(FileWrite, TellsHowManyBytesWent) {
    Scratch const scratch;
    unsigned long done = 77;
    long long size = 77;
    PFile file;
    EXPECT_CODE(PERR_OK, file.popen(named(scratch.path("f")), WRITE | CREATE, PFile::UNLOCKED));
    EXPECT_CODE(PERR_END_OF_FILE, file.pwrite("abc", 0, done));
    EXPECT_EQ(77U, done);
    EXPECT_CODE(PERR_OK, file.pwrite("abc", 3, done));
    EXPECT_EQ(3U, done);
    EXPECT_CODE(PERR_OK, file.pflush());
    EXPECT_CODE(PERR_OK, file.pgetSize(size));
    EXPECT_EQ(3, size);
    EXPECT_EQ("abc", scratch.read("f"));
}

TEST(FileTransfer, IsRefusedByFoldersAndByWhatIsFull) {
    char byte = 0;
    unsigned long done = 77;
    PFile folder, full;
    EXPECT_CODE(PERR_OK, folder.popen(L"/tmp", READ, PFile::UNLOCKED));
    EXPECT_CODE(PERR_READ, folder.pread(&byte, 1, done));
    EXPECT_CODE(PERR_OK, full.popen(L"/dev/full", WRITE, PFile::UNLOCKED));
    EXPECT_CODE(PERR_WRITE, full.pwrite(&byte, 1, done));
    EXPECT_EQ(77U, done);
}

TEST(FileSeek, MovesFromWhatWhenceNames) {
    struct {
        char const* what;
        long long offset;
        int whence, code;
        char next;
    } const rows[] = {
        {"from the start", 1, 0, PERR_OK, 'b'},
        {"from where it is", 1, 1, PERR_OK, 'd'},
        {"back from where it is", -1, 1, PERR_OK, 'b'},
        {"back from the end", -1, 2, PERR_OK, 'e'},
        {"to data", 3, 3, PERR_OK, 'd'},
        {"to data behind the end", 9, 3, PERR_SEEK, 'c'},
        {"before the start", -1, 0, PERR_SEEK, 'c'},
        {"from nothing known", 0, 5, PERR_SEEK, 'c'},
    };
    for (auto const& row : rows) {
        SCOPED_TRACE(row.what);
        Scratch const scratch;
        char byte = 0;
        unsigned long done = 0;
        PFile file;
        EXPECT_CODE(PERR_OK, file.popen(named(scratch.write("f", "abcde")), READ, PFile::UNLOCKED));
        EXPECT_CODE(PERR_OK, file.pseek(2, 0));
        EXPECT_CODE(row.code, file.pseek(row.offset, row.whence));
        EXPECT_CODE(PERR_OK, file.pread(&byte, 1, done));
        EXPECT_EQ(row.next, byte);
    }
}

TEST(FileSeek, TakesPositionsThatLookNegative) {
    PFile memory;
    EXPECT_CODE(PERR_OK, memory.popen(L"/proc/self/mem", READ, PFile::UNLOCKED));
    EXPECT_CODE(PERR_OK, memory.pseek(-(1LL << 47), 0)) << "unsigned there, and no failure";
}

TEST(FileClose, LeavesAHandleThatRefusesAllButOpening) {
    PFile file;
    PString text(L"?", 1);
    char byte = '?';
    unsigned long done = 77;
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
    EXPECT_CODE(PERR_NOT_OPEN, file.preadLine(text));
    EXPECT_CODE(PERR_NOT_OPEN, file.pwriteLine(text));
    EXPECT_EQ(77U, done);
    EXPECT_EQ(77, size);
    EXPECT_TEXT(L"?", text);
    EXPECT_CODE(PERR_OK, file.popen(L"/dev/null", READ, PFile::UNLOCKED));
}

TEST(FileName, IsCutToWhatFollowsItsLastSlash) {
    struct {
        wchar_t const *path, *name;
    } const rows[] = {
        {L"/a/b/c.txt", L"c.txt"},    {L"dir/", L""}, {L"/f", L"f"}, {L"plain", L"plain"},
        {L"a/b\\c.txt", L"b\\c.txt"}, {L"", L""}};
    for (auto const& row : rows) {
        PString path(row.path, P_WHOLE_STRING);
        PFile::getFileName(path);
        EXPECT_TEXT(row.name, path) << "of " << testing::PrintToString(row.path);
    }
}

TEST(FileSignals, EndWhatWaitsAndCutShortWhatIsUnderWay) {
    Scratch const scratch;
    PString const name = named(scratch.path("pipe"));
    std::string const much(1 << 20, 'x');
    char byte = 0;
    unsigned long done = 0;
    PFile file;
    EXPECT_EQ(0, mkfifo(scratch.path("pipe").c_str(), 0600));
    EXPECT_CODE(PERR_OPEN, interrupted([&] { return file.popen(name, READ, PFile::UNLOCKED); }));
    ASSERT_CODE(PERR_OK, file.popen(name, READ | WRITE, PFile::UNLOCKED));
    EXPECT_CODE(PERR_READ, interrupted([&] { return file.pread(&byte, 1, done); }));
    EXPECT_CODE(PERR_OK, interrupted([&] { return file.pwrite(much.data(), much.size(), done); }));
    EXPECT_GT(much.size(), done) << "what found room";
    EXPECT_CODE(PERR_WRITE, interrupted([&] { return file.pwrite("x", 1, done); }));
}
