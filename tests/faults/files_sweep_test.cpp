#include <faults/sweep.h>
#include <portinglayer/portinglayer.h>
#include <support/scratch.h>

namespace fs = std::filesystem;

namespace {

/// A folder with the file "a", which reads "old", made anew before each run.
class FilesSweep : public testing::Test {
protected:
    Scratch const scratch;
    std::wstring const dir = scratch.wpath("dir"), path = dir + L"/a";
    PLiteral const folder{dir.c_str()}, a{path.c_str()};
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
    sweep({"PFile::pflush", {}, [&] { return file.pflush(); }});
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

TEST_F(FilesSweep, ANameThatCannotBeMadeMeetsNoOtherFile) {
    std::wstring const backslashed = dir + L"\\a", other = dir + L"/b";
    PLiteral const odd(backslashed.c_str()), free(other.c_str());
    PTempFile temp;
    scratch.write("dir\\a", "another file");
    auto const look = [&](int) { EXPECT_EQ("another file", scratch.read("dir\\a")); };
    auto const move = [&] { return PFile::rename(odd, free); };
    sweep({"PFile::rename", {PERR_IO, PERR_SYSTEM}, move, anew, look});
    auto const make = [&] { return temp.popen(odd, PFile::OPEN_CREATE, PFile::EXCLUSIVE); };
    EXPECT_CODE(PERR_NO_MEMORY, runFailing(1, true, make));
}

TEST_F(FilesSweep, ATreeThatIsNotRemovedIsTold) {
    std::set<int> const codes{PERR_DIR_NOT_FOUND, PERR_INVALID_ARGUMENT, PERR_DELETE,
                              PERR_NO_MEMORY};
    sweep({"PFile::removeAll", codes, [&] { return PFile::removeAll(folder); }, anew});
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

TEST(FaultSweep, AReplacementLeavesTheOldContentOrTheNewAndNothingElse) {
    Scratch scratch;
    std::wstring const name = scratch.wpath("file");
    bool newInSpiteOfFailure = false;
    auto const replace = [&] {
        PReplacement replacement;
        int const begun = replacement.begin(name.c_str());
        int const written = replacement.writeLine(L"the new content");
        return firstFailure({begun, replacement.commit(), written});
    };
    auto const restore = [&] { (void)scratch.write("file", "old"); };
    auto const look = [&](int code) {
        bool const isNew = scratch.read("file") == "the new content\n";
        EXPECT_TRUE(isNew || scratch.read("file") == "old");
        EXPECT_TRUE(isNew || code != PERR_OK);
        EXPECT_EQ(1, std::distance(fs::directory_iterator(scratch.dir()), {}));
        newInSpiteOfFailure |= isNew && code == PERR_WRITE;
    };
    std::set<int> const codes{PERR_NO_MEMORY, PERR_WRITE, PERR_SYSTEM};
    sweep({"PReplacement", codes, replace, restore, look});
    EXPECT_TRUE(newInSpiteOfFailure) << "where only the folder is not flushed";
}

TEST(FaultSweep, AFileLockIsHeldOrNot) {
    Scratch scratch;
    PFileLock lock;
    std::wstring const name = scratch.wpath("file");
    auto const take = [&] { return lock.lock(name.c_str(), 0); };
    auto const release = [&] { (void)lock.unlock(); };
    sweep({"PFileLock", {PERR_NO_MEMORY, PERR_SYSTEM}, take, release});
}
