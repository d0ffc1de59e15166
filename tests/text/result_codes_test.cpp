#include <set>

#include <gtest/gtest.h>

#include <portinglayer/result_codes.h>

TEST(ResultCodes, EachNameStandsForOneNegativeValue) {
    std::set<int> values;
#define CHECK_CODE(name, value, meaning)                                                           \
    EXPECT_TRUE(values.insert(name).second) << #name << " repeats a value";                        \
    EXPECT_LE(name, 0) << #name;                                                                   \
    EXPECT_STREQ(perrorName(name), #name);
    PORTINGLAYER_RESULT_CODES(CHECK_CODE)
#undef CHECK_CODE
    EXPECT_EQ(perrorName(-629), nullptr);
    EXPECT_EQ(perrorName(1), nullptr);
}
