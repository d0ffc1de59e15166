#include <algorithm>
#include <fstream>

#include <gtest/gtest.h>
#include <support/scratch.h>
#include <unistd.h>

#include "process/children.h"

TEST(ProcessListing, FindsProgramsByTheirWholeName) {
    Scratch scratch;
    std::string const shortName = "Plt" + std::to_string(getpid());
    std::string const longName = shortName + "-longer-than-15";
    std::vector<std::string> names{shortName, longName};
    for (auto const& name : names) ASSERT_EQ(0, symlink(TEST_CHILD, scratch.path(name).c_str()));
    Child const brief("sleep 60", scratch.path(shortName));
    Child const lengthy("sleep 60", scratch.path(longName));

    struct {
        std::string what, name;
        unsigned int found;
    } const rows[] = {
        {"as it is", shortName, brief.pid},
        {"another case", "p" + shortName.substr(1, 1) + "T" + shortName.substr(3), brief.pid},
        {"behind a folder", "C:\\x/" + shortName, brief.pid},
        {"a prefix only", shortName.substr(0, shortName.size() - 1), 0},
        {"longer than the system keeps", longName, lengthy.pid},
        {"cut as by the system", longName.substr(0, 15), 0},
        {"unknown", "plt-nothing", 0},
    };
    for (auto const& row : rows) {
        std::vector<unsigned int> pids{1}, parents{1, 2}, expected, expectedParents;
        if (row.found != 0) expected = {row.found}, expectedParents = {PProcess::getCurrentPID()};
        EXPECT_EQ(row.found != 0 ? PERR_OK : PERR_NOT_FOUND,
                  PProcess::find(owned(row.name), pids, parents))
            << row.what;
        EXPECT_EQ(expected, pids) << row.what;
        EXPECT_EQ(expectedParents, parents) << row.what;
    }

    std::vector<unsigned int> all{0}, mine;
    EXPECT_EQ(PERR_OK, PProcess::listPIDs(all));
    EXPECT_EQ(1, std::count(all.begin(), all.end(), brief.pid));
    EXPECT_EQ(0, std::count(all.begin(), all.end(), 0));  // nothing but processes
    EXPECT_EQ(PERR_OK, PProcess::getChildPID(PProcess::getCurrentPID(), mine));
    EXPECT_EQ((std::vector<unsigned int>{brief.pid, lengthy.pid}), mine);
    EXPECT_EQ(PERR_NOT_FOUND, PProcess::getChildPID(brief.pid, mine));
    EXPECT_TRUE(mine.empty());
}

TEST(ProcessEnding, KillTreeEndsParentsBeforeTheirChildren) {
    Scratch scratch;
    Child const root("tree 3 " + scratch.path("ids"));
    std::vector<std::string> lines;
    auto const readLines = [&](std::size_t count) {
        std::ifstream file(scratch.path("ids"));
        lines.clear();
        for (std::string line; std::getline(file, line);) lines.push_back(line);
        return lines.size() >= count;
    };
    ASSERT_TRUE(eventually([&] { return readLines(3); }));
    EXPECT_EQ(std::to_string(root.pid), lines[0]);
    EXPECT_EQ(PERR_OK, PProcess::killTree(root.pid));
    EXPECT_TRUE(readLines(6));
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(lines[i] + " ended", lines[i + 3]);
        EXPECT_EQ(std::string::npos, std::string("RSDT").find(
                                         stateOf(static_cast<unsigned int>(std::stoul(lines[i])))));
    }
}

TEST(ProcessEnding, KillTreeEndsWhatIgnoresTheRequest) {
    Scratch scratch;
    Child const child("ignore " + scratch.path("ready"));
    ASSERT_TRUE(eventually([&] { return !scratch.read("ready").empty(); }));
    EXPECT_EQ(PERR_OK, PProcess::killTree(child.pid));
    EXPECT_EQ('-', stateOf(child.pid));
}
