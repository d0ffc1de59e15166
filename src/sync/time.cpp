#include <ctime>
#include <sys/time.h>

#include <portinglayer/threads.h>

namespace {

constexpr int FIRST_YEAR = 1900;  // of the system's calendar record
constexpr long MILLISECONDS_PER_SECOND = 1000;
constexpr long MICROSECONDS_PER_MILLISECOND = 1000;
constexpr long NANOSECONDS_PER_MILLISECOND = 1'000'000;

}  // namespace

int PTime::getTime(PTime& time) {
    timeval now{};
    (void)gettimeofday(&now, nullptr);  // cannot fail with a valid address
    tm const* const local = localtime(&now.tv_sec);

    long const milliseconds = now.tv_usec / MICROSECONDS_PER_MILLISECOND;
    time.milliseconds = static_cast<int>(milliseconds);
    time.second = local->tm_sec;
    time.minute = local->tm_min;
    time.hour = local->tm_hour;
    time.day = local->tm_mday;
    time.month = local->tm_mon + 1;
    time.year = local->tm_year + FIRST_YEAR;
    time.weekDay = local->tm_wday;
    time.yearDay = local->tm_yday;
    time.epochMilliseconds = now.tv_sec * MILLISECONDS_PER_SECOND + milliseconds;
    return PERR_OK;
}

long long PTime::getTickCount() {
    timespec now{};
    if (clock_gettime(CLOCK_MONOTONIC, &now) != -1)
        return now.tv_sec * MILLISECONDS_PER_SECOND + now.tv_nsec / NANOSECONDS_PER_MILLISECOND;

    PTime time{};
    (void)getTime(time);  // always succeeds
    return time.epochMilliseconds;
}

long long PTime::getTickCountDiff(long long start, long long end) {
    // Unsigned, so that ticks of any origin wrap instead of overflowing.
    return static_cast<long long>(static_cast<unsigned long long>(end) -
                                  static_cast<unsigned long long>(start));
}
