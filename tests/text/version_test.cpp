#include <gtest/gtest.h>
#include <portinglayer/version.h>

TEST(Version, OfTheLibraryIsThatOfTheHeaders) {
    EXPECT_EQ(PORTINGLAYER_VERSION, portinglayerVersion());
}
