#include <csignal>
#include <filesystem>
#include <map>
#include <set>

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <portinglayer/files.h>
#include <support/child_run.h>
#include <support/scratch.h>

namespace fs = std::filesystem;

TEST(FileOperations, TellWhatStandsUnderANameAndMoveAndDeleteIt) {
    Scratch scratch;
    fs::create_symlink(scratch.dir(), scratch.path("link"));
    fs::create_symlink("none", scratch.path("dangling"));
    std::wstring const file = wide(scratch.write("file", "content")), to = scratch.wpath("\\moved");
    std::map<std::wstring, std::set<int>> const kinds{
        {file, {0}}, {scratch.wpath("link"), {1}}, {L"\\dev\\null", {2}},
        {L"", {}},   {L"/tmp/\u00e9", {0, 1, 2}},  {scratch.wpath("dangling"), {0, 1, 2}}};
    for (auto const& [name, expected] : kinds) {
        EXPECT_EQ(PFile::exists(name.c_str()), expected.size() == 1);
        for (int kind = -1; kind < 4; ++kind)
            EXPECT_EQ(PFile::check(name.c_str(), kind), expected.contains(kind)) << kind;
    }
    for (int const code : {PFile::rename(L"", L"x"), PFile::rename(L"x", L""), PFile::pdelete(L"")})
        EXPECT_EQ(code, PERR_INVALID_ARGUMENT);
    EXPECT_EQ(PFile::rename(file.c_str(), L"\u00e9"), PERR_SYSTEM);
    EXPECT_EQ(PFile::rename(file.c_str(), to.c_str()), PERR_OK);
    EXPECT_EQ(PFile::pdelete(scratch.wpath("moved").c_str()), PERR_OK);
    EXPECT_EQ(PFile::pdelete(to.c_str()), PERR_NO_SUCH_FILE);
}

TEST(FileOperations, RemoveAllEmptiesWhatLinksLeadToAndStopsAtWhatItCannotSee) {
    Scratch scratch;
    for (char const* const folder : {"tree/a/b/c", "target/sub", "dangling", "loop", "odd"})
        fs::create_directories(scratch.path(folder));
    for (int i = 0; i < 300; ++i) scratch.write("tree/a/" + std::to_string(i), "x");
    fs::create_symlink(scratch.path("target"), scratch.path("tree/a/b/link"));
    fs::create_symlink("none", scratch.path("dangling/link"));
    fs::create_symlink(scratch.path("loop"), scratch.path("loop/self"));
    scratch.write("odd/b\\c", "");  // a slash, for those who look
    for (char const* const name : {"dangling", "loop", "odd", "none"})
        EXPECT_EQ(PFile::removeAll(scratch.wpath(name).c_str()), PERR_DIR_NOT_FOUND) << name;
    EXPECT_EQ(PFile::removeAll(L"/dev/null/"), PERR_INVALID_ARGUMENT) << "less its slash";
    EXPECT_EQ(PFile::removeAll(scratch.wpath("tree\\").c_str()), PERR_OK);
    EXPECT_TRUE(!fs::exists(scratch.path("tree")) && fs::is_empty(scratch.path("target")));
}

TEST(FileOperations, GiveTheirCodesAtTheLimitsOfTheSystem) {
    constexpr int MOST = 1 << 20;
    Scratch scratch;
    std::wstring const path = scratch.wpath("f"), closed = scratch.wpath("closed");
    fs::create_directory(scratch.path("closed"));
    fs::permissions(scratch.path("closed"), fs::perms::none);
    fs::permissions(scratch.dir(), fs::perms::all);
    ChildRun child([&] {
        rlimit const bytes{MOST, MOST};
        rlimit descriptors{};
        std::string const much(MOST + 1, 'x');
        unsigned long done = 0;
        PTempFile temporary;
        PFile file, other;
        EXPECT_TRUE(geteuid() != 0 || setresuid(65534, 65534, 65534) == 0);
        EXPECT_EQ(PDir().popen(closed.c_str(), L""), PERR_DIR_NOT_OPEN);
        EXPECT_EQ(PFile::removeAll(closed.c_str()), PERR_OK) << "unlisted";

        EXPECT_TRUE(signal(SIGXFSZ, SIG_IGN) != SIG_ERR && setrlimit(RLIMIT_FSIZE, &bytes) == 0);
        EXPECT_EQ(file.popen(path.c_str(), PFile::OPEN_SAFE_WRITE, 0), PERR_OK);
        EXPECT_EQ(file.pwrite(much.data(), much.size(), done), PERR_OK) << "as much as fits";
        EXPECT_EQ(file.pwrite(much.data(), 1, done), PERR_WRITE);
        EXPECT_EQ(file.pwriteLine(L"x"), PERR_WRITE);

        // Before the limit: the sanitizer needs a descriptor to see a type for the first time.
        EXPECT_EQ(temporary.popen(path.c_str(), 0, 0), PERR_NO_SUCH_FILE) << "not to be created";
        EXPECT_EQ(getrlimit(RLIMIT_NOFILE, &descriptors), 0);
        descriptors.rlim_cur = 0;
        EXPECT_EQ(setrlimit(RLIMIT_NOFILE, &descriptors), 0);
        EXPECT_EQ(other.popen(L"/dev/null", PFile::OPEN_READ, 1), PERR_OPEN);
        EXPECT_EQ(other.popen(path.c_str(), PFile::OPEN_SAFE_WRITE, 0), PERR_OPEN);
        EXPECT_EQ(temporary.popen(path.c_str(), 18, 0), PERR_OPEN) << "after all attempts";
        EXPECT_EQ(PSystem::getTempDir().len(), 0U);
        EXPECT_EQ(PFile::removeAll(wide(scratch.dir()).c_str()), PERR_DELETE);
        EXPECT_EQ(file.pclose(), PERR_OK);
        return testing::Test::HasFailure() ? 1 : 0;
    });
    EXPECT_EQ(child.wait(), 0);
    EXPECT_EQ(scratch.read("f").size(), MOST) << "moved, cut as it is";
}
