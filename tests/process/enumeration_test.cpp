#include <clocale>

#include <sys/prctl.h>

#include <process/children.h>

TEST(ProcessList, HoldsEveryProcessOnceAndNothingElse) {
    Child const child;
    Ids pids{0};
    EXPECT_CODE(PERR_OK, PProcess::listPIDs(pids));
    EXPECT_EQ(1, std::count(pids.begin(), pids.end(), child.pid));
    EXPECT_EQ(0, std::count(pids.begin(), pids.end(), 0U));
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

TEST(ProcessList, IdZeroStandsForTheFirstProcess) {
    EXPECT_TRUE(eventually([] {  // others come and go
        Ids ofZero, ofOne;
        int const code = PProcess::getChildPID(0, ofZero);
        return PProcess::getChildPID(1, ofOne) == code && ofZero == ofOne;
    }));
}

TEST(ProcessFind, ComparesWholeNamesIgnoringCaseAndFolders) {
    Scratch const scratch;
    std::string const brief = "Plt" + std::to_string(getpid()), wide = brief + "-more-than-15";
    ASSERT_EQ(0, symlink("/bin/sleep", scratch.path(brief).c_str()));
    ASSERT_EQ(0, symlink("/bin/sleep", scratch.path(wide).c_str()));
    Child const one(owned("60"), scratch.path(brief)), other(owned("60"), scratch.path(wide));
    struct {
        char const* what;
        std::string name;
        Ids found;
    } const rows[] = {
        {"folders and case", "C:\\x/pLT" + brief.substr(3), {one.pid}},
        {"the beginning of it", brief.substr(0, brief.size() - 1), {}},
        {"one that the system cuts", "/x/" + wide, {other.pid}},
        {"as the system cut it", wide.substr(0, 15), {}},
        {"none", "", {}},
    };
    for (auto const& row : rows) {
        SCOPED_TRACE(row.what);
        Ids pids{7}, parents{7, 7};
        EXPECT_CODE(row.found.empty() ? PERR_NOT_FOUND : PERR_OK,
                    PProcess::find(owned(row.name), pids, parents));
        EXPECT_EQ(row.found, pids);
        EXPECT_EQ(Ids(row.found.size(), PProcess::getCurrentPID()), parents);
    }
}

TEST(ProcessFind, FindsNamesBeyondAsciiAndStepsOverThoseItCannotConvert) {
    ASSERT_NE(nullptr, setlocale(LC_CTYPE, "C.UTF-8"));
    ChildRun const child([] { return prctl(PR_SET_NAME, " \xE3\x81\x82\xC3\xA9 ") + pause(); });
    auto const pid = static_cast<unsigned int>(child.pid);
    PString name;
    Ids pids, parents;
    EXPECT_TRUE(eventually([&] {  // it has its name a moment after it is there
        return PProcess::getName(pid, name) == PERR_OK && name == L"\x3042\xE9";
    }));
    EXPECT_CODE(PERR_OK, PProcess::find(PLiteral(L"/any/long/folder/\x3042\xE9"), pids, parents));
    EXPECT_EQ(Ids{pid}, pids);
    ASSERT_NE(nullptr, setlocale(LC_CTYPE, "C"));
    EXPECT_CODE(PERR_NOT_FOUND, PProcess::find(PString(), pids, parents));
}
