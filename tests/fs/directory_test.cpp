#include <random>
#include <type_traits>

#include <fnmatch.h>
#include <sys/stat.h>

#include <fs/files.h>
#include <support/child_run.h>

namespace fs = std::filesystem;

static_assert(sizeof(PDir) == 104 && alignof(PDir) == 8);
static_assert(std::has_virtual_destructor_v<PDir> && !std::is_copy_constructible_v<PDir>);

/// The names that a listing gives, as bytes.
static std::set<std::string> _listed(std::string const& folder, std::string const& pattern) {
    std::set<std::string> names;
    PDir dir(named(folder), named(pattern));
    for (int code = dir.preaddir(); code == PERR_OK; code = ++dir) {
        std::wstring_view const name = view(dir.getEntry());
        names.insert({name.begin(), name.end()});
    }
    EXPECT_TRUE(dir == PERR_READ) << codeName(dir.getResult()) << " for " << pattern;
    return names;
}

static std::string _anyOf(std::string const& characters, std::mt19937& random) {
    std::string made;
    for (auto length = 1 + random() % 6; made.size() < length;)
        made += characters[random() % characters.size()];
    return made;
}

TEST(Listing, OfAllGivesTheDotsToo) {
    Scratch const scratch;
    scratch.write(".hidden", "");
    fs::create_directory(scratch.path("sub"));
    std::set<std::string> const all{".", "..", ".hidden", "sub"};
    EXPECT_EQ(all, _listed(scratch.dir(), ""));
    EXPECT_EQ(all, _listed(scratch.dir() + "/", "*"));
}

TEST(Listing, GivesTheNamesThatTheSystemMatches) {
    Scratch const scratch;
    std::mt19937 random(7);
    for (int i = 0; i < 60; ++i) scratch.write(_anyOf("abA.-[\\", random), "");
    std::set<std::string> all = namesIn(scratch.dir());
    all.insert({".", ".."});
    for (int i = 0; i < 2000; ++i) {
        std::string const pattern = _anyOf("aab.**?[!-]/\\", random);
        std::set<std::string> model;
        for (std::string const& name : all)
            if (fnmatch(pattern.c_str(), name.c_str(), FNM_PATHNAME | FNM_NOESCAPE) == 0)
                model.insert(name);
        ASSERT_EQ(model, _listed(scratch.dir(), pattern)) << pattern << ", seed 7";
    }
}

TEST(Listing, GoesThroughItsStates) {
    Scratch const scratch;
    scratch.write("file", "");
    PDir dir;
    EXPECT_CODE(PERR_DIR_NOT_OPEN, dir.preaddir()) << "not open";
    EXPECT_CODE(PERR_OK, dir.popen(named(scratch.dir()), L"f*"));
    EXPECT_CODE(PERR_DIR_NOT_OPEN, ++dir) << "no first name yet";
    EXPECT_CODE(PERR_OK, dir.preaddir());
    EXPECT_TEXT(L"file", dir.getEntry());
    EXPECT_CODE(PERR_DIR_ALREADY_OPEN, dir.popen(L"/tmp", L""));
    EXPECT_TRUE(dir != PERR_OK);
    EXPECT_CODE(PERR_READ, dir++) << "of the first folder still";
    EXPECT_TRUE(dir == PERR_READ);
    EXPECT_TEXT(L"file", dir.getEntry()) << "the last name stays";

    EXPECT_CODE(PERR_OK, dir.pclose());
    EXPECT_CODE(PERR_OK, dir.getResult());
    EXPECT_TEXT(L"", dir.getEntry());
    EXPECT_CODE(PERR_DIR_NOT_OPEN, dir.preaddir());
    EXPECT_CODE(PERR_OK, dir.popen(named(scratch.dir()), L"none")) << "with its own pattern now";
    EXPECT_CODE(PERR_READ, dir.preaddir());
}

