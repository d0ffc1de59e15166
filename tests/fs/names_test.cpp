#include <functional>
#include <map>

#include <sys/eventfd.h>
#include <unistd.h>

#include <faults/interpose.h>
#include <fs/files.h>

namespace fs = std::filesystem;

static int renameRefusal = -1;  // the reason for which the system refuses; -1 lets it decide

INTERPOSE(rename, if (renameRefusal >= 0) return errno = renameRefusal, -1)

TEST(Exists, FollowsLinksAndTakesBackslashesForSlashes) {
    Scratch const scratch;
    fs::create_symlink("none", scratch.path("dangling"));
    EXPECT_TRUE(PFile::exists(named(scratch.dir())));
    EXPECT_TRUE(PFile::exists(named(scratch.write("file", ""))));
    EXPECT_TRUE(PFile::exists(named(scratch.dir() + "\\file")));
    EXPECT_FALSE(PFile::exists(named(scratch.path("none"))));
    EXPECT_FALSE(PFile::exists(named(scratch.path("dangling"))));
    EXPECT_FALSE(PFile::exists(L""));
    EXPECT_FALSE(PFile::exists(L"/tmp/\u00e9")) << "no name in the C locale";
}

TEST(Check, TellsKindsApartAndIsTrueOfWhatCannotBeExamined) {
    Scratch const scratch;
    fs::create_symlink(scratch.dir(), scratch.path("link"));
    int const counter = eventfd(0, 0);
    struct {
        char const* what;
        std::wstring name;
        std::set<int> kinds;
    } const rows[] = {
        {"a file", wide(scratch.write("file", "")), {PFile::KIND_FILE}},
        {"a folder", wide(scratch.dir()), {PFile::KIND_DIRECTORY}},
        {"a link to a folder", scratch.wpath("link"), {PFile::KIND_DIRECTORY}},
        {"a device", L"\\dev\\null", {PFile::KIND_SPECIAL}},
        {"an event counter", wide("/proc/self/fd/" + std::to_string(counter)), {}},
        {"nothing", scratch.wpath("none"), {0, 1, 2}},
        {"what the locale cannot express", L"/tmp/\u00e9", {0, 1, 2}},
        {"an empty name", L"", {}},
    };
    for (auto const& row : rows)
        for (int kind = -1; kind <= 3; ++kind)
            EXPECT_EQ(row.kinds.contains(kind), PFile::check(row.name.c_str(), kind))
                << row.what << ", kind " << kind;
    (void)close(counter);
}

TEST(Delete, RemovesFilesAndLinksButNoFolders) {
    Scratch const scratch;
    fs::create_symlink(scratch.dir(), scratch.path("link"));
    EXPECT_CODE(PERR_OK, PFile::pdelete(named(scratch.write("file", ""))));
    EXPECT_CODE(PERR_OK, PFile::pdelete(named(scratch.dir() + "\\link")));
    EXPECT_CODE(PERR_NO_SUCH_FILE, PFile::pdelete(named(scratch.path("file"))));
    EXPECT_CODE(PERR_DELETE, PFile::pdelete(named(scratch.dir())));
    EXPECT_CODE(PERR_DELETE, PFile::pdelete(L"/tmp/\u00e9")) << "no name in the C locale";
    EXPECT_CODE(PERR_INVALID_ARGUMENT, PFile::pdelete(L""));
    EXPECT_TRUE(namesIn(scratch.dir()).empty());
}

TEST(Rename, ReplacesWhatStandsUnderTheNewName) {
    Scratch const scratch;
    PString const from = named(scratch.write("from", "new"));
    scratch.write("to", "old");
    EXPECT_CODE(PERR_OK, PFile::rename(from, named(scratch.dir() + "\\to")));
    EXPECT_EQ("new", scratch.read("to"));
    EXPECT_EQ(std::set<std::string>{"to"}, namesIn(scratch.dir()));
}

TEST(Rename, IsRefusedWithoutNames) {
    Scratch const scratch;
    PString const file = named(scratch.write("f", ""));
    EXPECT_CODE(PERR_INVALID_ARGUMENT, PFile::rename(file, L""));
    EXPECT_CODE(PERR_INVALID_ARGUMENT, PFile::rename(L"", file));
    EXPECT_CODE(PERR_SYSTEM, PFile::rename(file, L"/tmp/\u00e9")) << "no name in the C locale";
    EXPECT_CODE(PERR_SYSTEM, PFile::rename(L"/tmp/\u00e9", file)) << "no name in the C locale";
    EXPECT_CODE(PERR_NOT_FOUND, PFile::rename(named(scratch.path("none")), file));
    EXPECT_TRUE(fs::exists(scratch.path("f")));
}

