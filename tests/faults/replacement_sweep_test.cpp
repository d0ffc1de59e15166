#include <faults/sweep.h>
#include <portinglayer/file_locks.h>
#include <portinglayer/replacements.h>
#include <support/scratch.h>

namespace fs = std::filesystem;

TEST(FaultSweep, AReplacementLeavesTheOldContentOrTheNewAndNothingElse) {
    Scratch scratch;
    std::wstring const name = scratch.wpath("file");
    bool newInSpiteOfFailure = false;
    auto const replace = [&] {
        PReplacement replacement;
        int const begun = replacement.begin(name.c_str());
        int const written = replacement.writeLine(L"new");
        return firstFailure({begun, replacement.commit(), written});
    };
    auto const restore = [&] { (void)scratch.write("file", "old"); };
    auto const look = [&](int code) {
        bool const isNew = scratch.read("file") == "new\n";
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
    auto const look = [&](int code) {
        EXPECT_CODE(code == PERR_OK ? PERR_OK : PERR_NOT_OPEN, lock.unlock());
    };
    sweep({"PFileLock", {PERR_NO_MEMORY, PERR_SYSTEM}, take, [] {}, look});
}
