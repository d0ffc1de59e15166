#include <csignal>

#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/xattr.h>

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
    static int replace(std::wstring const& name, std::wstring const& line) {
        PReplacement replacement;
        int result = replacement.begin(name.c_str());
        if (result == PERR_OK) result = replacement.writeLine(line.c_str());
        return result == PERR_OK ? replacement.commit() : result;
    }
    PReplacement replacement;
};

TEST_F(Replacement, HasTheModeOfTheOldFileAndIsNeverMoreOpen) {
    for (std::string const mode : {"600", "444", "70", "6755"}) {
        SCOPED_TRACE(mode);
        auto const rights = fs::perms(std::stoul(mode, nullptr, 8));
        fs::permissions(scratch.write("old", "old"), rights);
        fs::create_hard_link(scratch.path("old"), scratch.path("link"));
        ASSERT_CODE(PERR_OK, replacement.begin(scratch.wpath("old").c_str()));
        std::string const made = *namesIn(scratch.dir()).begin();  // it starts with a dot
        EXPECT_EQ(fs::perms::none, fs::status(scratch.path(made)).permissions() & ~rights)
            << "made with " << modeOf(scratch.path(made));
        EXPECT_CODE(PERR_OK, replacement.write("new", 3));
        EXPECT_CODE(PERR_OK, replacement.commit());
        EXPECT_EQ("new", scratch.read("old"));
        EXPECT_EQ(mode, modeOf(scratch.path("old")));
        EXPECT_EQ("old", scratch.read("link"));
        fs::remove(scratch.path("link"));
        fs::remove(scratch.path("old"));
    }
}

TEST_F(Replacement, OfAFileWithoutAccessListGetsNoneFromItsFolder) {
    scratch.write("file", "old");
    // The version; then the rights with the tag, and the id, of owner, one user, group, mask, rest.
    std::uint32_t const list[] = {2,   0x70001, ~0U, 0x70002, 2002, 0x50004,
                                  ~0U, 0x70010, ~0U, 0x20,    ~0U};
    ASSERT_EQ(0, setxattr(scratch.dir().c_str(), "system.posix_acl_default", list, sizeof list, 0))
        << "the folder of the tests keeps no access lists";
    EXPECT_CODE(PERR_OK, replace(scratch.wpath("file"), L"new"));
    EXPECT_EQ(-1, getxattr(scratch.path("file").c_str(), "system.posix_acl_access", nullptr, 0));
}

TEST_F(Replacement, IsFlushedBeforeItIsMovedAndTheFolderAfterwards) {
    steps.clear();
    EXPECT_CODE(PERR_OK, replace(scratch.wpath("file"), L"new"));
    EXPECT_EQ("flush file move flush folder ", steps);
}

TEST_F(Replacement, TakesNothingThatIsPrintedToAClosedStream) {
    inAChild([&] {
        for (int const stream : {0, 1, 2}) (void)close(stream);
        EXPECT_CODE(PERR_OK, replacement.begin(scratch.wpath("file").c_str()));
        for (int const stream : {0, 1, 2}) EXPECT_EQ(-1, ::write(stream, "printed", 7));
        EXPECT_CODE(PERR_OK, replacement.commit());
    });
}

TEST_F(Replacement, MakesAMissingFileWithTheModeThatTheUmaskLeaves) {
    mode_t const before = umask(027);
    EXPECT_CODE(PERR_OK, replace(scratch.wpath(" \\") + L"\xE9 ", L" \x20AC\\\xE9 "));
    EXPECT_EQ(027U, umask(before));
    EXPECT_EQ("640", modeOf(scratch.path(" \\\xC3\xA9 ")));
    EXPECT_EQ(" \xE2\x82\xAC\\\xC3\xA9 \n", scratch.read(" \\\xC3\xA9 ")) << "in the C locale";
}

TEST_F(Replacement, FollowsSymbolicLinksToTheFileThatTheyName) {
    struct {
        char const *link, *target, *file;
    } const rows[] = {{"a/beside", "file", "a/file"},
                      {"to", "a/beside", "a/file"},
                      {"a/dangling", "../not-there", "not-there"}};
    fs::create_directory(scratch.path("a"));
    for (auto const& row : rows) {
        fs::create_symlink(row.target, scratch.path(row.link));
        EXPECT_CODE(PERR_OK, replace(scratch.wpath(row.link), wide(row.link)));
        EXPECT_EQ(std::string(row.link) + "\n", scratch.read(row.file));
        EXPECT_TRUE(fs::is_symlink(scratch.path(row.link))) << row.link;
    }
}

