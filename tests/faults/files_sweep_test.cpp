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

    Scratch const scratch;
    PString const a = named("dir/a");
    PFile file;
    std::function<void()> const anew = [this] {
        (void)file.pclose();
        fs::remove_all(scratch.path("dir"));
        fs::create_directories(scratch.path("dir/sub"));
        scratch.write("dir/a", "old");
        errno = 0;
    };
};

}  // namespace

TEST_F(FilesSweep, ReadingWritesItsOutputsOnSuccessOnly) {
    std::string const whole(3000, 'x');
    PString line;
    long long size = 77;
    auto const before = [&] {
        anew();
        scratch.write("dir/a", whole);
        line = L"untouched";
    };
    auto const read = [&] {
        int const opened = file.popen(a, PFile::OPEN_READ, PFile::EXCLUSIVE);
        return opened == PERR_OK ? file.preadLine(line) : opened;
    };
    auto const look = [&](int code) {
        EXPECT_TEXT(code == PERR_OK ? wide(whole).substr(0, line.len()) : L"untouched", line);
    };
    sweep({"PFile, lines", {PERR_OPEN, PERR_READ, PERR_NO_MEMORY}, read, before, look});
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
    PString const odd = named("dir\\a"), other = named("dir/b");  // to be slashed
    scratch.write("dir\\a", "another file");
    auto const look = [&](int) { EXPECT_EQ("another file", scratch.read("dir\\a")); };
    auto const move = [&] { return PFile::rename(odd, other); };
    auto const remove = [&] { return PFile::pdelete(odd); };
    sweep({"PFile::rename", {PERR_IO, PERR_SYSTEM}, move, anew, look});
    sweep({"PFile::pdelete", {PERR_DELETE}, remove, anew, look});
}

TEST_F(FilesSweep, RemovingATreeLeavesNothingWhereItSucceeds) {
    std::set<int> const codes{PERR_DIR_NOT_FOUND, PERR_INVALID_ARGUMENT, PERR_DELETE,
                              PERR_NO_MEMORY};
    PString const folder = named("dir");
    auto const remove = [&] { return PFile::removeAll(folder); };
    auto const look = [&](int code) {
        EXPECT_EQ(code != PERR_OK, fs::exists(scratch.path("dir")));
    };
    sweep({"PFile::removeAll", codes, remove, anew, look});
}

TEST_F(FilesSweep, AListingKeepsItsCodeAndGivesWholeNames) {
    PString const folder = named("dir");
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
