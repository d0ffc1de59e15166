#include <memory>

#include <fs/files.h>
#include <support/cancelled.h>

using Cancellation = InAFolder;

TEST_F(Cancellation, EndsAThreadInWhatMayBlock) {
    PString const name = named(scratch.write("f", "content"));
    EXPECT_CODE(PERR_OK, file.popen(name, READ | WRITE, PFile::UNLOCKED));
    EXPECT_TRUE(endsACancelledThread([&] { return file.pread(&byte, 1, done); }));
    EXPECT_TRUE(endsACancelledThread([&] { return file.pwrite(&byte, 1, done); }));
    EXPECT_TRUE(endsACancelledThread([&] { return file.pflush(); }));
    EXPECT_TRUE(endsACancelledThread([&] { return PFile().popen(name, READ, PFile::UNLOCKED); }));
}

TEST_F(Cancellation, WaitsWhileAFileIsDestroyed) {
    auto made = std::make_unique<PFile>();
    EXPECT_CODE(PERR_OK, made->popen(named(scratch.path("f")), SAFE_WRITE, 0));
    EXPECT_FALSE(endsACancelledThread([&] { made.reset(); }));
    EXPECT_EQ(std::set<std::string>{"f"}, namesIn(scratch.dir())) << "moved";
}
