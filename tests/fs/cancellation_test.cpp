#include <memory>

#include <sys/stat.h>

#include <fs/files.h>
#include <portinglayer/libraries.h>
#include <support/cancelled.h>

constexpr unsigned int BOTH = PFile::OPEN_READ | PFile::OPEN_WRITE;

TEST(Cancellation, EndsAThreadInWhatMayBlock) {
    Scratch const scratch;
    PString const name = named(scratch.write("f", "content"));
    char byte = 'x';
    unsigned long done = 0;
    PString line;
    PFile closed, open;
    PTempFile temp;
    EXPECT_CODE(PERR_OK, open.popen(name, BOTH, PFile::UNLOCKED));
    EXPECT_TRUE(endsACancelledThread([&] { return closed.popen(name, BOTH, PFile::UNLOCKED); }));
    EXPECT_TRUE(endsACancelledThread([&] { return temp.popen(name, BOTH, PFile::UNLOCKED); }));
    EXPECT_TRUE(endsACancelledThread([&] { return open.pread(&byte, 1, done); }));
    EXPECT_TRUE(endsACancelledThread([&] { return open.pwrite(&byte, 1, done); }));
    EXPECT_TRUE(endsACancelledThread([&] { return open.preadLine(line); }));
    EXPECT_TRUE(endsACancelledThread([&] { return open.pwriteLine(line); }));
    EXPECT_TRUE(endsACancelledThread([&] { return open.pflush(); }));
}

TEST(Cancellation, WaitsWhileSomethingIsClosed) {
    Scratch const scratch;
    auto file = std::make_unique<PFile>();
    EXPECT_CODE(PERR_OK, file->popen(named(scratch.path("f")), PFile::OPEN_SAFE_WRITE, 0));
    EXPECT_FALSE(endsACancelledThread([&] { EXPECT_CODE(PERR_OK, file->pclose()); }));
    EXPECT_EQ(std::set<std::string>{"f"}, namesIn(scratch.dir())) << "moved";

    EXPECT_CODE(PERR_OK, file->popen(named(scratch.path("g")), PFile::OPEN_SAFE_WRITE, 0));
    EXPECT_FALSE(endsACancelledThread([&] { file.reset(); }));
    EXPECT_EQ((std::set<std::string>{"f", "g"}), namesIn(scratch.dir())) << "moved";

    PDir listing(named(scratch.dir()), L"*");
    EXPECT_FALSE(endsACancelledThread([&] { EXPECT_CODE(PERR_OK, listing.pclose()); }));
}

TEST(Cancellation, WaitsWhileALibraryIsLoadedAndTheMessageIsWritten) {
    PLibrary* library = nullptr;
    int code = PERR_OK;
    testing::internal::CaptureStderr();
    EXPECT_FALSE(endsACancelledThread([&] { code = PLibrary::load(L"/none.so", library, true); }));
    EXPECT_NE("", testing::internal::GetCapturedStderr());
    EXPECT_CODE(PERR_LIBRARY_LOAD, code);
}
