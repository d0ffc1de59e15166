#include <faults/interpose.h>
#include <fs/files.h>

static long drawn = -1;  // what the generator gives; -1 lets it draw

INTERPOSE(rand, if (drawn >= 0) return drawn)

class TemporaryFile : public InAFolder {
protected:
    int open(std::string const& prefix) {
        return temp.popen(named(scratch.path(prefix)), WRITE | CREATE, PFile::EXCLUSIVE);
    }
    PTempFile temp;
};

TEST_F(TemporaryFile, IsCalledPrefixAndNumberAndStays) {
    drawn = 238328 + 40213;
    EXPECT_CODE(PERR_OK, open("\\job"));
    drawn = -1;
    EXPECT_CODE(PERR_OK, temp.pgetName(text));
    EXPECT_TEXT(scratch.wpath("/job40213"), text);
    EXPECT_CODE(PERR_OK, temp.pclose());
    EXPECT_EQ(std::set<std::string>{"job40213"}, namesIn(scratch.dir()));
}

TEST_F(TemporaryFile, IsNotOpenedWithoutAPrefixOrWithoutCreating) {
    EXPECT_CODE(PERR_INVALID_ARGUMENT, temp.popen(L"", CREATE, PFile::EXCLUSIVE));
    EXPECT_CODE(PERR_NO_SUCH_FILE, temp.popen(named(scratch.path("f")), READ, 0));
    scratch.write("f", "");
    EXPECT_CODE(PERR_OPEN, open("f/")) << "no folder: all names were tried";
}

TEST_F(TemporaryFile, StaysTakenUntilItIsClosedAsOne) {
    EXPECT_CODE(PERR_OK, open("f"));
    EXPECT_CODE(PERR_OK, temp.PFile::pclose());
    EXPECT_CODE(PERR_ALREADY_OPEN, open("f"));
    EXPECT_CODE(PERR_NOT_OPEN, temp.pclose());
    EXPECT_CODE(PERR_OK, open("g"));
}

TEST(System, HasATemporaryFolderAndGivesTheLeastNumberButForTheLargestDrawn) {
    EXPECT_TEXT(L"/tmp/", PSystem::getTempDir());
    drawn = 2147483646;
    EXPECT_EQ(5, PSystem::getRandom(5, 10));
    drawn = 2147483647;
    EXPECT_EQ(15, PSystem::getRandom(5, 10));
    drawn = -1;
}
