#include <chrono>
#include <ctime>
#include <sys/time.h>

#include <portinglayer/threads.h>

#include "sync/system_times.h"

namespace {

long long _inMilliseconds(std::chrono::nanoseconds time) {
    return std::chrono::duration_cast<std::chrono::milliseconds>(time).count();
}

}  // namespace

int PTime::getTime(PTime& time) {
    constexpr int FIRST_YEAR = 1900;  // of the system's calendar record
    timeval now{};
    (void)gettimeofday(&now, nullptr);  // cannot fail with a valid address
    tm const* const local = localtime(&now.tv_sec);

    time.milliseconds = static_cast<int>(_inMilliseconds(std::chrono::microseconds(now.tv_usec)));
    time.second = local->tm_sec;
    time.minute = local->tm_min;
    time.hour = local->tm_hour;
    time.day = local->tm_mday;
    time.month = local->tm_mon + 1;
    time.year = local->tm_year + FIRST_YEAR;
    time.weekDay = local->tm_wday;
    time.yearDay = local->tm_yday;
    time.epochMilliseconds = _inMilliseconds(std::chrono::seconds(now.tv_sec)) + time.milliseconds;
    return PERR_OK;
}

long long PTime::getTickCount() {
    timespec now{};
    if (clock_gettime(CLOCK_MONOTONIC, &now) != -1) return _inMilliseconds(_fromTimespec(now));

    PTime time{};
    (void)getTime(time);  // always succeeds
    return time.epochMilliseconds;
}

long long PTime::getTickCountDiff(long long start, long long end) {
    // Unsigned, so that ticks of any origin wrap instead of overflowing.
    return static_cast<long long>(static_cast<unsigned long long>(end) -
                                  static_cast<unsigned long long>(start));
}
