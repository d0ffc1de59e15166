#include <filesystem>

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <portinglayer/files.h>
#include <support/scratch.h>

namespace fs = std::filesystem;

namespace {

int _removeAll(Scratch const& scratch, std::string const& name) {
    return PFile::removeAll(scratch.wpath(name).c_str());
}

}  // namespace

TEST(FileOperations, TellWhatStandsUnderAName) {
    Scratch scratch;
    scratch.write("file", "");
    fs::create_directory(scratch.path("folder"));
    ASSERT_EQ(mkfifo(scratch.path("pipe").c_str(), 0600), 0);
    fs::create_symlink("folder", scratch.path("link"));
    fs::create_symlink("none", scratch.path("dangling"));
    struct {
        std::wstring name;
        bool exists, file, folder, special;
    } const rows[] = {
        {scratch.wpath("file"), true, true, false, false},
        {scratch.wpath("folder"), true, false, true, false},
        {scratch.wpath("pipe"), true, false, false, true},
        {L"\\dev\\null", true, false, false, true},
        {scratch.wpath("link"), true, false, true, false},
        {scratch.wpath("dangling"), false, true, true, true},
        {L"/tmp/\u00e9", false, true, true, true},  // not in the C locale
        {L"", false, false, false, false},
    };
    for (auto const& row : rows) {
        PLiteral const name(row.name.c_str());
        EXPECT_EQ(PFile::exists(name), row.exists);
        EXPECT_EQ(PFile::check(name, 0), row.file) << row.name.size();
        EXPECT_EQ(PFile::check(name, 1), row.folder) << row.name.size();
        EXPECT_EQ(PFile::check(name, 2), row.special) << row.name.size();
        EXPECT_FALSE(PFile::check(name, 3) || PFile::check(name, -1));
    }
}

TEST(FileOperations, DeleteAndRenameGiveTheirCodes) {
    Scratch scratch;
    scratch.write("a", "content");
    for (char const* const folder : {"empty", "full", "full/sub"})
        fs::create_directory(scratch.path(folder));
    auto const rename = [&](std::string const& from, std::string const& to) {
        return PFile::rename(scratch.wpath(from).c_str(), scratch.wpath(to).c_str());
    };
    EXPECT_EQ(PFile::rename(L"", L"x"), PERR_INVALID_ARGUMENT);
    EXPECT_EQ(PFile::rename(L"x", L""), PERR_INVALID_ARGUMENT);
    EXPECT_EQ(PFile::rename(scratch.wpath("a").c_str(), L"\u00e9"), PERR_SYSTEM);
    EXPECT_EQ(rename("none", "b"), PERR_NOT_FOUND);
    EXPECT_EQ(rename("empty", "full"), PERR_REFUSED);
    EXPECT_EQ(rename("full", "full/sub/x"), PERR_REFUSED);
    EXPECT_EQ(rename("a", std::string(300, 'n')), PERR_IO);
    EXPECT_EQ(rename("a", "full\\b"), PERR_OK);
    EXPECT_EQ(scratch.read("full/b"), "content");

    EXPECT_EQ(PFile::pdelete(L""), PERR_INVALID_ARGUMENT);
    EXPECT_EQ(PFile::pdelete(L"\u00e9"), PERR_DELETE);
    EXPECT_EQ(PFile::pdelete(scratch.wpath("a").c_str()), PERR_NO_SUCH_FILE);
    EXPECT_EQ(PFile::pdelete(scratch.wpath("empty").c_str()), PERR_DELETE);
    EXPECT_EQ(PFile::pdelete(scratch.wpath("full\\b").c_str()), PERR_OK);
    EXPECT_FALSE(fs::exists(scratch.path("full/b")));
}

TEST(RemoveAll, RemovesTreesAndWhatLinksInThemLeadTo) {
    Scratch scratch;
    for (int i = 0; i < 1000; ++i) {
        std::string const folder = "tree/" + std::to_string(i % 4) + "/" + std::to_string(i % 7);
        fs::create_directories(scratch.path(folder));
        scratch.write(folder + "/" + std::to_string(i), "x");
    }
    fs::create_directory(scratch.path("target"));
    scratch.write("target/f", "x");
    fs::create_symlink(scratch.path("target"), scratch.path("tree/link"));
    EXPECT_EQ(_removeAll(scratch, "tree/"), PERR_OK);
    EXPECT_EQ(scratch.names(), std::vector<std::string>{"target"}) << "the link's target stays";
    EXPECT_TRUE(fs::is_empty(scratch.path("target"))) << "its content goes";
}

TEST(RemoveAll, GivesItsCodes) {
    Scratch scratch;
    scratch.write("file", "");
    for (char const* const folder : {"dangling", "loop", "odd", "odd/a"})
        fs::create_directory(scratch.path(folder));
    fs::create_symlink("none", scratch.path("dangling/link"));
    fs::create_symlink(scratch.path("loop"), scratch.path("loop/self"));
    scratch.write("odd/b\\c", "");
    EXPECT_EQ(PFile::removeAll(L""), PERR_DIR_NOT_FOUND);
    EXPECT_EQ(PFile::removeAll(L"/"), PERR_DIR_NOT_FOUND);
    EXPECT_EQ(_removeAll(scratch, "none"), PERR_DIR_NOT_FOUND);
    EXPECT_EQ(_removeAll(scratch, "file"), PERR_INVALID_ARGUMENT);
    EXPECT_EQ(_removeAll(scratch, "dangling"), PERR_DIR_NOT_FOUND);
    EXPECT_EQ(_removeAll(scratch, "loop"), PERR_DIR_NOT_FOUND) << "too many links in a path";
    EXPECT_EQ(_removeAll(scratch, "odd"), PERR_DIR_NOT_FOUND) << "a backslash becomes a slash";
}

TEST(RemoveAll, TriesAnUnreadableFolderAllTheSame) {
    Scratch scratch;
    for (char const* const folder : {"full", "empty"}) fs::create_directory(scratch.path(folder));
    scratch.write("full/f", "");
    ASSERT_EQ(chmod(scratch.dir().c_str(), 0777), 0);
    for (char const* const folder : {"full", "empty"})
        ASSERT_EQ(chmod(scratch.path(folder).c_str(), 0), 0);

    pid_t const child = fork();
    if (child == 0) {  // as somebody whom permissions bind
        if (geteuid() == 0 && setresuid(65534, 65534, 65534) != 0) _exit(3);
        bool const full = _removeAll(scratch, "full") == PERR_DELETE;
        bool const empty = _removeAll(scratch, "empty") == PERR_OK;
        _exit((full ? 0 : 1) + (empty ? 0 : 2));
    }
    int status = -1;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0) << "1 for the full one, 2 for the empty one";
    EXPECT_TRUE(fs::exists(scratch.path("full")));
    ASSERT_EQ(chmod(scratch.path("full").c_str(), 0700), 0);
}
