/// The six comparisons at once.
#ifndef TESTS_SUPPORT_ORDER_H
#define TESTS_SUPPORT_ORDER_H

#include <gtest/gtest.h>

/// Expects of both what holds of two numbers in the order that is given.
template <typename A, typename B>
void expectOrder(int left, int right, A const& a, B const& b) {
    SCOPED_TRACE(testing::Message() << "number " << left << " with number " << right);
    EXPECT_EQ(left == right, a == b);
    EXPECT_EQ(left != right, a != b);
    EXPECT_EQ(left < right, a < b);
    EXPECT_EQ(left <= right, a <= b);
    EXPECT_EQ(left > right, a > b);
    EXPECT_EQ(left >= right, a >= b);
}

#endif
