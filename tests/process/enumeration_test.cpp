#include <algorithm>

#include <gtest/gtest.h>
#include <support/scratch.h>
#include <unistd.h>

#include "process/children.h"

using Ids = std::vector<unsigned int>;

TEST(ProcessListing, FindsProgramsByTheirWholeName) {
    Scratch scratch;
    std::string const plain = "Plt" + std::to_string(getpid()), extended = plain + "-beyond-15";
    for (auto const& name : {plain, extended})
        ASSERT_EQ(0, symlink(TEST_CHILD, scratch.path(name).c_str()));
    Child const brief("sleep 60", scratch.path(plain)), other("sleep 60", scratch.path(extended));
    struct {
        char const* what;
        std::string name;
        Ids found;
    } const rows[] = {
        {"as it is", plain, {brief.pid}},
        {"another case, behind a folder", "C:\\x/pLT" + plain.substr(3), {brief.pid}},
        {"a prefix only", plain.substr(0, plain.size() - 1), {}},
        {"longer than the system keeps", extended, {other.pid}},
        {"cut as by the system", extended.substr(0, 15), {}},
    };
    for (auto const& row : rows) {
        Ids pids{1}, parents{1, 2};
        EXPECT_EQ(row.found.empty() ? PERR_NOT_FOUND : PERR_OK,
                  PProcess::find(owned(row.name), pids, parents))
            << row.what;
        EXPECT_EQ(row.found, pids) << row.what;
        EXPECT_EQ(Ids(pids.size(), PProcess::getCurrentPID()), parents) << row.what;
    }

    Ids all{0}, children;
    EXPECT_EQ(PERR_OK, PProcess::listPIDs(all));
    EXPECT_EQ(1, std::count(all.begin(), all.end(), brief.pid));
    EXPECT_EQ(0, std::count(all.begin(), all.end(), 0));  // nothing but processes
    EXPECT_EQ(PERR_OK, PProcess::getChildPID(PProcess::getCurrentPID(), children));
    EXPECT_EQ((Ids{brief.pid, other.pid}), children);
    EXPECT_EQ(PERR_NOT_FOUND, PProcess::getChildPID(brief.pid, children));
    EXPECT_TRUE(children.empty());
}

TEST(ProcessEnding, KillTreeEndsParentsBeforeTheirChildren) {
    Scratch scratch;
    Child const root("tree 3 " + scratch.path("log"));
    auto const lines = [&] {
        std::string const log = scratch.read("log");
        return std::count(log.begin(), log.end(), '\n');
    };
    ASSERT_TRUE(eventually([&] { return lines() == 3; }));
    std::string const started = scratch.read("log");
    std::string ended;
    for (char const c : started) ended += c == '\n' ? std::string(" ended\n") : std::string(1, c);
    EXPECT_EQ(PERR_OK, PProcess::killTree(root.pid));
    EXPECT_EQ(started + ended, scratch.read("log"));
}

TEST(ProcessEnding, KillTreeEndsWhatIgnoresTheRequest) {
    Scratch scratch;
    Child const child("ignore " + scratch.path("ready"));
    ASSERT_TRUE(eventually([&] { return !scratch.read("ready").empty(); }));
    EXPECT_EQ(PERR_OK, PProcess::killTree(child.pid));
    EXPECT_EQ("", factOf(child.pid, "stat"));
}
