#include <portinglayer/synchronisation.h>
#include <support/scratch.h>

#include "waiting.h"

namespace {

/// The named lock, and the named semaphore with count 1: used alike, with codes of their own.
struct Lock : PMutex {
    using PMutex::PMutex;
    int enter() { return lock(); }
    int leave() { return unlock(); }

    static constexpr char const* KIND = "lock";
    static constexpr int INVALID = PERR_MUTEX, EXISTS = PERR_MUTEX_EXISTS, FAILED = PERR_MUTEX_LOCK,
                         MISSING = PERR_MUTEX_NOT_FOUND, HELD = PERR_MUTEX_INITIALISED;
};

struct One : PSemaphore {
    using PSemaphore::PSemaphore;
    int init(bool create) { return PSemaphore::init(1, create); }
    int enter() { return wait(); }
    int leave() { return post(); }

    static constexpr char const* KIND = "semaphore";
    static constexpr int INVALID = PERR_SEMAPHORE, EXISTS = PERR_SEMAPHORE_EXISTS,
                         FAILED = PERR_SEMAPHORE_WAIT, MISSING = PERR_SEMAPHORE_NOT_FOUND,
                         HELD = PERR_SEMAPHORE_INITIALISED;
};

template <class Kind>
struct Named : testing::Test {
    std::string const unique = uniqueName();
};

}  // namespace

using Kinds = testing::Types<Lock, One>;
TYPED_TEST_SUITE(Named, Kinds, );

TYPED_TEST(Named, IsCreatedOnceAndItsNameGoesWithTheFirstClose) {
    using T = TypeParam;
    T first(wide(this->unique).c_str());
    T second(wide(this->unique).c_str());
    EXPECT_EQ((Codes{first.enter(), first.leave(), first.init(false), first.init(true)}),
              (Codes{T::INVALID, T::INVALID, T::MISSING, PERR_OK}));
    EXPECT_EQ((Codes{first.init(true), second.init(true), second.init(false), first.close()}),
              (Codes{T::HELD, T::EXISTS, PERR_OK, PERR_OK}));
    EXPECT_EQ((Codes{first.close(), first.init(false), second.enter()}),
              (Codes{T::INVALID, T::MISSING, PERR_OK}));
    EXPECT_EQ(interrupted([&] { return second.enter(); }), T::FAILED);  // it is not recursive
    EXPECT_EQ((Codes{second.leave(), second.close()}), Codes(2, PERR_OK));
}

TYPED_TEST(Named, InvalidNamesAreRefusedAndLongOnesCutToThirteenCharactersForGood) {
    std::string const name = this->unique + std::string(257, 'x');
    std::pair<std::wstring, std::size_t> const table[] = {{wide(name.substr(0, 252)), 252},
                                                          {wide(name.substr(0, 253)), 13},
                                                          {wide(name.substr(0, 256)), 13},
                                                          {wide(name.substr(0, 257)), 0},
                                                          {L"/a/b", 0},
                                                          {L"/\x20ac", 0},
                                                          {L"", 0}};
    for (auto const& [given, kept] : table) {
        std::string const file = "/dev/shm/sem." + name.substr(1, kept - 1);
        int const result = kept != 0 ? PERR_OK : TypeParam::INVALID;
        TypeParam object(given.c_str());
        EXPECT_EQ(object.init(true), result) << given.size();
        EXPECT_EQ(access(file.c_str(), F_OK) == 0, kept != 0) << given.size();
        EXPECT_EQ((Codes{object.enter(), object.close()}), Codes(2, result)) << given.size();
        EXPECT_NE(access(file.c_str(), F_OK), 0) << given.size();
    }
}

TYPED_TEST(Named, ProcessesExcludeEachOtherAndLoseNoUpdate) {
    Scratch const scratch;
    std::string const file = scratch.write("number", "0");
    TypeParam object(wide(this->unique).c_str());
    EXPECT_EQ((Codes{object.init(true), object.enter()}), Codes(2, PERR_OK));
    std::vector<ChildRun> partners;
    partners.reserve(3);
    for (int i = 0; i < 3; ++i)
        partners.emplace_back(
            std::vector<std::string>{"raise", TypeParam::KIND, this->unique, file, "300"});
    EXPECT_TRUE(eventually([&] { return scratch.read("number.open").size() == 3; }));
    usleep(50'000);
    EXPECT_EQ(scratch.read("number"), "0");  // held here
    EXPECT_EQ(object.leave(), PERR_OK);
    EXPECT_TRUE(eventually([&] { return scratch.read("number") == "900"; }));
}
