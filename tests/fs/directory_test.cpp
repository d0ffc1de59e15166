#include <sys/stat.h>

#include <fs/files.h>

using Listing = InAFolder;
using Folders = InAFolder;

TEST_F(Listing, GivesTheNamesThatMatch) {
    struct {
        char const* pattern;
        std::set<std::string> names;
    } const rows[] = {
        {"", {".", "..", ".a", "ab", "b.a", "b\\a"}},
        {"*a", {".a", "b.a", "b\\a"}},
        {"a*b*", {"ab"}},
        {"??", {"..", ".a", "ab"}},
        {"[!.]*[!a]", {"ab"}},
        {"b\\a", {"b\\a"}},
    };
    for (char const* const name : {".a", "ab", "b.a", "b\\a"}) scratch.write(name, "");
    for (auto const& row : rows) {
        std::set<std::string> listed;
        PDir dir(named(scratch.dir()), named(row.pattern));
        for (int code = dir.preaddir(); code == PERR_OK; code = ++dir) {
            std::wstring_view const name = view(dir.getEntry());
            listed.insert({name.begin(), name.end()});
        }
        EXPECT_TRUE(dir == PERR_READ);
        EXPECT_EQ(row.names, listed) << row.pattern;
    }
}

TEST_F(Listing, GoesThroughItsStates) {
    scratch.write("file", "");
    PDir dir;
    EXPECT_CODE(PERR_DIR_NOT_OPEN, dir.preaddir()) << "not open";
    EXPECT_CODE(PERR_OK, dir.popen(named(scratch.dir()), L"f*"));
    EXPECT_CODE(PERR_DIR_NOT_OPEN, ++dir) << "no first name yet";
    EXPECT_CODE(PERR_OK, dir.preaddir());
    EXPECT_CODE(PERR_DIR_ALREADY_OPEN, dir.popen(L"/tmp", L""));
    EXPECT_TRUE(dir != PERR_OK);
    EXPECT_CODE(PERR_READ, dir++) << "of the first folder still";
    EXPECT_TEXT(L"file", dir.getEntry()) << "the last name stays";

    EXPECT_CODE(PERR_OK, dir.pclose());
    EXPECT_CODE(PERR_OK, dir.getResult());
    EXPECT_TEXT(L"", dir.getEntry());
    EXPECT_CODE(PERR_DIR_NOT_OPEN, dir.popen(named(scratch.dir() + "\\"), L"none"));
    EXPECT_CODE(PERR_OK, dir.popen(named(scratch.dir()), L"f*")) << "a backslash stays one";
    EXPECT_CODE(PERR_READ, dir.preaddir()) << "with the pattern of the failure";
}

TEST_F(Listing, GoesOnBehindANameThatCannotBeConverted) {
    scratch.write("\xc3\xa9", "");
    PDir dir(named(scratch.dir()), L"[!.]*");
    EXPECT_CODE(PERR_CONVERSION, dir.preaddir());
    EXPECT_TEXT(L"", dir.getEntry());
    EXPECT_CODE(PERR_READ, dir.preaddir());
}

TEST_F(Folders, AreMadeAndRemovedOneAtATime) {
    PString const top = named(scratch.path("top")), below = named(scratch.path("top/below"));
    mode_t const mask = umask(0);
    EXPECT_CODE(PERR_DIR_CREATE, PDir::pcreate(below)) << "without its parent";
    EXPECT_EQ(ENOENT, errno) << "the system's reason stays";
    EXPECT_CODE(PERR_OK, PDir::pcreate(top));
    (void)umask(mask);
    EXPECT_EQ("775", modeOf(scratch.path("top")));
    EXPECT_CODE(PERR_OK, PDir::pcreate(below));
    EXPECT_CODE(PERR_DIR_EXISTS, PDir::pcreate(below));

    EXPECT_CODE(PERR_DIR_DELETE, PDir::pdelete(top)) << "not empty";
    EXPECT_CODE(PERR_OK, PDir::pdelete(below));
    EXPECT_CODE(PERR_DIR_NOT_FOUND, PDir::pdelete(below));
    EXPECT_CODE(PERR_INVALID_ARGUMENT, PDir::pdelete(L""));

    errno = EEXIST;
    EXPECT_CODE(PERR_DIR_EXISTS, PDir::pcreate(below)) << "as an old errno says";
    EXPECT_CODE(PERR_OK, PDir::pdelete(below)) << "it was made";
}
