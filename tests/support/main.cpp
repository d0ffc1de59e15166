// The audit around each test of every program: one that leaves behind descriptors, children, named
// semaphores or scratch folders fails.
#include <filesystem>
#include <set>

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

/// What this process holds: a line for each thing. One child is shown, by its id once it has ended.
std::set<std::string> _holdings() {
    namespace fs = std::filesystem;
    std::set<std::string> found;
    std::error_code gone;
    std::string const id = std::to_string(getpid());
    for (auto const& entry : fs::directory_iterator("/proc/self/fd"))  // that of this listing too
        found.insert("descriptor " + entry.path().filename().string() + " " +
                     fs::read_symlink(entry, gone).string());
    for (fs::path const& folder : {fs::path("/dev/shm"), fs::temp_directory_path()})
        for (auto const& entry : fs::directory_iterator(folder))
            if (entry.path().filename().string().find("-" + id + "-") != std::string::npos)
                found.insert(entry.path());
    siginfo_t child{};
    if (waitid(P_ALL, 0, &child, WEXITED | WNOHANG | WNOWAIT) == 0)
        found.insert("child " + std::to_string(child.si_pid));
    return found;
}

class Audit : public testing::EmptyTestEventListener {
    void OnTestStart(testing::TestInfo const&) override { before = _holdings(); }
    void OnTestEnd(testing::TestInfo const&) override {
        for (std::string const& thing : _holdings())
            EXPECT_TRUE(before.contains(thing)) << "left behind: " << thing;
    }

    std::set<std::string> before;
};

}  // namespace

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    testing::UnitTest::GetInstance()->listeners().Append(new Audit);
    return RUN_ALL_TESTS();
}
