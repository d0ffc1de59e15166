#include <csignal>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <faults/interpose.h>
#include <fs/files.h>
#include <portinglayer/file_locks.h>
#include <portinglayer/replacements.h>

namespace fs = std::filesystem;

static std::string steps;  // those that make new content last

static bool _isFolder(long fd) {
    struct stat facts = {};
    return fstat(static_cast<int>(fd), &facts) == 0 && S_ISDIR(facts.st_mode);
}

INTERPOSE(fsync, steps += _isFolder(a) ? "flush folder " : "flush file ")
INTERPOSE(renameat, steps += "move ")

class Replacement : public InAFolder {
protected:
    int begin(std::string const& name) { return replacement.begin(scratch.wpath(name).c_str()); }

    PReplacement replacement;
};

TEST_F(Replacement, HasTheModeOfTheOldFileAndIsNeverMoreOpen) {
    for (std::string const mode : {"444", "6710"}) {
        auto const rights = fs::perms(std::stoul(mode, nullptr, 8));
        fs::permissions(scratch.write(mode, "old"), rights);
        ASSERT_CODE(PERR_OK, begin(mode));
        std::string const made = *namesIn(scratch.dir()).begin();  // it starts with a dot
        EXPECT_EQ(fs::perms::none, fs::status(scratch.path(made)).permissions() & ~rights)
            << "made with " << modeOf(scratch.path(made));
        EXPECT_CODE(PERR_OK, replacement.commit());
        EXPECT_EQ("", scratch.read(mode));
        EXPECT_EQ(mode, modeOf(scratch.path(mode)));
    }
}

TEST_F(Replacement, HasTheModeOfAFileThatIsMadeMeanwhile) {
    ASSERT_CODE(PERR_OK, begin("file"));
    fs::permissions(scratch.write("file", "other"), fs::perms::owner_read);
    EXPECT_CODE(PERR_OK, replacement.commit());
    EXPECT_EQ("", scratch.read("file"));
    EXPECT_EQ("400", modeOf(scratch.path("file")));
}

TEST_F(Replacement, IsFlushedBeforeItIsMovedAndTheFolderAfterwards) {
    EXPECT_CODE(PERR_OK, begin("file"));
    steps.clear();
    EXPECT_CODE(PERR_OK, replacement.commit());
    EXPECT_EQ("flush file move flush folder ", steps);
}

TEST_F(Replacement, MakesAMissingFileWithTheModeThatTheUmaskLeaves) {
    mode_t const before = umask(027);
    EXPECT_CODE(PERR_OK, replacement.begin((scratch.wpath(" \\") + L"\xE9 ").c_str()));
    EXPECT_CODE(PERR_OK, replacement.writeLine(L" \x20AC\\\xE9 "));
    EXPECT_CODE(PERR_OK, replacement.commit());
    EXPECT_EQ(027U, umask(before));
    EXPECT_EQ("640", modeOf(scratch.path(" \\\xC3\xA9 ")));
    EXPECT_EQ(" \xE2\x82\xAC\\\xC3\xA9 \n", scratch.read(" \\\xC3\xA9 ")) << "in the C locale";
}

TEST_F(Replacement, FollowsSymbolicLinksToTheFileThatTheyName) {
    fs::create_directory(scratch.path("a"));
    fs::create_symlink("a/dangling", scratch.path("link"));
    fs::create_symlink("../file", scratch.path("a/dangling"));
    EXPECT_CODE(PERR_OK, begin("link"));
    EXPECT_CODE(PERR_OK, replacement.commit());
    EXPECT_TRUE(fs::is_regular_file(fs::symlink_status(scratch.path("file"))));
    EXPECT_TRUE(fs::is_symlink(scratch.path("link")));
    EXPECT_TRUE(fs::is_symlink(scratch.path("a/dangling")));
}

TEST_F(Replacement, BeginsOnlyWhereANewFileMayStand) {
    fs::create_symlink("ring", scratch.path("ring"));
    EXPECT_EQ(0, mkfifo(scratch.path("pipe").c_str(), 0600));
    scratch.write("file", "old");
    EXPECT_CODE(PERR_INVALID_ARGUMENT, replacement.begin(L""));
    EXPECT_CODE(PERR_BAD_FORMAT, replacement.begin(L"\xD800"));
    EXPECT_CODE(PERR_NO_SUCH_FILE, begin("none/file"));
    EXPECT_CODE(PERR_NO_SUCH_FILE, begin("file/file"));
    EXPECT_CODE(PERR_REFUSED, begin("."));
    EXPECT_CODE(PERR_REFUSED, begin("")) << "a slash behind";
    EXPECT_CODE(PERR_REFUSED, begin("pipe"));
    EXPECT_CODE(PERR_REFUSED, begin("ring"));
    EXPECT_CODE(PERR_SYSTEM, begin(std::string(256, 'n')));
    EXPECT_CODE(PERR_NOT_OPEN, replacement.commit());
    EXPECT_CODE(PERR_OK, begin(std::string(255, 'n'))) << "the longest";
}

