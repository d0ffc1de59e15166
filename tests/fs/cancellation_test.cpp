#include <memory>

#include <fs/files.h>
#include <portinglayer/libraries.h>
#include <support/cancelled.h>

using Cancellation = InAFolder;

TEST_F(Cancellation, EndsAThreadInWhatMayBlock) {
    PString const name = named(scratch.write("f", "content"));
    PFile closed;
    EXPECT_CODE(PERR_OK, file.popen(name, READ | WRITE, PFile::UNLOCKED));
    EXPECT_TRUE(endsACancelledThread([&] { return closed.popen(name, READ, PFile::UNLOCKED); }));
    EXPECT_TRUE(endsACancelledThread([&] { return file.pread(&byte, 1, done); }));
    EXPECT_TRUE(endsACancelledThread([&] { return file.pwrite(&byte, 1, done); }));
    EXPECT_TRUE(endsACancelledThread([&] { return file.pflush(); }));
}

TEST_F(Cancellation, WaitsWhileSomethingIsClosed) {
    auto made = std::make_unique<PFile>();
    EXPECT_CODE(PERR_OK, made->popen(named(scratch.path("f")), SAFE_WRITE, 0));
    EXPECT_FALSE(endsACancelledThread([&] { EXPECT_CODE(PERR_OK, made->pclose()); }));
    EXPECT_EQ(std::set<std::string>{"f"}, namesIn(scratch.dir())) << "moved";

    EXPECT_CODE(PERR_OK, made->popen(named(scratch.path("g")), SAFE_WRITE, 0));
    EXPECT_FALSE(endsACancelledThread([&] { made.reset(); }));
    EXPECT_EQ((std::set<std::string>{"f", "g"}), namesIn(scratch.dir())) << "moved";
}

TEST_F(Cancellation, WaitsWhileALibraryIsLoaded) {
    PLibrary* library = nullptr;
    testing::internal::CaptureStderr();
    EXPECT_FALSE(endsACancelledThread(
        [&] { EXPECT_CODE(PERR_LIBRARY_LOAD, PLibrary::load(L"/none.so", library, true)); }));
    EXPECT_NE("", testing::internal::GetCapturedStderr()) << "the message is a cancellation point";
}
