#include <fs/files.h>
#include <support/child_run.h>

constexpr unsigned int BOTH = PFile::OPEN_READ | PFile::OPEN_WRITE;

/// Writes a text of one sign, in two writes, safely.
static int _replace(PString const& name, char sign) {
    PFile file;
    (void)file.popen(name, PFile::OPEN_SAFE_WRITE, PFile::EXCLUSIVE);
    (void)file.pwriteLine(std::wstring(5000, sign).c_str());
    return file.pclose();
}

/// Adds one to the number in a file, by its lock; meanwhile it replaces another file.
static bool _count(PString const& number, PString const& safe, char sign) {
    unsigned long done = 0;
    char count = 0;
    PFile file;
    while (file.popen(number, BOTH, PFile::EXCLUSIVE) == PERR_LOCKED) {
        if (file.pclose() != PERR_OK) return false;
        if (_replace(safe, sign) != PERR_OK) return false;
    }
    (void)file.pread(&count, 1, done);  // nothing at the very first
    (void)usleep(500);
    ++count;
    return file.pseek(0, 0) == PERR_OK && file.pwrite(&count, 1, done) == PERR_OK;
}

TEST(FilesUnderLoad, LoseNoUpdateIfExclusiveAndAreSeenWholeIfSafe) {
    constexpr int TURNS = 20;
    Scratch const scratch;
    PString const number = named(scratch.write("number", "")), safe = named(scratch.path("safe"));
    ASSERT_CODE(PERR_OK, _replace(safe, 'o'));
    std::vector<ChildRun> children;
    for (char const sign : {'a', 'b', 'c', 'd', 'e', 'f'})
        children.emplace_back([&] {
            int turn = 0;
            while (turn < TURNS && _count(number, safe, sign)) ++turn;
            return turn;
        });
    EXPECT_TRUE(eventually([&] {
        std::string const content = scratch.read("safe");
        EXPECT_EQ(std::string(5000, content[0]) + "\n", content);
        return scratch.read("number")[0] == 6 * TURNS;
    })) << "an update was lost";
    for (ChildRun& child : children) EXPECT_EQ(TURNS, child.wait());
}

TEST(TemporaryFilesUnderLoad, TryAsManyNamesAsThereAreNumbers) {
    Scratch const scratch;
    scratch.write("f", "");
    PTempFile file;
    EXPECT_CODE(PERR_OPEN, file.popen(named(scratch.path("f/")), 18, PFile::EXCLUSIVE))
        << "no folder";
    EXPECT_FALSE(file.isOpen());
}
