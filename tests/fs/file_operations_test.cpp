#include <filesystem>
#include <set>

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <portinglayer/files.h>
#include <support/scratch.h>

namespace fs = std::filesystem;

static int _removeAll(Scratch const& scratch, std::string const& name) {
    return PFile::removeAll(scratch.wpath(name).c_str());
}

TEST(FileOperations, TellWhatStandsUnderAName) {
    Scratch scratch;
    scratch.write("file", "");
    fs::create_symlink(scratch.dir(), scratch.path("link"));
    fs::create_symlink("none", scratch.path("dangling"));
    struct {
        std::wstring name;
        bool exists;
        std::set<int> kinds;
    } const rows[] = {
        {scratch.wpath("file"), true, {0}},
        {scratch.wpath("link"), true, {1}},
        {scratch.wpath("dangling"), false, {0, 1, 2}},
        {L"\\dev\\null", true, {2}},
        {L"/tmp/\u00e9", false, {0, 1, 2}},  // not in the C locale
        {L"", false, {}},
    };
    for (auto const& row : rows) {
        EXPECT_EQ(PFile::exists(row.name.c_str()), row.exists);
        for (int kind = -1; kind < 4; ++kind)
            EXPECT_EQ(PFile::check(row.name.c_str(), kind), row.kinds.contains(kind)) << kind;
    }
}

TEST(FileOperations, DeleteAndRenameGiveTheirCodes) {
    Scratch scratch;
    fs::create_directories(scratch.path("full/sub"));
    std::wstring const file = wide(scratch.write("a", "content"));
    std::wstring const folder = scratch.wpath("full"), target = scratch.wpath("full\\b");
    EXPECT_EQ(PFile::rename(L"", L"x"), PERR_INVALID_ARGUMENT);
    EXPECT_EQ(PFile::rename(L"x", L""), PERR_INVALID_ARGUMENT);
    EXPECT_EQ(PFile::rename(file.c_str(), L"\u00e9"), PERR_SYSTEM) << "no name for the system";
    EXPECT_EQ(PFile::rename(file.c_str(), folder.c_str()), PERR_REFUSED);
    EXPECT_EQ(PFile::rename(file.c_str(), target.c_str()), PERR_OK);
    EXPECT_EQ(scratch.read("full/b"), "content");
    EXPECT_EQ(PFile::pdelete(L""), PERR_INVALID_ARGUMENT);
    EXPECT_EQ(PFile::pdelete(L"\u00e9"), PERR_DELETE);
    EXPECT_EQ(PFile::pdelete(file.c_str()), PERR_NO_SUCH_FILE);
    EXPECT_EQ(PFile::pdelete(folder.c_str()), PERR_DELETE);
    EXPECT_EQ(PFile::pdelete(target.c_str()), PERR_OK);
}

TEST(RemoveAll, RemovesTreesAndWhatLinksInThemLeadTo) {
    Scratch scratch;
    for (int i = 0; i < 1000; ++i) {
        std::string const folder = "tree/" + std::to_string(i % 4) + "/" + std::to_string(i % 7);
        fs::create_directories(scratch.path(folder));
        scratch.write(folder + "/" + std::to_string(i), "x");
    }
    fs::create_directories(scratch.path("target/sub"));
    fs::create_symlink(scratch.path("target"), scratch.path("tree/link"));
    EXPECT_EQ(_removeAll(scratch, "tree/"), PERR_OK);
    EXPECT_EQ(scratch.names(), std::vector<std::string>{"target"}) << "the link's target stays";
    EXPECT_TRUE(fs::is_empty(scratch.path("target"))) << "its content goes";
}

TEST(RemoveAll, GivesItsCodes) {
    Scratch scratch;
    for (char const* const folder : {"dangling", "loop", "odd"})
        fs::create_directory(scratch.path(folder));
    fs::create_symlink("none", scratch.path("dangling/link"));
    fs::create_symlink(scratch.path("loop"), scratch.path("loop/self"));
    scratch.write("odd/b\\c", "");
    EXPECT_EQ(PFile::removeAll(L""), PERR_DIR_NOT_FOUND);
    EXPECT_EQ(_removeAll(scratch, "odd/b\\c"), PERR_DIR_NOT_FOUND) << "a slash";
    EXPECT_EQ(_removeAll(scratch, "odd"), PERR_DIR_NOT_FOUND) << "likewise, below";
    EXPECT_EQ(_removeAll(scratch, "dangling"), PERR_DIR_NOT_FOUND);
    EXPECT_EQ(_removeAll(scratch, "loop"), PERR_DIR_NOT_FOUND) << "too many links in a path";
    EXPECT_EQ(PFile::removeAll(L"/dev/null/"), PERR_INVALID_ARGUMENT) << "less its slash";
}

TEST(RemoveAll, TriesAnUnreadableFolderAllTheSame) {
    Scratch scratch;
    fs::create_directories(scratch.path("full/sub"));
    fs::create_directory(scratch.path("empty"));
    for (char const* const folder : {"full", "empty"})
        fs::permissions(scratch.path(folder), fs::perms::none);
    fs::permissions(scratch.dir(), fs::perms::all);
    pid_t const child = fork();
    if (child == 0) {  // as somebody whom permissions bind
        if (geteuid() == 0 && setresuid(65534, 65534, 65534) != 0) _exit(4);
        _exit((_removeAll(scratch, "full") == PERR_DELETE ? 0 : 1) +
              (_removeAll(scratch, "empty") == PERR_OK ? 0 : 2));
    }
    int status = -1;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(WEXITSTATUS(status), 0) << "1 for the full one, 2 for the empty one";
    fs::permissions(scratch.path("full"), fs::perms::owner_all);
}
