#include <clocale>
#include <csignal>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/xattr.h>

#include <portinglayer/replacements.h>
#include <support/child_run.h>
#include <support/expect.h>
#include <support/scratch.h>

namespace fs = std::filesystem;

namespace {

unsigned int _mode(std::string const& path) {
    struct stat facts = {};
    EXPECT_EQ(0, stat(path.c_str(), &facts)) << path;
    return facts.st_mode & 07777;
}

std::size_t _entries(std::string const& folder) {
    return static_cast<std::size_t>(std::distance(fs::directory_iterator(folder), {}));
}

/// The new file of the replacement under way.
std::string _newFile(std::string const& folder) {
    for (auto const& entry : fs::directory_iterator(folder))
        if (entry.path().filename().string().starts_with(".replacement-")) return entry.path();
    return "";
}

int _replace(std::wstring const& name, std::wstring const& line) {
    PReplacement replacement;
    int result = replacement.begin(name.c_str());
    if (result == PERR_OK) result = replacement.writeLine(line.c_str());
    return result == PERR_OK ? replacement.commit() : result;
}

}  // namespace

TEST(Replacement, HasTheModeOfTheOldFileAndIsNeverMoreOpen) {
    Scratch scratch;
    for (unsigned int const mode : {0644, 0600, 0444, 0070, 0755, 06755, 0666}) {
        SCOPED_TRACE(mode);
        fs::create_hard_link(scratch.write("old", "old"), scratch.path("link"));
        ASSERT_EQ(0, chmod(scratch.path("old").c_str(), mode));
        PReplacement replacement;
        ASSERT_CODE(PERR_OK, replacement.begin(scratch.wpath("old").c_str()));
        EXPECT_EQ(0U, _mode(_newFile(scratch.dir())) & ~mode);
        EXPECT_CODE(PERR_OK, replacement.write("new", 3));
        EXPECT_EQ("old", scratch.read("old"));
        EXPECT_CODE(PERR_OK, replacement.commit());
        EXPECT_EQ("new", scratch.read("old"));
        EXPECT_EQ(mode, _mode(scratch.path("old")));
        EXPECT_EQ("old", scratch.read("link"));
        EXPECT_TRUE(fs::remove(scratch.path("link")));
    }
}

TEST(Replacement, OfAFileWithoutAccessListGetsNoneFromItsFolder) {
    Scratch scratch;
    ASSERT_EQ(0, chmod(scratch.write("file", "old").c_str(), 0640));
    // The version, then tag, rights and id of owner, one other user, group, mask and the rest.
    struct {
        std::uint32_t version = 2;
        struct {
            std::uint16_t tag, rights;
            std::uint32_t id;
        } entries[5] = {
            {0x01, 7, ~0U}, {0x02, 7, 2002}, {0x04, 5, ~0U}, {0x10, 7, ~0U}, {0x20, 0, ~0U}};
    } const list;
    ASSERT_EQ(0, setxattr(scratch.dir().c_str(), "system.posix_acl_default", &list, sizeof list, 0))
        << "the folder of the tests keeps no access lists";
    PReplacement replacement;
    EXPECT_CODE(PERR_OK, replacement.begin(scratch.wpath("file").c_str()));
    EXPECT_CODE(PERR_OK, replacement.commit());
    EXPECT_EQ(-1, getxattr(scratch.path("file").c_str(), "system.posix_acl_access", nullptr, 0));
    EXPECT_EQ(ENODATA, errno);
}

TEST(Replacement, MakesAMissingFileWithTheModeThatTheUmaskLeaves) {
    Scratch scratch;
    mode_t const before = umask(027);
    EXPECT_CODE(PERR_OK, _replace(scratch.wpath("new"), L"line"));
    EXPECT_EQ(027U, umask(before));
    EXPECT_EQ(0640U, _mode(scratch.path("new")));
    EXPECT_EQ("line\n", scratch.read("new"));
}

