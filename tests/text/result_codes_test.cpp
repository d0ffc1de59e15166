#include <gtest/gtest.h>
#include <portinglayer/result_codes.h>

TEST(ResultCodes, HaveTheNamesOfTheirConstants) {
    EXPECT_STREQ("PERR_OK", perrorName(PERR_OK));
    EXPECT_STREQ("PERR_NO_MEMORY", perrorName(-501));
    EXPECT_STREQ("PERR_STOPPED", perrorName(-512));
    EXPECT_STREQ("PERR_LOCKED", perrorName(-630));
    EXPECT_STREQ("PERR_NO_PROCESS", perrorName(-743));
    EXPECT_STREQ("PERR_DATA_DECODE", perrorName(-9006));
    EXPECT_EQ(nullptr, perrorName(-629));
}
