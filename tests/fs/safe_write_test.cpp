#include <fs/files.h>
#include <portinglayer/threads.h>
#include <support/cancelled.h>

class SafeWrite : public InAFolder {
protected:
    void open() { ASSERT_CODE(PERR_OK, file.popen(named(scratch.path("f")), SAFE_WRITE, 0)); }
};

TEST_F(SafeWrite, GoesToALockedSiblingNamedForProcessAndTickUntilItIsClosed) {
    long long const before = PTime::getTickCount();
    scratch.write("f", "old");
    open();
    std::string const sibling = *namesIn(scratch.dir()).rbegin();
    std::string const start = "f.talv_temp-" + std::to_string(getpid()) + "-";
    EXPECT_EQ(start, sibling.substr(0, start.size()));
    EXPECT_LE(before, std::stoll(sibling.substr(start.size())));
    EXPECT_CODE(PERR_LOCKED, PFile().popen(named(scratch.path(sibling)), READ, PFile::EXCLUSIVE));

    EXPECT_CODE(PERR_OK, file.pwriteLine(L"new"));
    EXPECT_EQ("old", scratch.read("f"));
    EXPECT_CODE(PERR_OK, file.pgetName(text));
    EXPECT_TEXT(scratch.wpath("f"), text) << "not that of the sibling";
    EXPECT_FALSE(endsACancelledThread([&] { EXPECT_CODE(PERR_OK, file.pclose()); }));
    EXPECT_EQ("new\n", scratch.read("f"));
    EXPECT_EQ(std::set<std::string>{"f"}, namesIn(scratch.dir()));
}

TEST_F(SafeWrite, ThatCannotBeMovedLeavesTheSiblingAndAClosedHandle) {
    open();
    std::string const sibling = *namesIn(scratch.dir()).begin();
    std::filesystem::create_directory(scratch.path("f"));
    EXPECT_CODE(PERR_SYSTEM, file.pclose());
    EXPECT_TRUE(PFile::exists(named(scratch.path(sibling))));
    EXPECT_CODE(PERR_NOT_OPEN, file.pclose());
}
