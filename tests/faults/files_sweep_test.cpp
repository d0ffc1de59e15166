#include <faults/sweep.h>
#include <portinglayer/files.h>
#include <portinglayer/libraries.h>
#include <support/scratch.h>

namespace fs = std::filesystem;

namespace {

constexpr unsigned int NEW = PFile::OPEN_WRITE | PFile::OPEN_CREATE;

/// A folder with the file "a", made anew before each run.
class FilesSweep : public testing::Test {
protected:
    PString named(std::string const& name) const {
        return {scratch.wpath(name).c_str(), P_WHOLE_STRING};
    }
    void makeAnew() const {
        fs::remove_all(scratch.path("dir"));
        fs::create_directory(scratch.path("dir"));
        scratch.write("dir/a", "old\n");
        errno = 0;
    }
    Scratch const scratch;
    PString const folder = named("dir"), a = named("dir/a"), b = named("dir/b");
    std::function<void()> const anew = [this] { makeAnew(); };
};

}  // namespace

TEST_F(FilesSweep, OpeningLeavesAHandleThatIsClosedOrToBeClosed) {
    PFile file;
    PString name;
    auto const closed = [&] {
        makeAnew();
        name.clear();
        (void)file.pclose();
    };
    auto const open = [&] { return file.popen(a, PFile::OPEN_READ, PFile::EXCLUSIVE); };
    auto const look = [&](int code) {
        int const held = file.isOpen() ? PERR_OK : PERR_NOT_OPEN;
        EXPECT_TRUE(held == PERR_OK || code != PERR_OK);
        EXPECT_TRUE(held != PERR_OK || code != PERR_NO_MEMORY);
        EXPECT_CODE(held, file.pgetName(name));
        EXPECT_TEXT(code == PERR_OK ? view(a) : L"", name);
        EXPECT_CODE(held, file.pclose());
    };
    sweep({"PFile::popen", {PERR_OPEN, PERR_NO_MEMORY}, open, closed, look});
}

TEST_F(FilesSweep, ReadingWritesItsOutputsOnSuccessOnly) {
    PFile file;
    PString line, name;
    long long size = 0;
    auto const opened = [&] {
        makeAnew();
        (void)file.pclose();
        EXPECT_CODE(PERR_OK, file.popen(a, PFile::OPEN_READ, PFile::UNLOCKED));
        line = L"untouched";
        size = 77;
    };
    sweep({"PFile::preadLine",
           {PERR_READ, PERR_NO_MEMORY},
           [&] { return file.preadLine(line); },
           opened,
           [&](int code) { EXPECT_TEXT(code == PERR_OK ? L"old" : L"untouched", line); }});
    sweep({"PFile::pgetSize",
           {PERR_STAT},
           [&] { return file.pgetSize(size); },
           opened,
           [&](int code) { EXPECT_EQ(code == PERR_OK ? 4 : 77, size); }});
    sweep({"PFile::pgetName",
           {PERR_NO_MEMORY},
           [&] { return file.pgetName(name); },
           opened,
           [&](int code) { EXPECT_TEXT(code == PERR_OK ? view(a) : L"", name); }});
}

TEST_F(FilesSweep, ALongLineEndsWhereAReadFailsAndNeedsMemoryForAllOfIt) {
    std::wstring const whole(3000, L'x');
    PFile file;
    PString line;
    auto const opened = [&] {
        scratch.write("long", std::string(whole.begin(), whole.end()));
        (void)file.pclose();
        EXPECT_CODE(PERR_OK, file.popen(named("long"), PFile::OPEN_READ, PFile::UNLOCKED));
        line = L"untouched";
    };
    auto const look = [&](int code) {
        EXPECT_TEXT(code == PERR_OK ? whole.substr(0, line.len()) : L"untouched", line);
    };
    sweep({"PFile::preadLine of a long line",
           {PERR_READ, PERR_NO_MEMORY},
           [&] { return file.preadLine(line); },
           opened,
           look});
}

TEST_F(FilesSweep, WritingIsWholeWhereItSucceeds) {
    auto const write = [&] {
        PFile file;
        int const opened = file.popen(a, NEW | PFile::OPEN_TRUNCATE, PFile::EXCLUSIVE);
        return firstFailure({opened, file.pwriteLine(L"xyz"), file.pseek(1, 0),
                             file.pwriteLine(PLiteral()), file.pflush()});
    };
    auto const look = [&](int code) {
        std::string const content = scratch.read("dir/a");
        EXPECT_TRUE(code != PERR_OK || content == "x\nz\n") << content;
    };
    std::set<int> const codes{PERR_OPEN, PERR_NO_MEMORY, PERR_WRITE, PERR_SEEK, PERR_NOT_OPEN};
    sweep({"PFile, writing", codes, write, anew, look});
}

