#include <chrono>
#include <cstddef>
#include <cstdlib>
#include <ctime>

#include <portinglayer/threads.h>

#include "waiting.h"

static_assert(sizeof(PTime) == 48 && offsetof(PTime, epochMilliseconds) == 40);

using namespace std::chrono;

TEST(Time, ShowsThePresentMomentInTheLocalTimeZone) {
    auto const now = [] { return system_clock::now().time_since_epoch() / 1ms; };
    for (char const* zone : {"UTC0", "EAST-13:30", "WEST+11"}) {
        (void)setenv("TZ", zone, 1);
        auto const before = now();
        PTime time{};
        EXPECT_EQ(PTime::getTime(time), PERR_OK);
        EXPECT_TRUE(before <= time.epochMilliseconds && time.epochMilliseconds <= now());

        std::time_t const seconds = time.epochMilliseconds / 1000;
        char expected[64], found[64];
        std::strftime(expected, sizeof expected, "%Y-%m-%d %T w%w y%j", std::localtime(&seconds));
        std::snprintf(found, sizeof found, "%d-%02d-%02d %02d:%02d:%02d w%d y%03d", time.year,
                      time.month, time.day, time.hour, time.minute, time.second, time.weekDay,
                      time.yearDay + 1);
        EXPECT_STREQ(found, expected) << zone;
        EXPECT_EQ(time.milliseconds, time.epochMilliseconds % 1000);
    }
    (void)unsetenv("TZ");
    tzset();
}

TEST(Time, TicksAreMillisecondsOfTheSteadyClock) {
    auto const now = [] { return steady_clock::now().time_since_epoch() / 1ms; };
    long long const before = now(), tick = PTime::getTickCount();
    EXPECT_TRUE(before <= tick && tick <= now());
    EXPECT_EQ(PTime::getTickCountDiff(1000, 400), -600);
}

TEST(Time, SleepIsAsLongAsAskedUnlessItWrapsOrIsInterrupted) {
    unsigned int const table[][2] = {{0, 0}, {30, 30}, {1001, 1001}, {4'294'968, 0}};
    for (auto const& [asked, least] : table) {
        long long const start = PTime::getTickCount();
        EXPECT_EQ(PThread::psleep(asked), 0);
        long long const slept = PTime::getTickCountDiff(start, PTime::getTickCount());
        EXPECT_TRUE(least <= slept && slept < least + 500) << asked << ": " << slept;
    }
    EXPECT_EQ(interrupted([] { return PThread::psleep(30'000); }), -1);
}
