#include <chrono>
#include <random>

#include <sys/mman.h>

#include <portinglayer/replacements.h>
#include <support/child_run.h>
#include <support/expect.h>
#include <support/scratch.h>

namespace fs = std::filesystem;
using std::chrono::microseconds;
using std::chrono::steady_clock;

namespace {

constexpr std::size_t LINES = 500;

/// Content that shows whether it is whole.
std::string _content(int number) {
    std::string content;
    for (std::size_t i = 0; i < LINES; ++i) content += std::to_string(number) + "\n";
    return content;
}

int _replace(std::wstring const& name, int number) {
    PReplacement replacement;
    std::wstring const line = std::to_wstring(number);
    int result = replacement.begin(name.c_str());
    for (std::size_t i = 0; i < LINES && result == PERR_OK; ++i)
        result = replacement.writeLine(line.c_str());
    return result == PERR_OK ? replacement.commit() : result;
}

void _removeLeftNewFiles(Scratch const& scratch) {
    for (auto const& entry : fs::directory_iterator(scratch.dir()))
        if (entry.path().filename() != "file") fs::remove(entry.path());
}

}  // namespace

TEST(ReplacementLoad, KilledAtAnyMomentLeavesTheOldContentOrTheNew) {
    Scratch scratch;
    std::mt19937 random(1);
    auto const start = steady_clock::now();
    ASSERT_CODE(PERR_OK, _replace(scratch.wpath("file"), 0));
    auto const usual = std::chrono::duration_cast<microseconds>(steady_clock::now() - start);

    void* const shared = mmap(nullptr, sizeof(int), 3, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    auto* const isWithin = new (shared) std::atomic<bool>(false);
    int kills = 0, moved = 0, standing = 0;
    for (int i = 1; kills < KILLS && i < 20 * KILLS; ++i) {
        ChildRun replacing([&] {
            *isWithin = true;
            EXPECT_CODE(PERR_OK, _replace(scratch.wpath("file"), i));
            *isWithin = false;
            return pause();
        });
        std::this_thread::sleep_for(microseconds(random() % (usual.count() * 5 / 4)));
        ASSERT_EQ(0, kill(replacing.pid, SIGKILL));
        ASSERT_EQ(-SIGKILL, replacing.wait());

        std::string const content = scratch.read("file");
        bool const isNew = content == _content(i);
        ASSERT_TRUE(isNew || content == _content(standing)) << content.substr(0, 100);
        standing = isNew ? i : standing;
        moved += isNew && *isWithin ? 1 : 0;
        kills += isWithin->exchange(false) ? 1 : 0;
        _removeLeftNewFiles(scratch);
    }
    EXPECT_EQ(KILLS, kills);
    std::printf("%d killed within, %d of them with the new content in place\n", kills, moved);
    (void)munmap(shared, sizeof(int));
}