TEST(Listing, ThatFailedKeepsItsPatternForTheNextFolder) {
    Scratch const scratch;
    scratch.write("file", "");
    PDir dir(named(scratch.path("none")), L"f*");
    EXPECT_CODE(PERR_DIR_NOT_OPEN, dir.getResult());
    EXPECT_CODE(PERR_DIR_NOT_OPEN, dir.preaddir());
    EXPECT_CODE(PERR_OK, dir.popen(named(scratch.dir()), L"none"));
    EXPECT_CODE(PERR_OK, dir.preaddir());
    EXPECT_TEXT(L"file", dir.getEntry());
}

TEST(Listing, OfNoNameFails) {
    EXPECT_CODE(PERR_DIR_NOT_OPEN, PDir(L"", L"*").getResult());
    EXPECT_CODE(PERR_DIR_NOT_OPEN, PDir(L"\\tmp", L"*").getResult()) << "a backslash stays one";
    EXPECT_CODE(PERR_DIR_NOT_OPEN, PDir(L"/tmp/\u00e9", L"*").getResult()) << "not in the C locale";
}

TEST(Listing, GoesOnBehindANameThatCannotBeConverted) {
    Scratch const scratch;
    scratch.write("\xc3\xa9", "");
    PDir dir(named(scratch.dir()), L"[!.]*");
    EXPECT_CODE(PERR_CONVERSION, dir.preaddir());
    EXPECT_TEXT(L"", dir.getEntry());
    EXPECT_CODE(PERR_READ, dir.preaddir());
}

TEST(Listing, IsForgottenNotClosedByClear) {
    Scratch const scratch;
    ChildRun child([&] {  // which ends with what is lost
        PDir dir(named(scratch.dir()), L"*");
        EXPECT_CODE(PERR_OK, dir.preaddir());
        auto const open = namesIn("/proc/self/fd").size();
        dir.clear();
        EXPECT_EQ(open, namesIn("/proc/self/fd").size());
        EXPECT_TEXT(L"", dir.getEntry());
        EXPECT_CODE(PERR_DIR_NOT_OPEN, dir.preaddir());
        return testing::Test::HasFailure() ? 1 : 0;
    });
    EXPECT_EQ(0, child.wait());
}

TEST(Folders, AreMadeAndRemovedOneAtATime) {
    Scratch const scratch;
    PString const top = named(scratch.path("top")), below = named(scratch.path("top/below"));
    mode_t const mask = umask(0);
    errno = 0;
    EXPECT_CODE(PERR_DIR_CREATE, PDir::pcreate(below)) << "without its parent";
    EXPECT_CODE(PERR_OK, PDir::pcreate(top));
    (void)umask(mask);
    struct stat facts {};
    EXPECT_EQ(0, stat(scratch.path("top").c_str(), &facts));
    EXPECT_EQ(0775U, facts.st_mode & 07777U);
    EXPECT_CODE(PERR_OK, PDir::pcreate(below));
    EXPECT_CODE(PERR_DIR_EXISTS, PDir::pcreate(below));

    EXPECT_CODE(PERR_DIR_DELETE, PDir::pdelete(top)) << "not empty";
    EXPECT_CODE(PERR_OK, PDir::pdelete(below));
    EXPECT_CODE(PERR_DIR_NOT_FOUND, PDir::pdelete(below));
    EXPECT_CODE(PERR_INVALID_ARGUMENT, PDir::pdelete(L""));
}

TEST(Folders, AreMadeThoughAnOldErrnoSaysTheyExisted) {
    Scratch const scratch;
    errno = EEXIST;
    EXPECT_CODE(PERR_DIR_EXISTS, PDir::pcreate(named(scratch.path("new"))));
    EXPECT_TRUE(fs::is_directory(scratch.path("new")));
}

TEST(Folders, WithoutANameForTheSystemAreRefused) {
    errno = 0;
    EXPECT_CODE(PERR_DIR_CREATE, PDir::pcreate(L"/tmp/\u00e9")) << "not in the C locale";
    EXPECT_CODE(PERR_DIR_DELETE, PDir::pdelete(L"/tmp/\u00e9"));
}
