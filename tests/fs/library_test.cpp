#include <memory>

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <portinglayer/files.h>
#include <portinglayer/libraries.h>

TEST(Library, IsUnloadedUnlessToldOtherwiseAndIsTheMainProgramWithoutAName) {
    PLibrary* library = nullptr;
    for (bool const unload : {true, false}) {
        ASSERT_EQ(PLibrary::load(L"libanl.so.1", library, unload), PERR_OK);
        EXPECT_EQ(library->getName(), L"libanl.so.1");
        delete library;
        EXPECT_EQ(dlopen("libanl.so.1", RTLD_LAZY | RTLD_NOLOAD) == nullptr, unload);
    }
    ASSERT_EQ(PLibrary::load(L"\u00e9", library, false), PERR_OK) << "not in the C locale";
    std::unique_ptr<PLibrary> const program(library);
    EXPECT_NE(program->getFunction("strlen"), nullptr);
    for (char const* const symbol : {"none", static_cast<char const*>(nullptr)})
        EXPECT_EQ(program->getFunction(symbol), nullptr);
    testing::internal::CaptureStderr();
    EXPECT_EQ(PLibrary::load(L"/none.so", library, true), PERR_LIBRARY_LOAD);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "\n[tALV][ERR] [PLibrary::load] dlopen('/none.so', RTLD_LAZY) failed! dlerror: "
              "/none.so: cannot open shared object file: No such file or directory\n\n");
    EXPECT_EQ(library, program.get()) << "as it was";
}

TEST(FileNames, AreMadeOfLibraryNamesAndCutFromPaths) {
    wchar_t const* const rows[][3] = {{L"foo", L"libfoo.so", L"foo"},
                                      {L"LIB.SO", L"LIB.SO", L"LIB.SO"},
                                      {L"lib.so.1", L"lib.so.1.so", L"lib.so.1"},
                                      {L"/a/b\\c", L"lib/a/b\\c.so", L"b\\c"}};
    for (auto const& [name, made, cut] : rows) {
        PString library(name, P_WHOLE_STRING), path(name, P_WHOLE_STRING);
        PLibrary::fixLibName(library);
        PFile::getFileName(path);
        EXPECT_TRUE(library == made && path == cut) << made;
    }
}
