#include <dlfcn.h>

#include <fs/files.h>
#include <portinglayer/libraries.h>

TEST(Library, IsUnloadedWithItsObjectIfToldSo) {
    for (bool const unload : {true, false}) {
        PLibrary* library = nullptr;
        ASSERT_CODE(PERR_OK, PLibrary::load(L"libanl.so.1", library, unload));
        EXPECT_TEXT(L"libanl.so.1", library->getName());
        delete library;
        bool const loaded = dlopen("libanl.so.1", RTLD_LAZY | RTLD_NOLOAD) != nullptr;
        EXPECT_EQ(!unload, loaded);
    }
}

TEST(Library, WithoutANameIsTheMainProgram) {
    PLibrary* program = nullptr;
    ASSERT_CODE(PERR_OK, PLibrary::load(L"", program, true));
    EXPECT_EQ(dlsym(RTLD_DEFAULT, "strlen"), program->getFunction("strlen"));
    EXPECT_EQ(nullptr, program->getFunction(nullptr));
    delete program;
    EXPECT_EQ(nullptr, PLibrary().getFunction("strlen")) << "nothing is loaded";
}

TEST(Library, ThatCannotBeLoadedIsToldOnStandardError) {
    PLibrary here, *library = &here;
    testing::internal::CaptureStderr();
    EXPECT_CODE(PERR_LIBRARY_LOAD, PLibrary::load(L"/none.so", library, true));
    EXPECT_EQ("\n[tALV][ERR] [PLibrary::load] dlopen('/none.so', RTLD_LAZY) failed! dlerror: "
              "/none.so: cannot open shared object file: No such file or directory\n\n",
              testing::internal::GetCapturedStderr());
    EXPECT_EQ(&here, library) << "left as it was";
}

TEST(Library, NameIsPutBetweenItsUsualEnds) {
    PString name(L"foo", 3), full(L"LIBfoo.SO", 9);
    PLibrary::fixLibName(name);
    EXPECT_TEXT(L"libfoo.so", name);
    PLibrary::fixLibName(full);
    EXPECT_TEXT(L"LIBfoo.SO", full);
}
