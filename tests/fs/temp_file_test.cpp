#include <memory>
#include <type_traits>

#include <gtest/gtest.h>

#include <portinglayer/files.h>
#include <support/scratch.h>

static_assert(sizeof(PTempFile) == 72 && std::is_base_of_v<PFile, PTempFile>);

TEST(TempFile, IsCalledThePrefixAndANumber) {
    Scratch scratch;
    PTempFile file;
    EXPECT_EQ(file.popen(L"", 18, 0), PERR_INVALID_ARGUMENT);
    EXPECT_EQ(file.popen(scratch.wpath("job").c_str(), 0, 0), PERR_NO_SUCH_FILE) << "not created";
    ASSERT_EQ(file.popen((scratch.wpath("") + L"\\job").c_str(), 18, 0), PERR_OK);
    EXPECT_EQ(file.popen(scratch.wpath("job").c_str(), 18, 0), PERR_ALREADY_OPEN);

    std::string const name = scratch.names().at(0);
    EXPECT_EQ(name.substr(0, 3), "job");
    EXPECT_LT(std::stoi(name.substr(3)), 238328);
    EXPECT_EQ(std::to_string(std::stoi(name.substr(3))), name.substr(3));

    EXPECT_EQ(file.PFile::pclose(), PERR_OK);
    EXPECT_EQ(file.popen(scratch.wpath("job").c_str(), 18, 0), PERR_ALREADY_OPEN);
    EXPECT_EQ(file.pclose(), PERR_NOT_OPEN);
    EXPECT_EQ(file.popen(scratch.wpath("job").c_str(), 18, 0), PERR_OK) << "another name is found";
    EXPECT_EQ(file.pclose(), PERR_OK);
    EXPECT_EQ(scratch.names().size(), 2U) << "the files stay";
}

TEST(System, KnowsItsTemporaryFolderAndANumber) {
    EXPECT_EQ(PSystem::getTempDir(), L"/tmp/");
    EXPECT_EQ(PSystem::getRandom(5, 10), 5);
}
