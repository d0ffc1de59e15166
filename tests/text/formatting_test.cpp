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

// Around the room on the stack and the limit of all room, and where a conversion fails.
TEST(Formatting, GivesWhatOnePassWithFixedRoomGives) {
    for (size_t length : {0UL, 254UL, 255UL, 256UL, 2052UL, 2053UL, 2054UL, 9000UL})
        for (char const* bytes : {"", "x", "\xff"}) {
            std::wstring const text(length, L'x');
            PString out(L"old", P_WHOLE_STRING);
            ASSERT_EQ(PUtils::pformatString(out, L"%ls%s|", text.c_str(), bytes), PERR_OK);
            ASSERT_EQ(out.ptr(), _onePass(L"%ls%s|", text.c_str(), bytes)) << length << bytes;
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
    PLiteral const expected[] = {L"process.name=/bin/x|/bin/x", L"p=q|", L"process.name=|"};
    PString* out = nullptr;
    unsigned long count = 7;
    for (int row = 0; row < 3; ++row) {
        ASSERT_EQ(PUtils::convertArgs(2, rows[row], out, count, L'='), PERR_OK);
        ((out[0] += L"|") += out[1]);
        EXPECT_TRUE(count == 2 && out[0] == expected[row]) << out[0].ptr();
        delete[] out;
    }
    EXPECT_EQ(PUtils::convertArgs(0, nullptr, out, count, L'='), PERR_OK);
    EXPECT_TRUE(count == 0 && out != nullptr);
    delete[] out;
}

TEST(Paths, SlashesAreFixedAndLinksRefused) {
    PString path(L"a\\b/c\\", P_WHOLE_STRING);
    EXPECT_EQ(PUtils::fixFileSeparator(path) + PUtils::fixExecFileExtension(path), PERR_OK);
    EXPECT_STREQ(path.ptr(), L"a/b/c/");
    PString args(path);
    EXPECT_EQ(PUtils::parseLink(L"#\"/bin/x\" y", path, args), PERR_INVALID_ARGUMENT);
    EXPECT_TRUE(path.len() == 0 && args.len() == 0);
}
