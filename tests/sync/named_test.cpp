#include <portinglayer/synchronisation.h>
#include <support/child_run.h>
#include <support/expect.h>
#include <support/scratch.h>

/// Two locks of one name. The semaphore has the same way to open and close its named form.
struct NamedMutex : testing::Test {
    std::string const name = uniqueName();
    PMutex first{wide(name).c_str()}, second{wide(name).c_str()};
};

TEST_F(NamedMutex, IsCreatedOnceAndLosesItsNameWithTheFirstClose) {
    mode_t const before = umask(0);
    EXPECT_CODE(PERR_MUTEX_NOT_FOUND, first.init(false));
    EXPECT_CODE(PERR_OK, first.init(true));
    (void)umask(before);
    EXPECT_EQ("770", modeOf("/dev/shm/sem." + name.substr(1)));
    EXPECT_CODE(PERR_MUTEX_INITIALISED, first.init(false));
    EXPECT_CODE(PERR_MUTEX_EXISTS, second.init(true));
    EXPECT_CODE(PERR_OK, second.init(false));
    EXPECT_CODE(PERR_OK, first.close());
    EXPECT_CODE(PERR_MUTEX, first.close()) << "it has no handle";
    EXPECT_CODE(PERR_MUTEX_NOT_FOUND, first.init(false));
    EXPECT_CODE(PERR_OK, second.lock());
    EXPECT_CODE(PERR_OK, second.close()) << "although the name is gone";
}

TEST_F(NamedMutex, AdmitsOneAndASignalEndsTheWaitOfTheNext) {
    EXPECT_CODE(PERR_OK, first.init(true));
    EXPECT_CODE(PERR_OK, second.init(false));
    EXPECT_CODE(PERR_OK, first.lock());
    EXPECT_CODE(PERR_MUTEX_LOCK, interrupted([&] { return second.lock(); }));
    EXPECT_CODE(PERR_OK, second.unlock()) << "by one that did not lock";
    EXPECT_CODE(PERR_OK, first.lock());
}

TEST(NamedMutexes, WithAnInvalidNameAreRefused) {
    EXPECT_CODE(PERR_MUTEX, PMutex(L"/plt/x").init(true));
    EXPECT_CODE(PERR_MUTEX, PMutex(L"/\x20ac").init(true)) << "not in the C locale";
}

TEST(NamedMutexes, WithTooLongANameAreCutToThirteenCharacters) {
    std::string const longest = uniqueName() + std::string(253, 'x');
    std::string const file = "/dev/shm/sem." + longest.substr(1, 12);
    PMutex mutex(wide(longest).substr(0, 253).c_str());
    EXPECT_CODE(PERR_OK, mutex.init(true));
    EXPECT_EQ(0, access(file.c_str(), F_OK));
    EXPECT_CODE(PERR_OK, mutex.close());
    EXPECT_NE(0, access(file.c_str(), F_OK));

    PMutex whole(wide(longest).substr(0, 252).c_str());
    EXPECT_CODE(PERR_OK, whole.init(true));
    EXPECT_EQ(0, access(("/dev/shm/sem." + longest.substr(1, 251)).c_str(), F_OK));
    EXPECT_CODE(PERR_OK, whole.close());
}

TEST(NamedSemaphore, HasTheCountOfItsCreatorAndLosesItsNameWithTheFirstClose) {
    std::wstring const name = wide(uniqueName());
    PSemaphore creator(name.c_str()), other(name.c_str());
    int value = 0;
    EXPECT_CODE(PERR_OK, creator.init(3, true));
    EXPECT_CODE(PERR_SEMAPHORE_EXISTS, other.init(9, true));
    EXPECT_CODE(PERR_OK, other.init(9, false));
    EXPECT_CODE(PERR_OK, other.getValue(value));
    EXPECT_EQ(3, value);
    EXPECT_CODE(PERR_OK, creator.close());
    EXPECT_CODE(PERR_SEMAPHORE_NOT_FOUND, creator.init(3, false));
    EXPECT_CODE(PERR_SEMAPHORE, PSemaphore(L"/plt/x").init(1, true)) << "an invalid name";
}
