#include <clocale>

#include <sys/prctl.h>

#include <process/children.h>

TEST(ProcessList, HoldsAProcessOnceAndNothingElse) {
    Child const child;
    Ids pids{0};
    EXPECT_CODE(PERR_OK, PProcess::listPIDs(pids));
    EXPECT_EQ(1, std::count(pids.begin(), pids.end(), child.pid));
    EXPECT_EQ(0, std::count(pids.begin(), pids.end(), 0));
}

TEST(ProcessList, ChildrenAreTheDirectOnes) {
    Child const parent(shell("tail -s 0.1 --pid=$$ -f /dev/null; :"), "/bin/sh");
    Ids children{7}, none{7};
    unsigned int grandparent = 0;
    EXPECT_TRUE(eventually([&] { return PProcess::getChildPID(parent.pid, children) == PERR_OK; }));
    ASSERT_EQ(1U, children.size());
    EXPECT_CODE(PERR_OK, PProcess::getParentPID(children[0], grandparent));
    EXPECT_EQ(parent.pid, grandparent);
    EXPECT_CODE(PERR_NOT_FOUND, PProcess::getChildPID(endedProcess(), none));
    EXPECT_TRUE(none.empty());
}

TEST(ProcessFind, ComparesWholeNamesIgnoringCaseAndFolders) {
    Scratch const scratch;
    std::string const number = std::to_string(getpid()), brief = "Plt" + number;
    std::string const wide = brief + "-more-than-15";
    ASSERT_EQ(0, symlink("/bin/sleep", scratch.path(brief).c_str()));
    ASSERT_EQ(0, symlink("/bin/sleep", scratch.path(wide).c_str()));
    Child const one(owned("60"), scratch.path(brief)), other(owned("60"), scratch.path(wide));
    Ids pids{7}, parents{7, 7};
    EXPECT_CODE(PERR_OK, PProcess::find(owned("C:\\x/pLT" + number), pids, parents));
    EXPECT_EQ(Ids{one.pid}, pids);
    EXPECT_EQ(Ids{PProcess::getCurrentPID()}, parents);
    EXPECT_CODE(PERR_OK, PProcess::find(owned("/x/" + wide), pids, parents));
    EXPECT_EQ(Ids{other.pid}, pids) << "a name that the system cuts";
    EXPECT_CODE(PERR_NOT_FOUND, PProcess::find(owned(wide.substr(0, 15)), pids, parents));
    EXPECT_EQ(Ids(), parents);
    EXPECT_CODE(PERR_NOT_FOUND, PProcess::find(owned("Plt"), pids, parents));
}

TEST(ProcessFind, FindsNamesBeyondAsciiAndStepsOverThoseItCannotConvert) {
    ASSERT_NE(nullptr, setlocale(LC_CTYPE, "C.UTF-8"));
    ChildRun const child([] { return prctl(PR_SET_NAME, " \xE3\x81\x82\xC3\xA9 ") + pause(); });
    PLiteral const name(L"/any/long/folder/\x3042\xE9");
    Ids pids, parents;
    EXPECT_TRUE(eventually([&] { return PProcess::find(name, pids, parents) == PERR_OK; }));
    EXPECT_EQ(Ids{static_cast<unsigned int>(child.pid)}, pids);
    ASSERT_NE(nullptr, setlocale(LC_CTYPE, "C"));
    EXPECT_CODE(PERR_NOT_FOUND, PProcess::find(PString(), pids, parents));
}
