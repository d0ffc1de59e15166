#include <portinglayer/synchronisation.h>
#include <support/child_run.h>
#include <support/expect.h>
#include <support/scratch.h>

namespace {

/// Two locks of one name. The semaphore has the same way to open and close its named form.
struct NamedMutex : testing::Test {
    std::string const name = uniqueName();
    PMutex first{wide(name).c_str()}, second{wide(name).c_str()};
};

}  // namespace

TEST_F(NamedMutex, IsCreatedOnceAndOpenedAfterwards) {
    EXPECT_CODE(PERR_MUTEX_NOT_FOUND, first.init(false));
    EXPECT_CODE(PERR_OK, first.init(true));
    EXPECT_CODE(PERR_MUTEX_INITIALISED, first.init(false));
    EXPECT_CODE(PERR_MUTEX_EXISTS, second.init(true));
    EXPECT_CODE(PERR_OK, second.init(false));
}

TEST_F(NamedMutex, LosesItsNameWithTheFirstCloseAndWorksOn) {
    EXPECT_CODE(PERR_OK, first.init(true));
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
    EXPECT_CODE(PERR_MUTEX_LOCK, interrupted([&] { return first.lock(); }));
    EXPECT_CODE(PERR_MUTEX_LOCK, interrupted([&] { return second.lock(); }));
    EXPECT_CODE(PERR_OK, second.unlock()) << "by one that did not lock";
    EXPECT_CODE(PERR_OK, first.lock());
}

TEST_F(NamedMutex, IsOpenToItsUserAndGroup) {
    mode_t const before = umask(0);
    EXPECT_CODE(PERR_OK, first.init(true));
    (void)umask(before);
    EXPECT_EQ("770", modeOf("/dev/shm/sem." + name.substr(1)));
}

TEST(NamedMutexes, WithAnInvalidNameAreRefused) {
    for (wchar_t const* const invalid : {L"", L"/plt/x", L"/\x20ac"}) {
        PMutex mutex(invalid);
        EXPECT_CODE(PERR_MUTEX, mutex.init(true)) << invalid;
        EXPECT_CODE(PERR_MUTEX, mutex.lock()) << invalid;
    }
}

TEST(NamedMutexes, WithALongNameAreCutToThirteenCharactersForGood) {
    struct {
        char const* what;
        std::size_t given, kept;
        int code;
    } const rows[] = {
        {"the longest that fits", 252, 252, PERR_OK},
        {"one character more", 253, 13, PERR_OK},
        {"what is no name at all", 257, 1, PERR_MUTEX},
    };
    std::string const longest = uniqueName() + std::string(257, 'x');
    for (auto const& row : rows) {
        SCOPED_TRACE(row.what);
        std::string const file = "/dev/shm/sem." + longest.substr(1, row.kept - 1);
        PMutex mutex(wide(longest).substr(0, row.given).c_str());
        EXPECT_CODE(row.code, mutex.init(true));
        EXPECT_EQ(row.kept > 1, access(file.c_str(), F_OK) == 0);
        EXPECT_CODE(row.code, mutex.close());
        EXPECT_NE(0, access(file.c_str(), F_OK));
    }
}

TEST(NamedSemaphore, HasTheCountOfItsCreatorAndLosesItsNameWithTheFirstClose) {
    std::wstring const name = wide(uniqueName());
    PSemaphore creator(name.c_str()), other(name.c_str());
    int value = 0;
    EXPECT_CODE(PERR_SEMAPHORE_NOT_FOUND, other.init(9, false));
    EXPECT_CODE(PERR_OK, creator.init(3, true));
    EXPECT_CODE(PERR_SEMAPHORE_INITIALISED, creator.init(3, true));
    EXPECT_CODE(PERR_SEMAPHORE_EXISTS, other.init(9, true));
    EXPECT_CODE(PERR_OK, other.init(9, false));
    EXPECT_CODE(PERR_OK, other.getValue(value));
    EXPECT_EQ(3, value);
    EXPECT_CODE(PERR_OK, creator.close());
    EXPECT_CODE(PERR_SEMAPHORE_NOT_FOUND, creator.init(3, false));
    EXPECT_CODE(PERR_SEMAPHORE, PSemaphore(L"/plt/x").init(1, true)) << "an invalid name";
}