TEST_F(Replacement, IsUnderWayFromBeginToItsEnd) {
    fs::path const before = fs::current_path();
    scratch.write("file", "old");
    EXPECT_CODE(PERR_NOT_OPEN, replacement.write("", 0));
    EXPECT_CODE(PERR_NOT_OPEN, replacement.writeLine(L""));
    EXPECT_CODE(PERR_OK, begin("file"));
    EXPECT_CODE(PERR_ALREADY_OPEN, begin("other"));
    EXPECT_CODE(PERR_OK, replacement.write("new", 3));
    replacement.abandon();
    EXPECT_CODE(PERR_NOT_OPEN, replacement.commit());
    EXPECT_EQ("old", scratch.read("file"));

    fs::current_path(scratch.dir());
    EXPECT_CODE(PERR_OK, replacement.begin(L"file"));
    fs::current_path(before);
    EXPECT_CODE(PERR_OK, replacement.write(nullptr, 0));
    EXPECT_CODE(PERR_OK, replacement.writeLine(L""));
    EXPECT_CODE(PERR_OK, replacement.commit()) << "means the file of the moment it began";
    EXPECT_EQ("\n", scratch.read("file"));
    EXPECT_EQ(std::set<std::string>{"file"}, namesIn(scratch.dir()));
}

TEST_F(Replacement, TellsAFailedWriteAgainAndLeavesTheOldContent) {
    scratch.write("file", "old");
    EXPECT_CODE(PERR_OK, begin("file"));
    EXPECT_CODE(PERR_BAD_FORMAT, replacement.writeLine(L"\xD800"));
    EXPECT_CODE(PERR_BAD_FORMAT, replacement.writeLine(L"more"));
    EXPECT_CODE(PERR_BAD_FORMAT, replacement.commit());
    EXPECT_CODE(PERR_OK, begin("file"));
    EXPECT_CODE(PERR_INVALID_ARGUMENT, replacement.write(nullptr, 1));
    EXPECT_CODE(PERR_INVALID_ARGUMENT, replacement.commit());
    inAChild([&] {
        rlimit const most{9'999, 9'999};
        (void)setrlimit(RLIMIT_FSIZE, &most);
        (void)signal(SIGXFSZ, SIG_IGN);
        EXPECT_CODE(PERR_OK, begin("file"));
        EXPECT_CODE(PERR_OK, replacement.write("new", 3));
        EXPECT_CODE(PERR_WRITE, replacement.write(std::string(9'999, 'n').data(), 9'999));
        EXPECT_CODE(PERR_WRITE, replacement.commit()) << "no space";
    });
    EXPECT_EQ("old", scratch.read("file"));
    EXPECT_EQ(std::set<std::string>{"file"}, namesIn(scratch.dir()));
}

TEST_F(Replacement, IsInheritedByNoProgramAndNeitherIsALock) {
    PFileLock lock;
    std::string const list = "ls -l /proc/self/fd | grep -q ";
    EXPECT_CODE(PERR_OK, begin("file"));
    EXPECT_CODE(PERR_OK, lock.lock(scratch.wpath("lock").c_str(), 0));
    EXPECT_EQ(0, std::system((list + "pipe:").c_str()));
    EXPECT_NE(0, std::system((list + scratch.dir()).c_str()));
}

TEST_F(Replacement, StandsInForNoClosedStandardStreamAndNeitherDoesALock) {
    PFileLock lock;
    int const input = dup(0);
    (void)close(0);
    EXPECT_CODE(PERR_OK, begin("file"));
    EXPECT_CODE(PERR_OK, lock.lock(scratch.wpath("lock").c_str(), 0));
    EXPECT_EQ(-1, fcntl(0, F_GETFD));
    (void)dup2(input, 0);
    (void)close(input);
}

TEST_F(Replacement, StaysWithItsProcessAcrossAFork) {
    EXPECT_CODE(PERR_OK, begin("file"));
    inAChild([&] {
        EXPECT_CODE(PERR_NOT_OPEN, replacement.commit());
        replacement.~PReplacement();
    });
    EXPECT_CODE(PERR_OK, replacement.commit());
    EXPECT_EQ(std::set<std::string>{"file"}, namesIn(scratch.dir()));
}
