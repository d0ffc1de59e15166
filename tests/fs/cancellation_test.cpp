#include <memory>

#include <fs/files.h>
#include <support/cancelled.h>

using Cancellation = InAFolder;

TEST_F(Cancellation, WaitsWhileAFileIsDestroyed) {
    auto made = std::make_unique<PFile>();
    EXPECT_CODE(PERR_OK, made->popen(named(scratch.path("f")), SAFE_WRITE, 0));
    EXPECT_FALSE(endsACancelledThread([&] { made.reset(); }));
    EXPECT_EQ(std::set<std::string>{"f"}, namesIn(scratch.dir())) << "moved";
}
