#include <support/audit.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

#include <gtest/gtest.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

void _addNames(Holdings& found, std::string const& kind, fs::path const& folder,
               std::string const& prefix) {
    std::error_code ignored;
    for (auto const& entry : fs::directory_iterator(folder, ignored)) {
        std::string const name = entry.path().filename();
        if (name.starts_with(prefix)) found[kind + " " + name] = fs::read_symlink(entry, ignored);
    }
}

class Audit : public testing::EmptyTestEventListener {
    void OnTestStart(testing::TestInfo const&) override {
        char const* const limit = std::getenv("TEST_SECONDS");
        (void)alarm(limit == nullptr ? 120 : static_cast<unsigned>(std::atoi(limit)));
        before = currentHoldings();
    }

    void OnTestEnd(testing::TestInfo const&) override {
        (void)alarm(0);
        for (auto const& [what, target] : currentHoldings()) {
            auto const known = before.find(what);
            if (known == before.end() || known->second != target)
                ADD_FAILURE() << "left behind: " << what << " " << target;
        }
    }

    Holdings before;
};

}  // namespace

Holdings currentHoldings() {
    Holdings found;
    _addNames(found, "descriptor", "/proc/self/fd", "");
    _addNames(found, "semaphore", "/dev/shm", "sem.plt-" + std::to_string(getpid()) + "-");
    _addNames(found, "scratch folder", fs::temp_directory_path(),
              "portinglayer-test-" + std::to_string(getpid()) + "-");

    // The descriptor of the listing itself is closed by now.
    std::error_code ignored;
    std::erase_if(found, [&](auto const& item) {
        return item.first.starts_with("descriptor") &&
               !fs::is_symlink("/proc/self/fd/" + item.first.substr(11), ignored);
    });

    std::string const parent = std::to_string(getpid());
    for (auto const& entry : fs::directory_iterator("/proc")) {
        std::ifstream stat(entry.path() / "stat");
        std::string line;
        if (!std::getline(stat, line)) continue;
        std::istringstream fields(line.substr(std::min(line.size(), line.rfind(')') + 1)));
        std::string state, ppid;
        if (fields >> state >> ppid && ppid == parent)
            found["child " + entry.path().filename().string()];
    }
    return found;
}

void installAudit() {
    testing::UnitTest::GetInstance()->listeners().Append(new Audit);
}
