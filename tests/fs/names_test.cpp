#include <clocale>

#include <fs/files.h>

namespace fs = std::filesystem;

using Names = InAFolder;
using RemoveAll = InAFolder;

TEST_F(Names, ExistThroughLinksAndBackslashes) {
    fs::create_symlink("none", scratch.path("dangling"));
    scratch.write("file", "");
    EXPECT_TRUE(PFile::exists(named(scratch.dir() + "\\file")));
    EXPECT_FALSE(PFile::exists(named(scratch.path("dangling"))));
    EXPECT_FALSE(PFile::exists(L""));
    EXPECT_FALSE(PFile::exists(L"/tmp/\u00e9")) << "no name in the C locale";
}

TEST_F(Names, AreOfAKindOrOfAllThatCannotBeExamined) {
    fs::create_symlink(scratch.dir(), scratch.path("link"));
    PString const one = named(scratch.write("file", "")), none = named(scratch.path("none"));
    EXPECT_TRUE(PFile::check(one, PFile::KIND_FILE));
    EXPECT_FALSE(PFile::check(one, PFile::KIND_SPECIAL));
    EXPECT_TRUE(PFile::check(named(scratch.path("link")), PFile::KIND_DIRECTORY));
    EXPECT_TRUE(PFile::check(L"\\dev\\null", PFile::KIND_SPECIAL));
    EXPECT_TRUE(PFile::check(none, PFile::KIND_FILE));
    EXPECT_TRUE(PFile::check(none, PFile::KIND_SPECIAL));
    EXPECT_FALSE(PFile::check(none, -1));
    EXPECT_FALSE(PFile::check(none, 3));
    EXPECT_FALSE(PFile::check(L"", PFile::KIND_FILE));
}

TEST_F(Names, OfFilesAndLinksAreDeletedButNotOfFolders) {
    fs::create_symlink(scratch.dir(), scratch.path("link"));
    EXPECT_CODE(PERR_OK, PFile::pdelete(named(scratch.dir() + "\\link")));
    EXPECT_CODE(PERR_NO_SUCH_FILE, PFile::pdelete(named(scratch.path("link"))));
    EXPECT_CODE(PERR_DELETE, PFile::pdelete(named(scratch.dir())));
    EXPECT_EQ(EISDIR, errno) << "the system's reason stays";
    EXPECT_CODE(PERR_INVALID_ARGUMENT, PFile::pdelete(L""));
}

TEST_F(Names, AreReplacedByRenaming) {
    PString const from = named(scratch.write("from", "new"));
    scratch.write("to", "old");
    EXPECT_CODE(PERR_INVALID_ARGUMENT, PFile::rename(from, L""));
    EXPECT_CODE(PERR_INVALID_ARGUMENT, PFile::rename(L"", from));
    EXPECT_CODE(PERR_NOT_FOUND, PFile::rename(named(scratch.path("none")), from));
    EXPECT_CODE(PERR_REFUSED, PFile::rename(from, named(scratch.dir())));
    EXPECT_CODE(PERR_IO, PFile::rename(from, named(scratch.path(std::string(256, 'n')))));
    EXPECT_CODE(PERR_SYSTEM, PFile::rename(from, L"/tmp/\u00e9")) << "no name in the C locale";
    EXPECT_CODE(PERR_OK, PFile::rename(from, named(scratch.dir() + "\\to")));
    EXPECT_EQ("new", scratch.read("to"));
}

TEST_F(RemoveAll, RemovesTreesAndEmptiesWhatLinksLeadTo) {
    fs::create_directories(scratch.path("tree/a/b"));
    fs::create_directories(scratch.path("target/sub"));
    fs::create_symlink(scratch.path("target"), scratch.path("tree/a/b/link"));
    scratch.write("tree/a/file", "x");
    EXPECT_CODE(PERR_OK, PFile::removeAll(named(scratch.path("tree\\"))));
    EXPECT_EQ(std::set<std::string>{"target"}, namesIn(scratch.dir()));
    EXPECT_TRUE(namesIn(scratch.path("target")).empty());
}

TEST_F(RemoveAll, StopsAtWhatItCannotSee) {
    fs::create_directories(scratch.path("odd"));
    scratch.write("odd/b\\c", "");  // a slash, for those who look
    EXPECT_CODE(PERR_DIR_NOT_FOUND, PFile::removeAll(named(scratch.path("odd"))));
    EXPECT_CODE(PERR_DIR_NOT_FOUND, PFile::removeAll(L""));
    EXPECT_CODE(PERR_INVALID_ARGUMENT, PFile::removeAll(named(scratch.write("file", "") + "/")));
}

TEST_F(RemoveAll, TakesZeroCharactersBehindThePath) {
    ASSERT_NE(nullptr, std::setlocale(LC_CTYPE, "C.UTF-8"));
    fs::create_directories(scratch.path("\u00e9/sub"));
    EXPECT_CODE(PERR_OK, text.set((scratch.path("\u00e9") + "/").c_str(), P_WHOLE_STRING));
    EXPECT_EQ(L'\0', text.ptr()[text.len() - 1]) << "narrow text beyond ASCII leaves them";
    EXPECT_CODE(PERR_OK, PFile::removeAll(text));
    (void)std::setlocale(LC_CTYPE, "C");
    EXPECT_TRUE(namesIn(scratch.dir()).empty());
}
