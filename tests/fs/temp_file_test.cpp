#include <gtest/gtest.h>

#include <portinglayer/files.h>
#include <support/scratch.h>

static_assert(sizeof(PTempFile) == 72 && sizeof(PSystem) == 1);

TEST(TempFile, IsCalledThePrefixAndANumber) {
    Scratch scratch;
    std::wstring const prefix = scratch.wpath("job");
    PTempFile file;
    EXPECT_EQ(file.popen(L"", 18, 0), PERR_INVALID_ARGUMENT);
    EXPECT_EQ(file.popen(prefix.c_str(), 0, 0), PERR_NO_SUCH_FILE) << "not created";
    ASSERT_EQ(file.popen(scratch.wpath("\\job").c_str(), 18, 0), PERR_OK);
    std::string const digits = scratch.names().at(0).substr(3);
    EXPECT_LT(std::stoi(digits), 238328);
    EXPECT_EQ(std::to_string(std::stoi(digits)), digits);

    EXPECT_EQ(file.PFile::pclose(), PERR_OK);
    EXPECT_EQ(file.popen(prefix.c_str(), 18, 0), PERR_ALREADY_OPEN) << "closed as another class";
    EXPECT_EQ(file.pclose(), PERR_NOT_OPEN);
    EXPECT_EQ(file.popen(scratch.wpath("other").c_str(), 18, 0), PERR_OK);
    EXPECT_EQ(scratch.names().size(), 2U) << "the first file stays";
}

TEST(System, KnowsItsTemporaryFolderAndANumber) {
    EXPECT_EQ(PSystem::getTempDir(), L"/tmp/");
    EXPECT_EQ(PSystem::getRandom(5, 10), 5);
}
