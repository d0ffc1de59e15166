#include <memory>

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <portinglayer/libraries.h>
#include <support/scratch.h>

static_assert(sizeof(PLibrary) == 48 && !std::is_copy_constructible_v<PLibrary>);

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
        EXPECT_EQ(dlopen(TEST_PLUGIN, RTLD_LAZY | RTLD_NOLOAD) == nullptr, unload);
    }
}

TEST(Library, NoNameIsTheMainProgramAndFailuresTellTheReason) {
    PLibrary* library = nullptr;
    EXPECT_EQ(PLibrary::load(L"\u00e9", library, false), PERR_OK) << "no name: the main program";
    std::unique_ptr<PLibrary> const program(library);
    EXPECT_NE(program->getFunction("strlen"), nullptr);
    testing::internal::CaptureStderr();
    EXPECT_EQ(PLibrary::load(L"/nonexistent/lib.so", library, true), PERR_LIBRARY_LOAD);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "\n[tALV][ERR] [PLibrary::load] dlopen('/nonexistent/lib.so', RTLD_LAZY) failed! "
              "dlerror: /nonexistent/lib.so: cannot open shared object file: "
              "No such file or directory\n\n");
    EXPECT_EQ(library, program.get()) << "as it was";
}

TEST(Library, NamesBecomeFileNames) {
    for (auto const& [name, expected] : {std::pair(L"foo", L"libfoo.so"),
                                         {L"LIB.SO", L"LIB.SO"},
                                         {L"libx.so.1", L"libx.so.1.so"},
                                         {L"", L"lib.so"}}) {
        PString fixed(name, P_WHOLE_STRING);
        PLibrary::fixLibName(fixed);
        EXPECT_EQ(fixed, expected);
    }
}
