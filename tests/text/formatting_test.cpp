#include <cstdarg>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <portinglayer/strings.h>

namespace {

/// One pass of the C library over zeros, with all the room there is.
std::wstring _onePass(wchar_t const* format, ...) {
    std::vector<wchar_t> room(wcslen(format) + 2049);
    va_list args;
    va_start(args, format);
    (void)vswprintf(room.data(), room.size() - 1, format, args);  // NOLINT(clang-analyzer-valist*)
    va_end(args);
    return room.data();
}

}  // namespace

// Around the room on the stack and the limit of all room, and where conversions fail or cut.
TEST(Formatting, GivesWhatOnePassWithFixedRoomGives) {
    for (size_t length : {0UL, 254UL, 255UL, 256UL, 2049UL, 2050UL, 2051UL, 2052UL, 9000UL})
        for (auto const* format : {L"%ls", L"%ls%d", L"a%ls%c", L"%ls%s", L"%ls%%%.1s|"}) {
            std::wstring const text(length, L'x');
            char const* const last = format[4] == L's' ? "ok\xff" : "\0ok";
            PString out(L"old", P_WHOLE_STRING);
            ASSERT_EQ(PUtils::pformatString(out, format, text.c_str(), last), PERR_OK);
            ASSERT_EQ(out.ptr(), _onePass(format, text.c_str(), last)) << length << format;
        }
    PString out;
    PUtils::pformatString(out, L"%3000d", 1);
    EXPECT_EQ(out.len(), 6U + 2047U);
}

TEST(Formatting, OutputMayStandAmongTheArguments) {
    PString out(L"a", P_WHOLE_STRING);
    PUtils::pformatString(out, L"/proc/%u/%ls%300d", 42, out.ptr(), 1);
    PUtils::pformatString(out, L"%.10ls|%.10ls", out.ptr(), out.ptr());
    EXPECT_STREQ(out.ptr(), L"/proc/42/a|/proc/42/a");
    EXPECT_EQ(PUtils::pformatString(out, nullptr), PERR_OK);
    EXPECT_STREQ(out.ptr(), L"");
}

TEST(KeyAndValue, AreSplitAtTheFirstSeparatorAndTrimmed) {
    wchar_t const* const rows[][3] = {{L" k = v ", L"k", L"v"},
                                      {L"a=b=c", L"a", L"b=c"},
                                      {L"=", L"", L""},
                                      {L" \t= v", L"", L"v"}};
    for (auto const& [text, expectedKey, expectedValue] : rows) {
        PString key(text, P_WHOLE_STRING);  // text and output in one
        PString value;
        EXPECT_EQ(PUtils::getKeyValue(key, key, value, L'='), PERR_OK);
        EXPECT_TRUE(key == expectedKey && value == expectedValue) << text;
    }
    PString key(L"k", P_WHOLE_STRING), value(L"v", P_WHOLE_STRING);
    for (wchar_t const separator : {L'=', L'\0'})
        EXPECT_EQ(PUtils::getKeyValue(L"kv", key, value, separator), PERR_NOT_FOUND);
    EXPECT_TRUE(key == L"k" && value == L"v");
}

TEST(Arguments, FirstBecomesAPairUnlessItIsOne) {
    char program[] = "/bin/x", pair[] = "p=q", bad[] = "\xff";
    char* rows[][2] = {{program, program}, {pair, bad}, {bad, nullptr}};
    wchar_t const* const expected[][2] = {
        {L"process.name=/bin/x", L"/bin/x"}, {L"p=q", L""}, {L"process.name=", L""}};
    for (int row = 0; row < 3; ++row) {
        PString* out = nullptr;
        unsigned long count = 0;
        ASSERT_EQ(PUtils::convertArgs(2, rows[row], out, count, L'='), PERR_OK);
        EXPECT_TRUE(count == 2 && out[0] == expected[row][0] && out[1] == expected[row][1]) << row;
        delete[] out;
    }
    PString* out = nullptr;
    unsigned long count = 7;
    EXPECT_EQ(PUtils::convertArgs(0, nullptr, out, count, L'='), PERR_OK);
    EXPECT_TRUE(count == 0 && out != nullptr);
    delete[] out;
    EXPECT_EQ(PUtils::convertArgs(-1, nullptr, out, count, L'='), PERR_NO_MEMORY);
}

TEST(Paths, SlashesAreFixedAndLinksRefused) {
    PString path(L"a\\b/c\\", P_WHOLE_STRING);
    EXPECT_EQ(PUtils::fixFileSeparator(path) + PUtils::fixExecFileExtension(path), PERR_OK);
    EXPECT_STREQ(path.ptr(), L"a/b/c/");
    PString args(path);
    EXPECT_EQ(PUtils::parseLink(L"#\"/bin/x\" y", path, args), PERR_INVALID_ARGUMENT);
    EXPECT_TRUE(path.len() == 0 && args.len() == 0);
}
