#include <clocale>
#include <memory>
#include <random>
#include <set>

#include <fnmatch.h>
#include <gtest/gtest.h>

#include <portinglayer/files.h>
#include <support/scratch.h>

static_assert(sizeof(PDir) == 104 && alignof(PDir) == 8 && !std::is_copy_constructible_v<PDir>);

TEST(Listing, KeepsItsStates) {
    Scratch scratch;
    std::wstring const path = scratch.wpath("");
    scratch.write("f", "");
    PDir dir;
    EXPECT_EQ(dir.preaddir(), PERR_DIR_NOT_OPEN);
    for (wchar_t const* const missing : {L"/nonexistent", L"", L"/tmp/\u00e9"})
        EXPECT_EQ(dir.popen(missing, L"f"), PERR_DIR_NOT_OPEN);
    EXPECT_EQ(dir.popen(path.c_str(), L"other"), PERR_OK) << "tried with the first pattern";
    EXPECT_EQ(++dir, PERR_DIR_NOT_OPEN) << "no first name yet";
    EXPECT_EQ(dir.preaddir(), PERR_OK) << "whatever came before";
    EXPECT_EQ(dir.popen(path.c_str(), L"*"), PERR_DIR_ALREADY_OPEN);
    EXPECT_EQ(++dir, PERR_READ);
    EXPECT_EQ(dir.getEntry(), L"f") << "the last name stays";
    EXPECT_TRUE(dir.pclose() == PERR_OK && dir.getEntry().len() == 0);
    std::multiset<std::wstring> names;
    (void)dir.popen(path.c_str(), L"");
    for (dir.preaddir(); dir == PERR_OK; dir++) names.insert(dir.getEntry().ptr());
    EXPECT_EQ(names, (std::multiset<std::wstring>{L".", L"..", L"f"})) << "all, without a pattern";
}

TEST(Listing, MatchesAsTheSystemDoes) {
    std::mt19937 random(815);
    wchar_t const signs[] = L"aab.*?-[]!\\/\u00e9";
    std::string const bytes[] = {"a", "b", ".", "-", "]", "\\", "[", "\xc3\xa9"};
    Scratch scratch;
    for (std::string name = "a"; scratch.names().size() < 150;
         name = name.size() > 6 ? "a" : name + bytes[random() % 8])
        scratch.write(name, "");
    std::vector<std::string> names = scratch.names();
    names.insert(names.end(), {".", ".."});
    int unconverted = 0;
    for (int round = 0; round < 1000; ++round) {
        ASSERT_NE(std::setlocale(LC_CTYPE, round % 2 == 0 ? "C.UTF-8" : "C"), nullptr);
        std::wstring pattern;
        for (auto left = 1 + random() % 6; left > 0; --left)
            pattern += signs[random() % (round % 3 == 0 ? 13 : 7)];
        std::unique_ptr<char[]> const narrow(PLiteral(pattern.c_str()).ascii());
        int balance = 0;
        for (std::string const& name : names)
            if (narrow && fnmatch(narrow.get(), name.c_str(), FNM_PATHNAME | FNM_NOESCAPE) == 0)
                ++balance;
        PDir dir(scratch.wpath("").c_str(), pattern.c_str());
        for (; dir.preaddir() != PERR_READ; --balance) unconverted += dir == PERR_CONVERSION;
        EXPECT_EQ(balance, 0) << "seed 815, round " << round;
    }
    EXPECT_GT(unconverted, 0) << "the listing goes on behind names that are not in the C locale";
    std::setlocale(LC_CTYPE, "C");
}

TEST(Directories, AreMadeAndRemovedOneAtATime) {
    Scratch scratch;
    std::wstring const path = scratch.wpath("d"), sub = scratch.wpath("d/sub");
    errno = 0;
    EXPECT_EQ(PDir::pcreate(sub.c_str()), PERR_DIR_CREATE);
    EXPECT_EQ(PDir::pcreate(L""), PERR_DIR_CREATE);
    EXPECT_EQ(PDir::pcreate(path.c_str()), PERR_OK);
    EXPECT_EQ(PDir::pcreate(path.c_str()), PERR_DIR_EXISTS);
    EXPECT_EQ(PDir::pcreate(sub.c_str()), PERR_DIR_EXISTS) << "made, but errno is the old one";
    EXPECT_EQ(PDir::pdelete(path.c_str()), PERR_DIR_DELETE);
    EXPECT_EQ(PDir::pdelete(scratch.wpath("d\\sub").c_str()), PERR_DIR_NOT_FOUND);
    EXPECT_EQ(PDir::pdelete(sub.c_str()), PERR_OK);
    EXPECT_EQ(PDir::pdelete(L""), PERR_INVALID_ARGUMENT);
}
