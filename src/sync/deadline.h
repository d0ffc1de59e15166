/// How long a wait may still last.
#ifndef PORTINGLAYER_SYNC_DEADLINE_H
#define PORTINGLAYER_SYNC_DEADLINE_H

#include <algorithm>
#include <chrono>
#include <ctime>

#include "sync/system_times.h"

/// A moment of the monotonic clock, or none.
class Deadline {
public:
    explicit Deadline(unsigned int milliseconds)
        : endless(milliseconds == WITHOUT_LIMIT),
          end(Clock::now() + std::chrono::milliseconds(milliseconds)) {}

    bool isOver() const { return !endless && Clock::now() >= end; }

    /// This one, or that of `milliseconds` from now if it comes first.
    Deadline within(unsigned int milliseconds) const {
        Deadline const other(milliseconds);
        return endless || other.end < end ? other : *this;
    }

    /// What is left, in the place given, for a call of the system; null when there is no limit.
    timespec const* left(timespec& place) const {
        if (endless) return nullptr;
        place = _toTimespec(std::max(end - Clock::now(), Clock::duration::zero()));
        return &place;
    }

private:
    using Clock = std::chrono::steady_clock;
    static constexpr unsigned int WITHOUT_LIMIT = 4294967295U;  // PCommand::FOREVER

    bool endless;
    Clock::time_point end;
};

#endif
