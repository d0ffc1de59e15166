#include <fs/files.h>

using FilesLoad = InAFolder;

constexpr int TURNS = 20;

/// Writes a text of one letter safely, in two writes.
static int _replace(PString const& name, char letter) {
    PFile file;
    (void)file.popen(name, SAFE_WRITE, PFile::EXCLUSIVE);
    (void)file.pwriteLine(std::wstring(5000, letter).c_str());
    return file.pclose();
}

/// Adds one to the number in a file under its lock. While another has it, replaces the other file.
static bool _count(PString const& number, PString const& safe, char letter) {
    unsigned long done = 0;
    char count = 0;
    PFile file;
    while (file.popen(number, READ | WRITE, PFile::EXCLUSIVE) == PERR_LOCKED) {
        if (file.pclose() != PERR_OK) return false;
        if (_replace(safe, letter) != PERR_OK) return false;
    }
    (void)file.pread(&count, 1, done);  // nothing at the very first
    (void)usleep(500);
    ++count;
    return file.pseek(0, 0) == PERR_OK && file.pwrite(&count, 1, done) == PERR_OK;
}

TEST_F(FilesLoad, NoUpdateUnderTheLockIsLostAndWhatIsWrittenSafelyIsSeenWhole) {
    PString const number = named(scratch.write("number", "")), safe = named(scratch.path("safe"));
    ASSERT_CODE(PERR_OK, _replace(safe, 'o'));
    std::vector<ChildRun> children;
    for (char const letter : {'a', 'b', 'c', 'd', 'e', 'f'})
        children.emplace_back([&] {
            int turn = 0;
            while (turn < TURNS && _count(number, safe, letter)) ++turn;
            return turn;
        });
    EXPECT_TRUE(eventually([&] {
        std::string const content = scratch.read("safe");
        EXPECT_EQ(std::string(5000, content[0]) + "\n", content);
        return scratch.read("number")[0] == 6 * TURNS;
    })) << "an update was lost";
    for (ChildRun& child : children) EXPECT_EQ(TURNS, child.wait());
}
