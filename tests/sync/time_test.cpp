#include <chrono>
#include <cstdlib>
#include <ctime>
#include <limits>

#include <portinglayer/threads.h>
#include <support/expect.h>

TEST(Time, IsThePresentMomentInTheLocalTimeZone) {
    (void)setenv("TZ", "EAST-13:30", 1);
    auto const since1970 = std::chrono::system_clock::now().time_since_epoch();
    long long const before = since1970 / std::chrono::milliseconds(1);
    PTime time{-1, -1, -1, -1, -1, -1, -1, -1, -1, -1};
    EXPECT_CODE(PERR_OK, PTime::getTime(time));
    EXPECT_GE(time.epochMilliseconds, before);
    EXPECT_LT(time.epochMilliseconds, before + 3000);

    time_t const seconds = time.epochMilliseconds / 1000;
    std::tm const local = *std::localtime(&seconds);
    EXPECT_EQ(time.epochMilliseconds % 1000, time.milliseconds);
    EXPECT_EQ(local.tm_sec, time.second);
    EXPECT_EQ(local.tm_min, time.minute);
    EXPECT_EQ(local.tm_hour, time.hour);
    EXPECT_EQ(local.tm_mday, time.day);
    EXPECT_EQ(local.tm_mon + 1, time.month) << "January is 1";
    EXPECT_EQ(local.tm_year + 1900, time.year);
    EXPECT_EQ(local.tm_wday, time.weekDay);
    EXPECT_EQ(local.tm_yday, time.yearDay);
    EXPECT_LT(PTime::getTickCount(), time.epochMilliseconds) << "it counts from the boot";
}

TEST(TickCount, DifferenceIsTheLaterLessTheEarlierAndWraps) {
    long long const greatest = std::numeric_limits<long long>::max();
    EXPECT_EQ(600, PTime::getTickCountDiff(400, 1000));
    EXPECT_EQ(-600, PTime::getTickCountDiff(1000, 400));
    EXPECT_EQ(2, PTime::getTickCountDiff(greatest, std::numeric_limits<long long>::min() + 1));
}
