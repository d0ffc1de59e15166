#include <memory>
#include <random>
#include <set>
#include <type_traits>

#include <fnmatch.h>
#include <gtest/gtest.h>

#include <clocale>

#include <portinglayer/files.h>
#include <support/scratch.h>

static_assert(sizeof(PDir) == 104 && alignof(PDir) == 8 && sizeof(PSystem) == 1);
static_assert(std::has_virtual_destructor_v<PDir> && !std::is_copy_constructible_v<PDir>);

namespace {

std::set<std::wstring> _list(Scratch const& scratch, wchar_t const* pattern) {
    std::set<std::wstring> names;
    PDir listing(scratch.wpath("").c_str(), pattern);
    for (listing.preaddir(); listing == PERR_OK; ++listing) names.insert(listing.getEntry().ptr());
    EXPECT_EQ(listing.getResult(), PERR_READ);
    return names;
}

}  // namespace

TEST(Listing, GivesNamesThatMatch) {
    using Names = std::set<std::wstring>;
    Scratch scratch;
    EXPECT_EQ(_list(scratch, L""), (Names{L".", L".."}));
    for (char const* const name : {"a.txt", "b.txt", ".txt", "c.log", "[x]", "d\\e"})
        scratch.write(name, "");
    EXPECT_EQ(_list(scratch, L"*").size(), 8U);
    EXPECT_EQ(_list(scratch, L"*.txt"), (Names{L"a.txt", L"b.txt", L".txt"}));
    EXPECT_EQ(_list(scratch, L"?.???"), (Names{L"a.txt", L"b.txt", L"c.log"}));
    EXPECT_EQ(_list(scratch, L"[bc].*"), (Names{L"b.txt", L"c.log"}));
    EXPECT_EQ(_list(scratch, L"d\\*"), (Names{L"d\\e"})) << "a backslash is a character";
    EXPECT_EQ(_list(scratch, L"*/*"), Names{});
    EXPECT_EQ(_list(scratch, L"\u00e9"), Names{}) << "not in the C locale";
}

TEST(Listing, KeepsItsStates) {
    Scratch scratch;
    scratch.write("f", "");
    PLiteral const none(L"/nonexistent");
    std::wstring const path = scratch.wpath("");
    PDir dir;
    EXPECT_EQ(dir.preaddir(), PERR_DIR_NOT_OPEN);
    EXPECT_EQ(dir.pclose(), PERR_OK);
    for (wchar_t const* const missing : {L"/nonexistent", L"", L"/tmp/\u00e9"}) {
        EXPECT_EQ(dir.popen(missing, L"f"), PERR_DIR_NOT_OPEN);
        EXPECT_EQ(dir.preaddir(), PERR_DIR_NOT_OPEN);
    }
    EXPECT_EQ(dir.popen(path.c_str(), L"other"), PERR_OK) << "tried with the first pattern";
    EXPECT_EQ(++dir, PERR_DIR_NOT_OPEN) << "no first name yet";
    EXPECT_TRUE(dir != PERR_OK);
    EXPECT_EQ(dir.preaddir(), PERR_OK);
    EXPECT_EQ(dir.getEntry(), L"f");
    EXPECT_EQ(dir.popen(path.c_str(), L"*"), PERR_DIR_ALREADY_OPEN);
    EXPECT_EQ(dir.getResult(), PERR_DIR_ALREADY_OPEN);
    EXPECT_EQ(dir++, PERR_READ);
    EXPECT_EQ(dir.getEntry(), L"f") << "the last name stays";
    EXPECT_EQ(dir.preaddir(), PERR_READ);
    EXPECT_EQ(dir.pclose(), PERR_OK);
    EXPECT_EQ(dir.getEntry().len(), 0U);
    EXPECT_EQ(dir.popen(path.c_str(), L""), PERR_OK);
}

TEST(Listing, GoesOnBehindANameThatCannotBeConverted) {
    Scratch scratch;
    scratch.write("\xff", "");
    std::setlocale(LC_CTYPE, "C.UTF-8");
    PDir dir(scratch.wpath("").c_str(), L"*");
    int conversions = 0;
    int names = 0;
    for (dir.preaddir(); dir != PERR_READ; dir.preaddir()) {
        ++(dir == PERR_CONVERSION ? conversions : names);
        EXPECT_EQ(dir.getEntry().len() == 0, dir == PERR_CONVERSION);
    }
    std::setlocale(LC_CTYPE, "C");
    EXPECT_EQ(conversions, 1);
    EXPECT_EQ(names, 2);
}

TEST(Listing, PatternsMatchAsTheSystemsDo) {
    std::mt19937 random(815);
    wchar_t const signs[] = L"aab.*?-[]!\\/\u00e9";
    std::string const bytes[] = {"a", "b", ".", "-", "]", "\\", "[", "\xc3\xa9"};
    Scratch scratch;
    for (int i = 0; i < 200; ++i) {
        std::string name;
        for (auto left = 1 + random() % 6; left > 0; --left) name += bytes[random() % 8];
        if (name.find_first_not_of('.') != name.npos) scratch.write(name, "");
    }
    std::vector<std::string> names = scratch.names();
    names.insert(names.end(), {".", ".."});
    for (int round = 0; round < 1000; ++round) {
        ASSERT_NE(std::setlocale(LC_CTYPE, round % 2 == 0 ? "C.UTF-8" : "C"), nullptr);
        std::wstring pattern;
        for (auto left = 1 + random() % 6; left > 0; --left)
            pattern += signs[random() % (round % 3 == 0 ? 13 : 7)];
        std::unique_ptr<char[]> const narrow(PLiteral(pattern.c_str()).ascii());
        int balance = 0;
        for (std::string const& name : names)
            if (narrow && fnmatch(narrow.get(), name.c_str(), 3) == 0) ++balance;
        PDir listing(scratch.wpath("").c_str(), pattern.c_str());
        while (listing.preaddir() != PERR_READ) --balance;
        ASSERT_EQ(balance, 0) << "seed 815, round " << round << ", pattern " << narrow.get();
    }
    std::setlocale(LC_CTYPE, "C");
}

TEST(Directories, AreMadeAndRemovedOneAtATime) {
    Scratch scratch;
    std::wstring const path = scratch.wpath("d");
    errno = 0;
    EXPECT_EQ(PDir::pcreate(scratch.wpath("d/sub").c_str()), PERR_DIR_CREATE);
    EXPECT_EQ(PDir::pcreate(L""), PERR_DIR_CREATE);
    EXPECT_EQ(PDir::pcreate(path.c_str()), PERR_OK);
    EXPECT_EQ(PDir::pcreate(path.c_str()), PERR_DIR_EXISTS);
    EXPECT_EQ(PDir::pcreate(scratch.wpath("d/sub").c_str()), PERR_DIR_EXISTS)
        << "made, but errno still tells of the call before";
    EXPECT_EQ(PDir::pdelete(path.c_str()), PERR_DIR_DELETE);
    EXPECT_EQ(PDir::pdelete(scratch.wpath("d\\sub").c_str()), PERR_DIR_NOT_FOUND);
    EXPECT_EQ(PDir::pdelete(scratch.wpath("d/sub").c_str()), PERR_OK);
    EXPECT_EQ(PDir::pdelete(path.c_str()), PERR_OK);
    EXPECT_EQ(PDir::pdelete(L""), PERR_INVALID_ARGUMENT);
    EXPECT_EQ(PDir::pdelete(L"\u00e9"), PERR_DIR_DELETE);
}
