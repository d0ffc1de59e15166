#include <memory>
#include <type_traits>

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <portinglayer/libraries.h>
#include <support/scratch.h>

static_assert(sizeof(PLibrary) == 48 && alignof(PLibrary) == 8);
static_assert(std::has_virtual_destructor_v<PLibrary> && !std::is_copy_constructible_v<PLibrary>);

namespace {

bool _isLoaded(char const* file) {
    void* const handle = dlopen(file, RTLD_LAZY | RTLD_NOLOAD);
    if (handle != nullptr) (void)dlclose(handle);
    return handle != nullptr;
}

}  // namespace

TEST(Library, IsLoadedCalledAndUnloadedAsTold) {
    for (bool const unload : {true, false}) {
        PLibrary* loaded = nullptr;
        ASSERT_EQ(PLibrary::load(wide(TEST_PLUGIN).c_str(), loaded, unload), PERR_OK);
        std::unique_ptr<PLibrary> library(loaded);
        EXPECT_EQ(library->getName(), wide(TEST_PLUGIN).c_str());
        auto const answer = reinterpret_cast<int (*)()>(library->getFunction("pluginAnswer"));
        ASSERT_NE(answer, nullptr);
        EXPECT_EQ(answer(), 42);
        EXPECT_EQ(library->getFunction("none"), nullptr);
        library.reset();
        EXPECT_EQ(_isLoaded(TEST_PLUGIN), !unload);
    }
}

TEST(Library, NoNameIsTheMainProgram) {
    for (wchar_t const* const name : {L"", L"\u00e9"}) {  // the second is not in the C locale
        PLibrary* loaded = nullptr;
        ASSERT_EQ(PLibrary::load(name, loaded, true), PERR_OK);
        std::unique_ptr<PLibrary> const library(loaded);
        EXPECT_NE(library->getFunction("strlen"), nullptr);
    }
    EXPECT_EQ(PLibrary().getFunction("strlen"), nullptr);
}

TEST(Library, FailureTellsTheLoadersReason) {
    char marker = 0;
    auto* const untouched = reinterpret_cast<PLibrary*>(&marker);
    PLibrary* library = untouched;
    testing::internal::CaptureStderr();
    EXPECT_EQ(PLibrary::load(L"/nonexistent/lib.so", library, true), PERR_LIBRARY_LOAD);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "\n[tALV][ERR] [PLibrary::load] dlopen('/nonexistent/lib.so', RTLD_LAZY) failed! "
              "dlerror: /nonexistent/lib.so: cannot open shared object file: "
              "No such file or directory\n\n");
    EXPECT_EQ(library, untouched);
}

TEST(Library, NamesBecomeFileNames) {
    for (auto const& [name, expected] : {std::pair(L"foo", L"libfoo.so"),
                                         {L"libfoo.so", L"libfoo.so"},
                                         {L"LIBfoo.SO", L"LIBfoo.SO"},
                                         {L"libfoo.so.1", L"libfoo.so.1.so"},
                                         {L"/opt/x/foo", L"lib/opt/x/foo.so"},
                                         {L"", L"lib.so"}}) {
        PString fixed(name, P_WHOLE_STRING);
        PLibrary::fixLibName(fixed);
        EXPECT_EQ(fixed, expected);
    }
}
