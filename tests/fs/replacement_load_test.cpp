#include <random>

#include <fs/files.h>
#include <portinglayer/replacements.h>

using ReplacementLoad = InAFolder;

constexpr int LINES = 500;

/// Content that shows whether it is whole.
static std::string _content(int number) {
    std::string content;
    for (int i = 0; i < LINES; ++i) content += std::to_string(number) + "\n";
    return content;
}

static int _replace(std::wstring const& name, int number) {
    PReplacement replacement;
    std::wstring const line = std::to_wstring(number);
    int result = replacement.begin(name.c_str());
    for (int i = 0; i < LINES && result == PERR_OK; ++i)
        result = replacement.writeLine(line.c_str());
    return result == PERR_OK ? replacement.commit() : result;
}

TEST_F(ReplacementLoad, KilledAtAnyMomentLeavesTheOldContentOrTheNew) {
    std::mt19937 random(1);
    auto const start = std::chrono::steady_clock::now();
    ASSERT_CODE(PERR_OK, _replace(scratch.wpath("file"), 0));
    std::chrono::nanoseconds const usual = std::chrono::steady_clock::now() - start;

    int kills = 0, standing = 0;
    for (int i = 1; kills < KILLS && i < 20 * KILLS; ++i) {
        ChildRun replacing([&] { return _replace(scratch.wpath("file"), i); });
        std::this_thread::sleep_for(usual * (random() % 100) / 80);
        ASSERT_EQ(0, kill(replacing.pid, SIGKILL));
        kills += replacing.wait() == -SIGKILL ? 1 : 0;

        std::string const content = scratch.read("file");
        bool const isNew = content == _content(i);
        ASSERT_TRUE(isNew || content == _content(standing)) << content.substr(0, 100);
        standing = isNew ? i : standing;
        for (std::string const& name : namesIn(scratch.dir()))
            if (name != "file") std::filesystem::remove(scratch.path(name));
    }
    EXPECT_EQ(KILLS, kills);
}
