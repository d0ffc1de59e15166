#include <clocale>
#include <memory>
#include <random>

#include <fnmatch.h>
#include <gtest/gtest.h>

#include <portinglayer/files.h>
#include <support/scratch.h>

TEST(Directories, AreMadeListedAndRemovedInTheirStates) {
    Scratch scratch;
    std::wstring const top = scratch.wpath("d"), sub = scratch.wpath("d/sub");
    PLiteral const path(top.c_str()), below(sub.c_str());
    errno = 0;
    EXPECT_EQ(PDir::pcreate(below), PERR_DIR_CREATE);
    EXPECT_EQ(PDir::pcreate(path), PERR_OK);
    errno = EEXIST;
    EXPECT_EQ(PDir::pcreate(below), PERR_DIR_EXISTS) << "made, but errno is the old one";
    PDir dir;
    EXPECT_EQ(dir.popen(L"\\tmp", L"s?b"), PERR_DIR_NOT_OPEN);
    EXPECT_EQ(dir.popen(path, L"*"), PERR_OK) << "with the first pattern";
    EXPECT_EQ(++dir, PERR_DIR_NOT_OPEN) << "no first name yet";
    EXPECT_EQ(dir.preaddir(), PERR_OK) << "whatever came before";
    EXPECT_EQ(dir.popen(L"/tmp", L""), PERR_DIR_ALREADY_OPEN);
    EXPECT_EQ(dir++, PERR_READ);
    EXPECT_TRUE(dir.getEntry() == L"sub" && !(dir != PERR_READ)) << "the last name stays";
    EXPECT_TRUE(dir.pclose() == PERR_OK && dir.getEntry().len() == 0 && dir == PERR_OK);
    EXPECT_EQ(PDir::pdelete(L""), PERR_INVALID_ARGUMENT);
    EXPECT_EQ(PDir::pdelete(path), PERR_DIR_DELETE);
    EXPECT_EQ(PDir::pdelete(below), PERR_OK);
    EXPECT_EQ(PDir::pdelete(below), PERR_DIR_NOT_FOUND);
}

TEST(Directories, AreListedAsTheCLibraryMatches) {
    std::string const names[] = {".",  "..",  "a",   "aa",  "ab.a",
                                 ".b", "a-b", "[a]", "a\\", "\xc3\xa9"};
    Scratch scratch;
    for (int i = 2; i < 10; ++i) scratch.write(names[i], "");
    std::mt19937 random(815);
    int unconverted = 0;
    for (int round = 0; round < 5000; ++round) {
        (void)std::setlocale(LC_CTYPE, round % 2 == 0 ? "C.UTF-8" : "C");
        std::wstring pattern;
        for (auto left = 1 + random() % 6, kinds = round % 3 == 0 ? 13UL : 7UL; left > 0; --left)
            pattern += L"aab.*?-[]!\\/\u00e9"[random() % kinds];
        int balance = 0;
        std::unique_ptr<char[]> const text(PLiteral(pattern.c_str()).ascii());
        for (std::string const& name : names)
            balance += text && fnmatch(text.get(), name.c_str(), FNM_PATHNAME | FNM_NOESCAPE) == 0;
        PDir dir(wide(scratch.dir()).c_str(), pattern.c_str());
        for (; dir.preaddir() != PERR_READ; --balance) unconverted += dir == PERR_CONVERSION;
        EXPECT_EQ(balance, 0) << "seed 815, round " << round;
    }
    EXPECT_GT(unconverted, 0) << "the listing goes on behind names that are not in the C locale";
}
