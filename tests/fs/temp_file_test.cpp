#include <memory>

#include <faults/interpose.h>
#include <fs/files.h>

static_assert(sizeof(PTempFile) == 72 && sizeof(PSystem) == 1);

constexpr unsigned int NEW = PFile::OPEN_WRITE | PFile::OPEN_CREATE;

static long drawn = -1;  // what the generator gives; -1 lets it draw

INTERPOSE(rand, if (drawn >= 0) return drawn)

TEST(TemporaryFile, IsCalledPrefixAndNumberAndStays) {
    Scratch const scratch;
    PString name;
    PTempFile file;
    drawn = 238328 + 40213;
    EXPECT_CODE(PERR_OK, file.popen(named(scratch.dir() + "\\job"), NEW, PFile::EXCLUSIVE));
    drawn = -1;
    EXPECT_CODE(PERR_OK, file.pgetName(name));
    EXPECT_TEXT(scratch.wpath("job40213"), name);
    EXPECT_CODE(PERR_OK, file.pclose());
    EXPECT_EQ(std::set<std::string>{"job40213"}, namesIn(scratch.dir()));
}

TEST(TemporaryFile, NumberIsWrittenWithoutLeadingZeros) {
    for (int const number : {0, 1, 2, 3, 9, 10, 99, 100, 238327}) {
        drawn = number;
        std::unique_ptr<wchar_t[]> const made(PTempFile().getRandStr());
        EXPECT_EQ(std::to_wstring(number), made.get());
    }
    drawn = -1;
}

TEST(TemporaryFile, NumberIsThatOfTheSecond) {
    std::unique_ptr<wchar_t[]> const first(PTempFile().getRandStr()),
        next(PTempFile().getRandStr());
    std::unique_ptr<wchar_t[]> const third(PTempFile().getRandStr());
    EXPECT_TRUE(first.get() == std::wstring(next.get()) || next.get() == std::wstring(third.get()));
}

TEST(TemporaryFile, IsNotOpenedWithoutAPrefixOrWithoutCreating) {
    Scratch const scratch;
    PTempFile file;
    EXPECT_CODE(PERR_INVALID_ARGUMENT, file.popen(L"", NEW, PFile::EXCLUSIVE));
    EXPECT_CODE(PERR_NO_SUCH_FILE, file.popen(named(scratch.path("f")), PFile::OPEN_READ, 0));
    EXPECT_CODE(PERR_OK, file.popen(named(scratch.path("f")), NEW, PFile::EXCLUSIVE))
        << "it was not taken";
}

TEST(TemporaryFile, StaysTakenUntilItIsClosedAsOne) {
    Scratch const scratch;
    PString const prefix = named(scratch.path("f"));
    PTempFile file;
    EXPECT_CODE(PERR_OK, file.popen(prefix, NEW, PFile::EXCLUSIVE));
    EXPECT_CODE(PERR_ALREADY_OPEN, file.popen(prefix, NEW, PFile::EXCLUSIVE));
    EXPECT_CODE(PERR_OK, file.PFile::pclose());
    EXPECT_CODE(PERR_ALREADY_OPEN, file.popen(prefix, NEW, PFile::EXCLUSIVE));
    EXPECT_CODE(PERR_NOT_OPEN, file.pclose());
    EXPECT_CODE(PERR_OK, file.popen(named(scratch.path("g")), NEW, PFile::EXCLUSIVE));
}

TEST(System, HasATemporaryFolder) {
    EXPECT_TEXT(L"/tmp/", PSystem::getTempDir());
}

TEST(System, GivesTheLeastNumberButForTheLargestDrawn) {
    drawn = 2147483646;
    EXPECT_EQ(5, PSystem::getRandom(5, 10));
    drawn = 2147483647;
    EXPECT_EQ(15, PSystem::getRandom(5, 10));
    drawn = -1;
}