TEST(Replacement, FollowsSymbolicLinksToTheFileThatTheyName) {
    Scratch scratch;
    fs::create_directories(scratch.path("a/b"));
    struct {
        char const *link, *target, *file;
    } const rows[] = {
        {"a/beside", "file", "a/file"},  {"a/above", "../above", "above"},
        {"to", "a/above", "above"},      {"a/b/dangling", "../not-there", "a/not-there"},
        {"through", "a/b/..//f", "a/f"},
    };
    for (auto const& row : rows) {
        SCOPED_TRACE(row.link);
        fs::create_symlink(row.target, scratch.path(row.link));
        EXPECT_CODE(PERR_OK, _replace(scratch.wpath(row.link), wide(row.link)));
        EXPECT_EQ(std::string(row.link) + "\n", scratch.read(row.file));
        EXPECT_TRUE(fs::is_symlink(scratch.path(row.link)));
    }
}

TEST(Replacement, BeginsOnlyWhereANewFileMayStand) {
    Scratch scratch;
    (void)scratch.write("file", "old");
    fs::create_directory(scratch.path("folder"));
    fs::create_symlink("ring", scratch.path("ring"));
    ASSERT_EQ(0, mkfifo(scratch.path("pipe").c_str(), 0600));
    std::size_t const entries = _entries(scratch.dir());
    struct {
        char const* what;
        std::wstring name;
        int code;
    } const rows[] = {
        {"no name", L"", PERR_INVALID_ARGUMENT},
        {"a zero character", scratch.wpath("a") + L'\0', PERR_INVALID_ARGUMENT},
        {"a surrogate", scratch.wpath("a") + wchar_t(0xD800), PERR_BAD_FORMAT},
        {"no such folder", scratch.wpath("none/file"), PERR_NO_SUCH_FILE},
        {"a file for a folder", scratch.wpath("file/file"), PERR_NO_SUCH_FILE},
        {"a folder", scratch.wpath("folder"), PERR_REFUSED},
        {"a slash behind", scratch.wpath("folder/"), PERR_REFUSED},
        {"a ring of links", scratch.wpath("ring"), PERR_REFUSED},
        {"a pipe", scratch.wpath("pipe"), PERR_REFUSED},
        {"too long a name", scratch.wpath(std::string(256, 'n')), PERR_SYSTEM},
    };
    for (auto const& row : rows) {
        SCOPED_TRACE(row.what);
        PReplacement replacement;
        EXPECT_CODE(row.code, replacement.begin(PString(row.name.data(), row.name.size())));
        EXPECT_CODE(PERR_NOT_OPEN, replacement.commit());
        EXPECT_EQ(entries, _entries(scratch.dir()));
    }
    EXPECT_CODE(PERR_OK, _replace(scratch.wpath(std::string(255, 'n')), L"the longest"));
}

TEST(Replacement, IsRefusedWithoutTheRightsToTheFolder) {
    Scratch scratch;
    ASSERT_EQ(0, chmod(scratch.dir().c_str(), 0555));
    ChildRun other([&] {
        if (geteuid() == 0 && setuid(65534) != 0) return 1;
        return _replace(scratch.wpath("file"), L"") == PERR_REFUSED ? 0 : 2;
    });
    EXPECT_EQ(0, other.wait());
}

TEST(Replacement, TakesNamesAndLinesWholeInEveryLocale) {
    Scratch scratch;
    ASSERT_STREQ("C", setlocale(LC_ALL, nullptr));
    EXPECT_CODE(PERR_OK, _replace(scratch.wpath(" \\") + L"\xE9 ", L" \x20AC\\\xE9 "));
    EXPECT_EQ(" \xE2\x82\xAC\\\xC3\xA9 \n", scratch.read(" \\\xC3\xA9 "));
}

TEST(Replacement, MeansTheFileOfTheMomentItBegan) {
    Scratch scratch, elsewhere;
    fs::path const before = fs::current_path();
    PReplacement replacement;
    fs::current_path(scratch.dir());
    EXPECT_CODE(PERR_OK, replacement.begin(L"file"));
    fs::current_path(elsewhere.dir());
    EXPECT_CODE(PERR_OK, replacement.write("new", 3));
    EXPECT_CODE(PERR_OK, replacement.commit());
    fs::current_path(before);
    EXPECT_EQ("new", scratch.read("file"));
    EXPECT_EQ(0U, _entries(elsewhere.dir()));
}

