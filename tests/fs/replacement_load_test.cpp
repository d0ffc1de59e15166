#include <random>

#include <fs/files.h>
#include <portinglayer/replacements.h>

using ReplacementLoad = InAFolder;

/// Content that shows whether it is whole.
static std::string _content(int number) {
    return std::string(500, 'x') + std::to_string(number);
}

static int _replace(std::wstring const& name, int number) {
    PReplacement replacement;
    std::string const content = _content(number);
    (void)replacement.begin(name.c_str());
    for (char const& byte : content) (void)replacement.write(&byte, 1);
    return replacement.commit();
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
        ASSERT_TRUE(isNew || content == _content(standing)) << content.size() << " bytes";
        standing = isNew ? i : standing;
        for (std::string const& name : namesIn(scratch.dir()))
            if (name != "file") std::filesystem::remove(scratch.path(name));
    }
    EXPECT_EQ(KILLS, kills);
}
