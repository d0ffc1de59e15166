#include <support/child_run.h>
#include <sync/locks.h>

// Of both classes: their named forms share one way to open and close.
TYPED_TEST_SUITE(Named, Kinds, );

TYPED_TEST(Named, IsCreatedOnceAndOpenedAfterwards) {
    TypeParam first(this->name.c_str()), second(this->name.c_str());
    EXPECT_CODE(TypeParam::MISSING, first.init(false));
    EXPECT_CODE(PERR_OK, first.init(true));
    EXPECT_CODE(TypeParam::INITIALISED, first.init(false));
    EXPECT_CODE(TypeParam::EXISTS, second.init(true));
    EXPECT_CODE(PERR_OK, second.init(false));
}

TYPED_TEST(Named, LosesItsNameWithTheFirstCloseAndWorksOn) {
    TypeParam first(this->name.c_str()), second(this->name.c_str());
    EXPECT_CODE(PERR_OK, first.init(true));
    EXPECT_CODE(PERR_OK, second.init(false));
    EXPECT_CODE(PERR_OK, first.close());
    EXPECT_CODE(TypeParam::REFUSED, first.close()) << "it has no handle";
    EXPECT_CODE(TypeParam::MISSING, first.init(false));
    EXPECT_CODE(PERR_OK, second.enter());
    EXPECT_CODE(PERR_OK, second.close()) << "although the name is gone";
}

TYPED_TEST(Named, IsClosedByItsDestructor) {
    {
        TypeParam object(this->name.c_str());
        EXPECT_CODE(PERR_OK, object.init(true));
    }
    EXPECT_CODE(TypeParam::MISSING, TypeParam(this->name.c_str()).init(false));
}

TYPED_TEST(Named, AdmitsOneAndASignalEndsTheWaitOfTheNext) {
    TypeParam first(this->name.c_str()), second(this->name.c_str());
    EXPECT_CODE(PERR_OK, first.init(true));
    EXPECT_CODE(PERR_OK, second.init(false));
    EXPECT_CODE(PERR_OK, first.enter());
    EXPECT_CODE(TypeParam::INTERRUPTED, interrupted([&] { return first.enter(); }));
    EXPECT_CODE(TypeParam::INTERRUPTED, interrupted([&] { return second.enter(); }));
    EXPECT_CODE(PERR_OK, second.leave()) << "by one that did not enter";
    EXPECT_CODE(PERR_OK, first.enter());
}

TYPED_TEST(Named, IsOpenToItsUserAndGroup) {
    TypeParam object(this->name.c_str());
    mode_t const before = umask(0);
    EXPECT_CODE(PERR_OK, object.init(true));
    (void)umask(before);
    std::string const file(this->name.begin() + 1, this->name.end());
    EXPECT_EQ("770", modeOf("/dev/shm/sem." + file));
}

TYPED_TEST(Named, WithAnInvalidNameIsRefused) {
    for (wchar_t const* const invalid : {L"", L"/plt/x", L"/\x20ac"}) {
        TypeParam object(invalid);
        EXPECT_CODE(TypeParam::REFUSED, object.init(true)) << invalid;
        EXPECT_CODE(TypeParam::REFUSED, object.enter()) << invalid;
    }
}

TYPED_TEST(Named, WithALongNameIsCutToThirteenCharactersForGood) {
    struct {
        char const* what;
        std::size_t given, kept;
        int code;
    } const rows[] = {
        {"the longest that fits", 252, 252, PERR_OK},
        {"one character more", 253, 13, PERR_OK},
        {"what is no name at all", 257, 1, TypeParam::REFUSED},
    };
    std::string const longest = uniqueName() + std::string(257, 'x');
    for (auto const& row : rows) {
        SCOPED_TRACE(row.what);
        std::string const file = "/dev/shm/sem." + longest.substr(1, row.kept - 1);
        TypeParam object(wide(longest).substr(0, row.given).c_str());
        EXPECT_CODE(row.code, object.init(true));
        EXPECT_EQ(row.kept > 1, access(file.c_str(), F_OK) == 0);
        EXPECT_CODE(row.code, object.close());
        EXPECT_NE(0, access(file.c_str(), F_OK));
    }
}
