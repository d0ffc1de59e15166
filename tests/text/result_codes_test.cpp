#include <set>

#include <gtest/gtest.h>
#include <portinglayer/result_codes.h>

TEST(ResultCodes, KeepTheirNumbers) {
    std::pair<int, int> const runs[] = {{0, 0},        {-500, -512}, {-601, -601}, {-611, -615},
                                        {-619, -628},  {-630, -630}, {-701, -705}, {-711, -717},
                                        {-721, -729},  {-731, -738}, {-742, -744}, {-9001, -9002},
                                        {-9005, -9006}};
    std::set<int> expected, named;
    for (auto const& [first, last] : runs)
        for (int code = first; code >= last; --code) expected.insert(code);
    for (int code = -10'000; code <= 10'000; ++code)
        if (perrorName(code) != nullptr) named.insert(code);
    EXPECT_EQ(expected, named);
    EXPECT_STREQ("PERR_NO_MEMORY", perrorName(-501));
}
