#include <chrono>
#include <memory>

#include <gtest/gtest.h>
#include <portinglayer/threads.h>
#include <support/child_run.h>

namespace {

std::atomic<pthread_t> self = 0;
std::atomic<bool> end = false;

/// A routine that tells which thread it is and runs until it is told to end.
void* run(void* given) {
    for (self = PThread::getCurrentThreadId(); !end;) (void)PThread::psleep(1);
    self = 0;
    return given;
}

}  // namespace

TEST(Thread, IsOwnedUntilItIsJoinedDetachedOrTerminatedOrTheObjectEnds) {
    auto thread = std::make_unique<PThread>();
    void* result = nullptr;
    EXPECT_EQ(thread->pcreate(nullptr, nullptr), PERR_THREAD);
    for (std::string const way : {"join", "detach", "terminate", "destroy"}) {
        SCOPED_TRACE(way);
        end = false;
        ASSERT_EQ(thread->pcreate(run, &end), PERR_OK);
        EXPECT_EQ(thread->pcreate(run, nullptr), PERR_THREAD_EXISTS);
        EXPECT_TRUE(eventually([] { return self != 0; }));
        EXPECT_TRUE(thread->isAlive());
        EXPECT_EQ(thread->getThreadId(), static_cast<unsigned int>(self));

        if (way == "destroy") thread = std::make_unique<PThread>();
        EXPECT_TRUE(way != "detach" || thread->pdetach() == PERR_OK);
        if (way == "terminate") {
            EXPECT_EQ(thread->pterminate(nullptr), PERR_OK);
            EXPECT_EQ(pthread_join(self.exchange(0), &result), 0);  // not joined by the object
            EXPECT_TRUE(result == PTHREAD_CANCELED);
        }
        end = true;
        EXPECT_TRUE(way != "join" || (thread->pjoin(result) == PERR_OK && result == &end));
        EXPECT_TRUE(eventually([] { return self == 0; }));
        EXPECT_EQ((std::vector{thread->pjoin(result), thread->pdetach(), thread->pterminate(&end)}),
                  std::vector(3, PERR_THREAD));
        EXPECT_TRUE(thread->getThreadId() == 0 && !thread->isAlive());
    }
}

TEST(Time, IsThePresentMomentInTheLocalTimeZoneAndTicksAreOfTheSteadyClock) {
    using namespace std::chrono;
    (void)setenv("TZ", "EAST-13:30", 1);
    PTime time{};
    EXPECT_EQ(PTime::getTime(time), PERR_OK);
    EXPECT_LT(std::abs(time.epochMilliseconds - system_clock::now().time_since_epoch() / 1ms),
              3000);

    std::time_t const seconds = time.epochMilliseconds / 1000;
    char expected[64], found[64];
    std::strftime(expected, sizeof expected, "%Y-%m-%d %T w%w y%j", std::localtime(&seconds));
    std::snprintf(found, sizeof found, "%d-%02d-%02d %02d:%02d:%02d w%d y%03d", time.year,
                  time.month, time.day, time.hour, time.minute, time.second, time.weekDay,
                  time.yearDay + 1);
    EXPECT_STREQ(found, expected);
    EXPECT_EQ(time.milliseconds, time.epochMilliseconds % 1000);
    (void)unsetenv("TZ");
    tzset();
    EXPECT_LT(std::abs(PTime::getTickCount() - steady_clock::now().time_since_epoch() / 1ms), 3000);
}
