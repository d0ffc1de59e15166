#include <cstdlib>
#include <filesystem>

#include <gtest/gtest.h>
#include <support/audit.h>
#include <sys/wait.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

class Audit : public testing::EmptyTestEventListener {
    void OnTestStart(testing::TestInfo const&) override {
        char const* const limit = std::getenv("TEST_SECONDS");
        (void)alarm(limit == nullptr ? 120 : static_cast<unsigned>(std::atoi(limit)));
        before = currentHoldings();
    }

    void OnTestEnd(testing::TestInfo const&) override {
        (void)alarm(0);
        for (auto const& [what, target] : currentHoldings())
            if (auto const known = before.find(what);
                known == before.end() || known->second != target)
                ADD_FAILURE() << "left behind: " << what << " " << target;
    }

    Holdings before;
};

}  // namespace

Holdings currentHoldings() {
    Holdings found;
    std::error_code none;
    std::string const own = std::to_string(getpid()) + "-";
    std::string const kinds[][3] = {
        {"descriptor ", "/proc/self/fd", ""},
        {"semaphore ", "/dev/shm", "sem.plt-" + own},
        {"scratch folder ", fs::temp_directory_path(), "portinglayer-test-" + own}};
    for (auto const& [kind, folder, prefix] : kinds) {
        std::vector<fs::path> entries;  // the descriptor of the listing itself is gone afterwards
        for (auto const& entry : fs::directory_iterator(folder, none)) entries.push_back(entry);
        for (auto const& entry : entries) {
            std::string const name = entry.filename();
            if (name.starts_with(prefix) && exists(symlink_status(entry, none)))
                found[kind + name] = fs::read_symlink(entry, none);
        }
    }
    siginfo_t child{};
    if (waitid(P_ALL, 0, &child, WEXITED | WNOHANG | WNOWAIT) == 0)
        found["child " + std::to_string(child.si_pid)];
    return found;
}

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    testing::UnitTest::GetInstance()->listeners().Append(new Audit);
    return RUN_ALL_TESTS();
}
