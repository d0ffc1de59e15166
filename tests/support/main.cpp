#include <cstdlib>
#include <filesystem>

#include <gtest/gtest.h>
#include <support/audit.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

class Audit : public testing::EmptyTestEventListener {
    void OnTestStart(testing::TestInfo const&) override {
        char const* const limit = std::getenv("TEST_SECONDS");
        (void)alarm(limit == nullptr ? 120 : static_cast<unsigned>(std::atoi(limit)));
        before = currentHoldings();
    }

    void OnTestEnd(testing::TestInfo const&) override {
        (void)alarm(0);
        for (std::string const& thing : currentHoldings())
            EXPECT_TRUE(before.contains(thing)) << "left behind: " << thing;
    }

    std::set<std::string> before;
};

}  // namespace

std::set<std::string> currentHoldings() {
    namespace fs = std::filesystem;
    std::set<std::string> found;
    std::error_code gone;
    std::string const id = std::to_string(getpid());
    for (auto const& entry : fs::directory_iterator("/proc/self/fd")) {
        std::string const target = fs::read_symlink(entry, gone);
        if (target != "/proc/" + id + "/fd")  // that of this listing
            found.insert("descriptor " + entry.path().filename().string() + " " + target);
    }
    for (fs::path const& folder : {fs::path("/dev/shm"), fs::temp_directory_path()})
        for (auto const& entry : fs::directory_iterator(folder))
            if (entry.path().filename().string().find("-" + id + "-") != std::string::npos)
                found.insert(entry.path());
    siginfo_t child{};
    if (waitid(P_ALL, 0, &child, WEXITED | WNOHANG | WNOWAIT) == 0)
        found.insert("child " + std::to_string(child.si_pid));
    return found;
}

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    testing::UnitTest::GetInstance()->listeners().Append(new Audit);
    return RUN_ALL_TESTS();
}
