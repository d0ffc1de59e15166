#include <memory>
#include <type_traits>

#include <dlfcn.h>

#include <fs/files.h>
#include <portinglayer/libraries.h>

static_assert(sizeof(PLibrary) == 48 && std::has_virtual_destructor_v<PLibrary>);
static_assert(!std::is_copy_constructible_v<PLibrary>);

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

TEST(Library, GivesAddressesOfWhatItHolds) {
    PLibrary* loaded = nullptr;
    ASSERT_CODE(PERR_OK, PLibrary::load(L"libm.so.6", loaded, true));
    std::unique_ptr<PLibrary> const library(loaded);
    EXPECT_EQ(dlsym(RTLD_DEFAULT, "cos"), library->getFunction("cos"));
    EXPECT_EQ(nullptr, library->getFunction("no such function"));
    EXPECT_EQ(nullptr, library->getFunction(nullptr));
    EXPECT_EQ(nullptr, PLibrary().getFunction("cos")) << "nothing is loaded";
}

TEST(Library, WithoutANameIsTheMainProgram) {
    for (wchar_t const* const name : {L"", L"\u00e9"}) {  // which the C locale cannot express
        PLibrary* loaded = nullptr;
        ASSERT_CODE(PERR_OK, PLibrary::load(name, loaded, true));
        std::unique_ptr<PLibrary> const program(loaded);
        EXPECT_NE(nullptr, program->getFunction("strlen"));
    }
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

TEST(LibraryName, IsPutBetweenItsUsualEnds) {
    struct {
        wchar_t const *given, *made;
    } const rows[] = {{L"foo", L"libfoo.so"},           {L"libfoo", L"libfoo.so"},
                      {L"LIBfoo.SO", L"LIBfoo.SO"},     {L"libfoo.so.1", L"libfoo.so.1.so"},
                      {L"/opt/foo", L"lib/opt/foo.so"}, {L"", L"lib.so"}};
    for (auto const& row : rows) {
        PString name(row.given, P_WHOLE_STRING);
        PLibrary::fixLibName(name);
        EXPECT_TEXT(row.made, name);
    }
}