TEST_F(FilesSweep, ASafeWriteThatIsNotMovedLeavesTheOldContent) {
    PFile file;
    auto const write = [&] {
        int code = file.popen(a, PFile::OPEN_SAFE_WRITE, PFile::EXCLUSIVE);
        if (code == PERR_OK) code = file.pwriteLine(L"new");
        return code == PERR_OK ? file.pclose() : code;
    };
    auto const look = [&](int code) {
        EXPECT_EQ(code == PERR_OK ? "new\n" : "old\n", scratch.read("dir/a"));
        (void)file.pclose();
    };
    std::set<int> const codes{PERR_OPEN, PERR_NO_MEMORY, PERR_WRITE, PERR_SYSTEM};
    sweep({"PFile, safe write", codes, write, anew, look});
}

TEST_F(FilesSweep, NamesThatCannotBeMadeMeetNoOtherFile) {
    PString const odd = named("dir\\a");  // to be slashed, also where memory runs out
    scratch.write("dir\\a", "another file");
    auto const look = [&](int) { EXPECT_EQ("another file", scratch.read("dir\\a")); };
    sweep({"PFile::exists",
           {PERR_NO_SUCH_FILE},
           [&] { return PFile::exists(odd) ? PERR_OK : PERR_NO_SUCH_FILE; },
           anew,
           look});
    sweep({"PFile::rename",
           {PERR_IO, PERR_SYSTEM},
           [&] { return PFile::rename(odd, b); },
           anew,
           look});
    sweep({"PFile::pdelete", {PERR_DELETE}, [&] { return PFile::pdelete(odd); }, anew, look});
}

TEST_F(FilesSweep, RemovingStaysWithinItsFolder) {
    scratch.write("beside", "kept");
    auto const filled = [&] {
        makeAnew();
        fs::create_directory(scratch.path("dir/sub"));
        scratch.write("dir/sub/file", "");
        errno = 0;
    };
    auto const look = [&](int code) {
        EXPECT_EQ("kept", scratch.read("beside"));
        EXPECT_EQ(code != PERR_OK, fs::exists(scratch.path("dir")));
    };
    std::set<int> const codes{PERR_DIR_NOT_FOUND, PERR_INVALID_ARGUMENT, PERR_DELETE,
                              PERR_NO_MEMORY};
    sweep({"PFile::removeAll", codes, [&] { return PFile::removeAll(folder); }, filled, look});
}

TEST_F(FilesSweep, FoldersAreMadeAndRemovedWhereTheCodeSaysSo) {
    auto const exists = [&] { return fs::exists(scratch.path("dir/b")); };
    sweep({"PDir::pcreate",
           {PERR_DIR_CREATE},
           [&] { return PDir::pcreate(b); },
           anew,
           [&](int code) { EXPECT_EQ(code == PERR_OK, exists()); }});
    auto const made = [&] {
        makeAnew();
        fs::create_directory(scratch.path("dir/b"));
    };
    sweep({"PDir::pdelete",
           {PERR_DIR_DELETE},
           [&] { return PDir::pdelete(b); },
           made,
           [&](int code) { EXPECT_EQ(code != PERR_OK, exists()); }});
}

TEST_F(FilesSweep, AListingKeepsItsCodeAndGivesWholeNames) {
    PDir listing;
    auto const closed = [&] {
        makeAnew();
        (void)listing.pclose();
    };
    auto const list = [&] {
        (void)listing.popen(folder, L"a");
        return listing == PERR_OK ? listing.preaddir() : listing.getResult();
    };
    auto const look = [&](int code) {
        EXPECT_CODE(code, listing.getResult());
        EXPECT_TEXT(code == PERR_OK ? L"a" : L"", listing.getEntry());
        EXPECT_CODE(PERR_OK, listing.pclose());
    };
    std::set<int> const codes{PERR_NO_MEMORY, PERR_DIR_NOT_OPEN, PERR_READ, PERR_CONVERSION};
    sweep({"PDir", codes, list, closed, look});
}

TEST_F(FilesSweep, ATemporaryFileIsFreeForAnotherAttempt) {
    PTempFile file;
    auto const closed = [&] {
        makeAnew();
        (void)file.pclose();
    };
    sweep({"PTempFile::popen",
           {PERR_OPEN, PERR_NO_MEMORY},
           [&] { return file.popen(a, NEW, PFile::EXCLUSIVE); },
           closed,
           [&](int code) { EXPECT_TRUE(file.isOpen() || code != PERR_OK); }});
    sweep({"PSystem::getTempDir", {PERR_DIR_NOT_OPEN}, [] {
               return PSystem::getTempDir().len() == 5 ? PERR_OK : PERR_DIR_NOT_OPEN;
           }});
}

TEST_F(FilesSweep, ALibraryIsGivenOnSuccessOnly) {
    PLibrary* library = nullptr;
    auto const load = [&] { return PLibrary::load(L"libm.so.6", library, true); };
    auto const none = [&] { delete std::exchange(library, nullptr); };
    auto const look = [&](int code) {
        EXPECT_EQ(code == PERR_OK, library != nullptr);
        none();
    };
    sweep({"PLibrary::load", {PERR_LIBRARY_LOAD, PERR_NO_MEMORY}, load, none, look});
    none();
}
