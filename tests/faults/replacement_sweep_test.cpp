#include <faults/sweep.h>
#include <portinglayer/file_locks.h>
#include <portinglayer/replacements.h>
#include <support/scratch.h>

namespace fs = std::filesystem;

TEST(FaultSweep, AReplacementLeavesTheOldContentOrTheNewAndNothingElse) {
    Scratch scratch;
    fs::create_directory(scratch.path("folder"));
    fs::create_symlink("folder/file", scratch.path("link"));
    std::wstring const name = scratch.wpath("link");
    bool newInSpiteOfFailure = false;
    auto const replace = [&] {
        PReplacement replacement;
        int const begun = replacement.begin(name.c_str());
        if (begun != PERR_OK) return begun;
        int const written =
            firstFailure({replacement.write("new\n", 4), replacement.writeLine(L"line")});
        return firstFailure({replacement.commit(), written});
    };
    auto const restore = [&] { (void)scratch.write("folder/file", "old"); };
    auto const look = [&](int code) {
        std::string const content = scratch.read("folder/file");
        EXPECT_EQ(1, std::distance(fs::directory_iterator(scratch.path("folder")), {}));
        bool const isNew = content == "new\nline\n";
        EXPECT_TRUE(isNew || content == "old") << content;
        EXPECT_TRUE(isNew || code != PERR_OK);
        newInSpiteOfFailure |= isNew && code == PERR_WRITE;
    };
    sweep({.name = "PReplacement",
           .codes = {PERR_NO_MEMORY, PERR_WRITE, PERR_SYSTEM},
           .operation = replace,
           .before = restore,
           .after = look});
    EXPECT_TRUE(newInSpiteOfFailure) << "where only the folder is not flushed";
}

TEST(FaultSweep, AFileLockIsHeldOrNot) {
    Scratch scratch;
    std::wstring const name = scratch.wpath("file");
    auto const lockAndUnlock = [&] {
        PFileLock lock;
        int const locked = lock.lock(name.c_str(), 0);
        return locked == PERR_OK ? lock.unlock() : locked;
    };
    sweep({.name = "PFileLock",
           .codes = {PERR_NO_MEMORY, PERR_SYSTEM},
           .operation = lockAndUnlock,
           .before = [&] { fs::remove(scratch.path("file")); }});
}
