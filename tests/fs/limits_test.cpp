#include <csignal>

#include <sys/resource.h>

#include <fs/files.h>
#include <support/child_run.h>

namespace fs = std::filesystem;

/// Runs a piece of a test in a child, which may restrict itself.
static void _inAChild(std::function<void()> const& work) {
    ChildRun child([&] {
        work();
        return testing::Test::HasFailure() ? 1 : 0;
    });
    EXPECT_EQ(0, child.wait());
}

TEST(Limits, FilesEndWhereTheSystemHasThemEnd) {
    constexpr rlim_t MOST = 1 << 20;
    Scratch const scratch;
    _inAChild([&] {
        rlimit const limit{MOST, MOST};
        std::string const much(MOST + 1, 'x');
        unsigned long done = 0;
        PFile file;
        EXPECT_NE(SIG_ERR, signal(SIGXFSZ, SIG_IGN));
        EXPECT_EQ(0, setrlimit(RLIMIT_FSIZE, &limit));
        EXPECT_CODE(PERR_OK, file.popen(named(scratch.path("f")), PFile::OPEN_SAFE_WRITE, 0));
        EXPECT_CODE(PERR_OK, file.pwrite(much.data(), much.size(), done)) << "as much as fits";
        EXPECT_CODE(PERR_WRITE, file.pwriteLine(L"x"));
        EXPECT_CODE(PERR_OK, file.pclose());
    });
    EXPECT_EQ(MOST, scratch.read("f").size()) << "moved, cut as it is";
}

TEST(Limits, WithoutDescriptorsNothingIsOpenedOrListed) {
    Scratch const scratch;
    _inAChild([&] {
        rlimit const none{0, 0};
        PFile file;
        // Before the limit: the sanitizer needs a descriptor to see a type for the first time.
        EXPECT_CODE(PERR_NO_SUCH_FILE, file.popen(named(scratch.path("none")), 0, 0));
        EXPECT_EQ(0, setrlimit(RLIMIT_NOFILE, &none));
        EXPECT_CODE(PERR_OPEN, file.popen(L"/dev/null", PFile::OPEN_READ, PFile::UNLOCKED));
        EXPECT_CODE(PERR_DIR_NOT_OPEN, PDir().popen(L"/tmp", L""));
        EXPECT_TEXT(L"", PSystem::getTempDir());
    });
}

TEST(Limits, AFolderThatMayNotBeReadIsRemovedIfItIsEmpty) {
    Scratch const scratch;
    for (char const* const folder : {"empty", "full/sub"})
        fs::create_directories(scratch.path(folder));
    fs::permissions(scratch.dir(), fs::perms::all);
    for (char const* const folder : {"empty", "full"})
        fs::permissions(scratch.path(folder), fs::perms::none);
    _inAChild([&] {
        EXPECT_TRUE(geteuid() != 0 || setresuid(65534, 65534, 65534) == 0);
        EXPECT_CODE(PERR_DIR_NOT_OPEN, PDir().popen(named(scratch.path("empty")), L""));
        EXPECT_CODE(PERR_OK, PFile::removeAll(named(scratch.path("empty"))));
        EXPECT_CODE(PERR_DELETE, PFile::removeAll(named(scratch.path("full"))));
        EXPECT_CODE(PERR_DIR_NOT_FOUND, PFile::removeAll(named(scratch.path("full/sub"))));
    });
    fs::permissions(scratch.path("full"), fs::perms::all);
}