TEST_F(Replacement, BeginsOnlyWhereANewFileMayStand) {
    fs::create_symlink("ring", scratch.path("ring"));
    scratch.write("file", "old");
    ASSERT_EQ(0, mkfifo(scratch.path("pipe").c_str(), 0600));
    struct {
        char const* what;
        std::wstring name;
        int code;
    } const rows[] = {
        {"no name", L"", PERR_INVALID_ARGUMENT},
        {"a surrogate", scratch.wpath("a") + wchar_t(0xD800), PERR_BAD_FORMAT},
        {"no such folder", scratch.wpath("none/file"), PERR_NO_SUCH_FILE},
        {"a file for a folder", scratch.wpath("file/file"), PERR_NO_SUCH_FILE},
        {"a folder", wide(scratch.dir()), PERR_REFUSED},
        {"a slash behind", wide(scratch.dir()) + L"/", PERR_REFUSED},
        {"a pipe", scratch.wpath("pipe"), PERR_REFUSED},
        {"a ring of links", scratch.wpath("ring"), PERR_REFUSED},
        {"too long a name", scratch.wpath(std::string(256, 'n')), PERR_SYSTEM},
    };
    for (auto const& row : rows) {
        EXPECT_CODE(row.code, replacement.begin(row.name.c_str())) << row.what;
        EXPECT_CODE(PERR_NOT_OPEN, replacement.commit()) << row.what;
    }
    EXPECT_CODE(PERR_OK, replace(scratch.wpath(std::string(255, 'n')), L"the longest"));
}

TEST_F(Replacement, MeansTheFileOfTheMomentItBegan) {
    fs::path const before = fs::current_path();
    fs::current_path(scratch.dir());
    EXPECT_CODE(PERR_OK, replacement.begin(L"file"));
    fs::current_path(before);
    EXPECT_CODE(PERR_OK, replacement.commit());
    EXPECT_EQ(std::set<std::string>{"file"}, namesIn(scratch.dir()));
}

TEST_F(Replacement, IsUnderWayFromBeginToItsEnd) {
    scratch.write("file", "old");
    EXPECT_CODE(PERR_NOT_OPEN, replacement.write("", 0));
    EXPECT_CODE(PERR_NOT_OPEN, replacement.writeLine(L""));
    EXPECT_CODE(PERR_OK, replacement.begin(scratch.wpath("file").c_str()));
    EXPECT_CODE(PERR_ALREADY_OPEN, replacement.begin(scratch.wpath("other").c_str()));
    EXPECT_CODE(PERR_OK, replacement.write("new", 3));
    replacement.abandon();
    EXPECT_CODE(PERR_NOT_OPEN, replacement.commit());
    EXPECT_EQ("old", scratch.read("file"));

    EXPECT_CODE(PERR_OK, replacement.begin(scratch.wpath("file").c_str()));
    EXPECT_CODE(PERR_OK, replacement.write(nullptr, 0));
    EXPECT_CODE(PERR_OK, replacement.writeLine(L""));
    EXPECT_CODE(PERR_OK, replacement.commit());
    EXPECT_EQ("\n", scratch.read("file"));
    EXPECT_EQ(std::set<std::string>{"file"}, namesIn(scratch.dir()));
}

TEST_F(Replacement, TellsAFailedWriteAgainAndLeavesTheOldContent) {
    std::string const much(9'999, 'n');
    struct {
        char const* what;
        std::function<int(PReplacement&)> write;
        int code;
    } const rows[] = {
        {"no space", [&](auto& r) { return r.write(much.data(), 9'999); }, PERR_WRITE},
        {"no bytes", [](auto& r) { return r.write(nullptr, 1); }, PERR_INVALID_ARGUMENT},
        {"a surrogate", [](auto& r) { return r.writeLine(L"\xD800"); }, PERR_BAD_FORMAT},
        {"a zero", [](auto& r) { return r.writeLine(PString(L"\0", 1)); }, PERR_INVALID_ARGUMENT},
    };
    scratch.write("file", "old");
    inAChild([&] {
        rlimit const most{9'999, 9'999};
        (void)setrlimit(RLIMIT_FSIZE, &most);
        (void)signal(SIGXFSZ, SIG_IGN);
        for (auto const& row : rows) {
            EXPECT_CODE(PERR_OK, replacement.begin(scratch.wpath("file").c_str()));
            EXPECT_CODE(PERR_OK, replacement.write("new", 3));
            EXPECT_CODE(row.code, row.write(replacement)) << row.what;
            EXPECT_CODE(row.code, replacement.writeLine(L"more")) << row.what;
            EXPECT_CODE(row.code, replacement.commit()) << row.what;
        }
    });
    EXPECT_EQ("old", scratch.read("file"));
    EXPECT_EQ(std::set<std::string>{"file"}, namesIn(scratch.dir()));
}

TEST_F(Replacement, IsInheritedByNoProgramAndNeitherIsALock) {
    PFileLock lock;
    std::string const list = "ls -l /proc/self/fd | grep -q ";
    EXPECT_CODE(PERR_OK, replacement.begin(scratch.wpath("file").c_str()));
    EXPECT_CODE(PERR_OK, lock.lock(scratch.wpath("lock").c_str(), 0));
    EXPECT_EQ(0, std::system((list + "pipe:").c_str()));
    EXPECT_NE(0, std::system((list + scratch.dir()).c_str()));
}

TEST_F(Replacement, StaysWithItsProcessAcrossAFork) {
    EXPECT_CODE(PERR_OK, replacement.begin(scratch.wpath("file").c_str()));
    inAChild([&] {
        EXPECT_CODE(PERR_NOT_OPEN, replacement.commit());
        replacement.~PReplacement();
    });
    EXPECT_CODE(PERR_OK, replacement.commit());
    EXPECT_EQ(std::set<std::string>{"file"}, namesIn(scratch.dir()));
}
