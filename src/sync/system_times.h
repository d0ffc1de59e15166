/// Lengths and moments between the system's records and std::chrono.
#ifndef PORTINGLAYER_SYNC_SYSTEM_TIMES_H
#define PORTINGLAYER_SYNC_SYSTEM_TIMES_H

#include <chrono>
#include <ctime>

inline std::chrono::nanoseconds _fromTimespec(timespec const& time) {
    return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}

/// For no time before 1970.
inline timespec _toTimespec(std::chrono::nanoseconds time) {
    auto const seconds = std::chrono::duration_cast<std::chrono::seconds>(time);
    return {.tv_sec = seconds.count(), .tv_nsec = (time - seconds).count()};
}

#endif
