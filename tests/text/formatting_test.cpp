#include <cerrno>
#include <cwchar>
#include <memory>

#include <support/expect.h>

TEST(Formatting, FillsInTheArgumentsAndEmptiesTheOutputWithoutAFormatOfItsOwn) {
    PString text(L"x", 1);
    EXPECT_CODE(PERR_OK, PUtils::pformatString(text, L"/proc/%u/%ls", 42U, L"stat"));
    EXPECT_TEXT(L"/proc/42/stat", text);
    EXPECT_CODE(PERR_OK, PUtils::pformatString(text, L"%ls;%ls", text.ptr(), text.ptr()));
    EXPECT_TEXT(L"/proc/42/stat;/proc/42/stat", text) << "of its former text";
    va_list none{};
    EXPECT_CODE(PERR_OK, PUtils::vformatString(text, text, none)) << "where it is the format";
    EXPECT_TEXT(L"", text);
    EXPECT_CODE(PERR_OK, PUtils::pformatString(text, nullptr));
    EXPECT_TEXT(L"", text);
}

TEST(Formatting, GivesWhatOnePassWithItsRoomGives) {
    wchar_t const format[] = L"%m%ls%s|";
    PString text;
    for (std::size_t length : {0, 255, 256, 2037, 2038, 2054, 2055, 9000})
        for (char const* bytes : {"", "x", "\xff"}) {  // the last fails
            std::wstring const filler(length, L'x');
            std::wstring room(std::size(format) + 2048, L'\0');
            errno = ENOENT;
            (void)swprintf(room.data(), room.size() - 1, format, filler.c_str(), bytes);
            errno = ENOENT;
            ASSERT_CODE(PERR_OK, PUtils::pformatString(text, format, filler.c_str(), bytes));
            ASSERT_TEXT(room.c_str(), text) << length << testing::PrintToString(bytes);
        }
}

TEST(KeyAndValue, StandBeforeAndBehindTheFirstSeparatorTrimmed) {
    PString text(L" k \t=\r v=w ", P_WHOLE_STRING), value(L"old", 3);
    EXPECT_CODE(PERR_NOT_FOUND, PUtils::getKeyValue(text, text, value, L':'));
    EXPECT_CODE(PERR_NOT_FOUND, PUtils::getKeyValue(text, text, value, L'\0'));
    EXPECT_CODE(PERR_NOT_FOUND, PUtils::getKeyValue(text, text, value, L'V')) << "but for its case";
    EXPECT_TEXT(L"old", value);
    EXPECT_CODE(PERR_OK, PUtils::getKeyValue(text, text, value, L'=')) << "replaces the text";
    EXPECT_TEXT(L"k", text);
    EXPECT_TEXT(L"v=w", value);
}

TEST(Arguments, AreTextsOfWhichTheFirstIsAPair) {
    char const* list[] = {"/bin/x", "a", nullptr, "p=q"};
    PString* made = nullptr;
    unsigned long count = 77;
    EXPECT_CODE(PERR_NO_MEMORY, PUtils::convertArgs(-1, nullptr, made, count, L'='));
    EXPECT_EQ(77U, count);
    ASSERT_CODE(PERR_OK, PUtils::convertArgs(3, const_cast<char**>(list), made, count, L'='));
    std::unique_ptr<PString[]> const texts(made);
    EXPECT_EQ(3U, count);
    EXPECT_TEXT(L"process.name=/bin/x", texts[0]);
    EXPECT_TEXT(L"a", texts[1]);
    EXPECT_TEXT(L"", texts[2]);
    ASSERT_CODE(PERR_OK, PUtils::convertArgs(1, const_cast<char**>(list + 3), made, count, L'='));
    std::unique_ptr<PString[]> const pair(made);
    EXPECT_TEXT(L"p=q", pair[0]);
}

TEST(Path, HasSlashesOnceFixedAndGetsNoExtensionNorIsItTakenOutOfALink) {
    PString path(L"a\\b/c\\", P_WHOLE_STRING), arguments(L"old", 3);
    EXPECT_CODE(PERR_OK, PUtils::fixFileSeparator(path));
    EXPECT_CODE(PERR_OK, PUtils::fixExecFileExtension(path));
    EXPECT_TEXT(L"a/b/c/", path);
    EXPECT_CODE(PERR_INVALID_ARGUMENT, PUtils::parseLink(L"#/bin/x a", path, arguments));
    EXPECT_TEXT(L"", path);
    EXPECT_TEXT(L"", arguments);
}