TEST(Replacement, IsUnderWayFromBeginToItsEnd) {
    Scratch scratch;
    (void)scratch.write("file", "old");
    PReplacement replacement;
    EXPECT_CODE(PERR_NOT_OPEN, replacement.write("", 0));
    EXPECT_CODE(PERR_NOT_OPEN, replacement.writeLine(L""));
    EXPECT_CODE(PERR_NOT_OPEN, replacement.commit());
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
    EXPECT_CODE(PERR_NOT_OPEN, replacement.commit());
    EXPECT_EQ("\n", scratch.read("file"));
    EXPECT_EQ(1U, _entries(scratch.dir()));
}

TEST(Replacement, TellsAFailedWriteAgainAndLeavesTheOldContent) {
    struct {
        char const* what;
        std::function<int(PReplacement&)> write;
        int code;
    } const rows[] = {
        {"no space", [](auto& r) { return r.write(std::string(9'999, 'n').data(), 9'999); },
         PERR_WRITE},
        {"no bytes", [](auto& r) { return r.write(nullptr, 1); }, PERR_INVALID_ARGUMENT},
        {"a zero", [](auto& r) { return r.writeLine(PString(L"\0", 1)); }, PERR_INVALID_ARGUMENT},
        {"a surrogate", [](auto& r) { return r.writeLine(L"\xD800"); }, PERR_BAD_FORMAT},
    };
    for (auto const& row : rows) {
        SCOPED_TRACE(row.what);
        Scratch scratch;
        (void)scratch.write("file", "old");
        ChildRun limited([&] {
            rlimit const most{9'999, 9'999};
            (void)setrlimit(RLIMIT_FSIZE, &most);
            (void)signal(SIGXFSZ, SIG_IGN);
            PReplacement replacement;
            EXPECT_CODE(PERR_OK, replacement.begin(scratch.wpath("file").c_str()));
            EXPECT_CODE(PERR_OK, replacement.write("new", 3));
            EXPECT_CODE(row.code, row.write(replacement));
            EXPECT_CODE(row.code, replacement.writeLine(L"more"));
            EXPECT_CODE(row.code, replacement.commit());
            return testing::Test::HasFailure() ? 1 : 0;
        });
        EXPECT_EQ(0, limited.wait());
        EXPECT_EQ("old", scratch.read("file"));
        EXPECT_EQ(1U, _entries(scratch.dir()));
    }
}

TEST(Replacement, StaysWithItsProcessAcrossAFork) {
    Scratch scratch;
    PReplacement replacement;
    EXPECT_CODE(PERR_OK, replacement.begin(scratch.wpath("file").c_str()));
    ChildRun child([&] {
        EXPECT_CODE(PERR_NOT_OPEN, replacement.commit());
        EXPECT_CODE(PERR_OK, replacement.begin(scratch.wpath("other").c_str()));
        replacement.~PReplacement();
        return testing::Test::HasFailure() ? 1 : 0;
    });
    EXPECT_EQ(0, child.wait());
    EXPECT_CODE(PERR_OK, replacement.write("new", 3));
    EXPECT_CODE(PERR_OK, replacement.commit());
    EXPECT_EQ("new", scratch.read("file"));
    EXPECT_EQ(1U, _entries(scratch.dir()));
}

TEST(Replacement, TakesNothingThatIsPrintedToAClosedStream) {
    Scratch scratch;
    ChildRun closed([&] {
        for (int const stream : {0, 1, 2}) (void)close(stream);
        PReplacement replacement;
        if (replacement.begin(scratch.wpath("file").c_str()) != PERR_OK) return 1;
        for (int const stream : {0, 1, 2})
            if (::write(stream, "printed", 7) != -1) return 2;
        if (replacement.write("new", 3) != PERR_OK) return 3;
        return replacement.commit() == PERR_OK ? 0 : 4;
    });
    EXPECT_EQ(0, closed.wait());
    EXPECT_EQ("new", scratch.read("file"));
}