TEST(Rename, TellsTheSystemsReasonByItsTable) {
    std::map<int, int> codes{{ENOENT, PERR_NOT_FOUND}};
    for (int const reason : {EIO, EMLINK, ENAMETOOLONG, ELOOP}) codes[reason] = PERR_IO;
    for (int const reason :
         {EPERM, EBUSY, EEXIST, EXDEV, ENOTDIR, EISDIR, EINVAL, ENOSPC, EROFS, ENOTEMPTY})
        codes[reason] = PERR_REFUSED;
    for (renameRefusal = 1; renameRefusal < 134; ++renameRefusal) {
        int const code = codes.contains(renameRefusal) ? codes[renameRefusal] : PERR_SYSTEM;
        EXPECT_CODE(code, PFile::rename(L"a", L"b")) << strerror(renameRefusal);
    }
    renameRefusal = -1;
}

TEST(RemoveAll, RemovesTreesAndEmptiesWhatLinksLeadTo) {
    Scratch const scratch;
    fs::create_directories(scratch.path("tree/a/b"));
    fs::create_directories(scratch.path("target/sub"));
    fs::create_symlink(scratch.path("target"), scratch.path("tree/a/b/link"));
    for (int i = 0; i < 300; ++i) scratch.write("tree/a/" + std::to_string(i), "x");
    EXPECT_CODE(PERR_OK, PFile::removeAll(named(scratch.path("tree\\"))));
    EXPECT_EQ(std::set<std::string>{"target"}, namesIn(scratch.dir()));
    EXPECT_TRUE(namesIn(scratch.path("target")).empty());
}

TEST(RemoveAll, StopsAtWhatItCannotSee) {
    Scratch const scratch;
    for (char const* const folder : {"dangling", "loop", "odd"})
        fs::create_directory(scratch.path(folder));
    fs::create_symlink("none", scratch.path("dangling/link"));
    fs::create_symlink(scratch.path("loop"), scratch.path("loop/self"));
    scratch.write("odd/b\\c", "");  // a slash, for those who look
    for (char const* const name : {"dangling", "loop", "odd", "none"})
        EXPECT_CODE(PERR_DIR_NOT_FOUND, PFile::removeAll(named(scratch.path(name)))) << name;
    EXPECT_CODE(PERR_DIR_NOT_FOUND, PFile::removeAll(L""));
    EXPECT_CODE(PERR_INVALID_ARGUMENT, PFile::removeAll(L"/dev/null/")) << "less its slash";
}

TEST(RemoveAll, TakesZeroCharactersBehindThePath) {
    Scratch const scratch;
    Locale const locale("C.UTF-8");
    fs::create_directories(scratch.path("\u00e9/sub"));
    scratch.write("\u00e9/sub/file", "");
    PString path;
    EXPECT_CODE(PERR_OK, path.set((scratch.path("\u00e9") + "/").c_str(), P_WHOLE_STRING));
    EXPECT_EQ(L'\0', path.ptr()[path.len() - 1]) << "narrow text beyond ASCII leaves them";
    EXPECT_CODE(PERR_OK, PFile::removeAll(path));
    EXPECT_TRUE(namesIn(scratch.dir()).empty());
}

TEST(Refusals, LeaveTheSystemsReasonInErrno) {
    Scratch const scratch;
    std::string const top =
        scratch.dir() + std::string(600, '/');  // longer than what a stack holds
    PString const file = named(scratch.write("f", "")), folder = named(top);
    PString const none = named(top + "none/f");
    PFile holder;
    EXPECT_CODE(PERR_OK, holder.popen(file, PFile::OPEN_READ, PFile::EXCLUSIVE));
    struct {
        char const* what;
        int reason;
        std::function<int()> operation;
    } const rows[] = {
        {"opening nothing", ENOENT, [&] { return PFile().popen(none, 1, 1); }},
        {"locking", EWOULDBLOCK, [&] { return PFile().popen(file, 1, 0); }},
        {"listing", ENOTDIR, [&] { return PDir().popen(file, L"*"); }},
        {"a temporary file", ENOENT, [&] { return PTempFile().popen(none, 18, 1); }},
        {"deleting", EISDIR, [&] { return PFile::pdelete(folder); }},
        {"renaming", ENOENT, [&] { return PFile::rename(none, file); }},
        {"creating", ENOENT, [&] { return PDir::pcreate(none); }},
    };
    for (auto const& row : rows) {
        errno = 0;
        EXPECT_NE(PERR_OK, row.operation()) << row.what;
        EXPECT_EQ(row.reason, errno) << row.what;
    }
}
