#include <faults/sweep.h>
#include <portinglayer/files.h>
#include <portinglayer/libraries.h>
#include <support/scratch.h>

namespace fs = std::filesystem;

namespace {

/// A folder with the file "a", which reads "old", made anew before each run.
class FilesSweep : public testing::Test {
protected:
    PString named(std::string const& name) const {
        return {scratch.wpath(name).c_str(), P_WHOLE_STRING};
    }
    void makeAnew() {
        (void)file.pclose();
        fs::remove_all(scratch.path("dir"));
        fs::create_directories(scratch.path("dir/sub"));
        scratch.write("dir/a", "old");
        errno = 0;
    }
    Scratch const scratch;
    PString const folder = named("dir"), a = named("dir/a"), b = named("dir/b");
    PFile file;
    std::function<void()> const anew = [this] { makeAnew(); };
};

}  // namespace

TEST_F(FilesSweep, OpeningLeavesAHandleThatIsClosedOrToBeClosed) {
    auto const open = [&] { return file.popen(a, PFile::OPEN_READ, PFile::EXCLUSIVE); };
    auto const look = [&](int code) {
        PString name;
        int const held = file.isOpen() ? PERR_OK : PERR_NOT_OPEN;
        EXPECT_CODE(held, file.pgetName(name));
        EXPECT_TEXT(code == PERR_OK ? view(a) : L"", name);
        EXPECT_CODE(held, file.pclose());
    };
    sweep({"PFile::popen", {PERR_OPEN, PERR_NO_MEMORY}, open, anew, look});
}

TEST_F(FilesSweep, ReadingWritesItsOutputsOnSuccessOnly) {
    std::wstring const whole(3000, L'x');
    PString line;
    long long size = 77;
    auto const opened = [&] {
        makeAnew();
        scratch.write("dir/a", std::string(whole.begin(), whole.end()));
        EXPECT_CODE(PERR_OK, file.popen(a, PFile::OPEN_READ, PFile::UNLOCKED));
        line = L"untouched";
    };
    auto const readLine = [&] { return file.preadLine(line); };
    auto const lookAtLine = [&](int code) {
        EXPECT_TEXT(code == PERR_OK ? whole.substr(0, line.len()) : L"untouched", line);
    };
    sweep({"PFile::preadLine", {PERR_READ, PERR_NO_MEMORY}, readLine, opened, lookAtLine});
    EXPECT_CODE(PERR_STAT, runFailing(1, true, [&] { return file.pgetSize(size); }));
    EXPECT_EQ(77, size);
}

TEST_F(FilesSweep, ASafeWriteThatIsNotMovedLeavesTheOldContent) {
    auto const write = [&] {
        int code = file.popen(a, PFile::OPEN_SAFE_WRITE, PFile::EXCLUSIVE);
        if (code == PERR_OK) code = file.pwriteLine(L"new");
        return code == PERR_OK ? file.pclose() : code;
    };
    auto const look = [&](int code) {
        EXPECT_EQ(code == PERR_OK ? "new\n" : "old", scratch.read("dir/a"));
        (void)file.pclose();
    };
    std::set<int> const codes{PERR_OPEN, PERR_NO_MEMORY, PERR_WRITE, PERR_SYSTEM};
    sweep({"PFile, safe write", codes, write, anew, look});
}

TEST_F(FilesSweep, NamesThatCannotBeMadeMeetNoOtherFile) {
    PString const odd = named("dir\\a");  // to be slashed, also where memory runs out
    scratch.write("dir\\a", "another file");
    auto const look = [&](int) { EXPECT_EQ("another file", scratch.read("dir\\a")); };
    auto const move = [&] { return PFile::rename(odd, b); };
    auto const remove = [&] { return PFile::pdelete(odd); };
    sweep({"PFile::rename", {PERR_IO, PERR_SYSTEM}, move, anew, look});
    sweep({"PFile::pdelete", {PERR_DELETE}, remove, anew, look});
}

TEST_F(FilesSweep, RemovingATreeLeavesNothingWhereItSucceeds) {
    auto const remove = [&] { return PFile::removeAll(folder); };
    auto const look = [&](int code) {
        EXPECT_EQ(code != PERR_OK, fs::exists(scratch.path("dir")));
    };
    std::set<int> const codes{PERR_DIR_NOT_FOUND, PERR_INVALID_ARGUMENT, PERR_DELETE,
                              PERR_NO_MEMORY};
    sweep({"PFile::removeAll", codes, remove, anew, look});
}

TEST_F(FilesSweep, AListingKeepsItsCodeAndGivesWholeNames) {
    PDir listing;
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
    sweep({"PDir", codes, list, anew, look});
}

TEST_F(FilesSweep, ALibraryIsGivenOnSuccessOnly) {
    PLibrary* library = nullptr;
    auto const load = [&] { return PLibrary::load(L"libm.so.6", library, true); };
    auto const look = [&](int code) {
        EXPECT_EQ(code == PERR_OK, library != nullptr);
        delete std::exchange(library, nullptr);
    };
    sweep({"PLibrary::load", {PERR_LIBRARY_LOAD, PERR_NO_MEMORY}, load, anew, look});
}
