#include <cerrno>
#include <cwchar>
#include <memory>

#include <support/expect.h>

namespace {

/// What one pass gives in a room of the format's length and 2048 characters.
std::wstring _formattedOnce(wchar_t const* format, wchar_t const* text, char const* bytes) {
    std::wstring room(wcslen(format) + 2048 + 1, L'\0');
    (void)swprintf(room.data(), room.size() - 1, format, text, bytes);
    return room.c_str();
}

}  // namespace

TEST(Formatting, FillsInTheArguments) {
    PString text(L"x", 1);
    EXPECT_CODE(PERR_OK, PUtils::pformatString(text, L"/proc/%u/%ls", 42U, L"stat"));
    EXPECT_TEXT(L"/proc/42/stat", text);
    EXPECT_CODE(PERR_OK, PUtils::pformatString(text, L"%ls;%ls", text.ptr(), text.ptr()));
    EXPECT_TEXT(L"/proc/42/stat;/proc/42/stat", text) << "of its former text";
    EXPECT_CODE(PERR_OK, PUtils::pformatString(text, nullptr));
    EXPECT_TEXT(L"", text);
}

TEST(Formatting, EmptiesTheOutputFirstWhereItIsTheFormat) {
    va_list none{};
    PString text(L"%%", 2);
    EXPECT_CODE(PERR_OK, PUtils::vformatString(text, text, none));
    EXPECT_TEXT(L"", text);
}

TEST(Formatting, GivesWhatOnePassWithItsRoomGives) {
    wchar_t const format[] = L"%m%ls%s|";
    PString text;
    for (std::size_t length : {0, 255, 256, 2037, 2038, 2054, 2055, 9000})
        for (char const* bytes : {"", "x", "\xff"}) {  // the last fails
            std::wstring const filler(length, L'x');
            errno = ENOENT;
            std::wstring const expected = _formattedOnce(format, filler.c_str(), bytes);
            errno = ENOENT;
            ASSERT_CODE(PERR_OK, PUtils::pformatString(text, format, filler.c_str(), bytes));
            ASSERT_TEXT(expected, text) << length << testing::PrintToString(bytes);
        }
}

TEST(KeyAndValue, StandBeforeAndBehindTheFirstSeparatorTrimmed) {
    PString text(L" k \t=\r v=w ", P_WHOLE_STRING), value(L"old", 3);
    EXPECT_CODE(PERR_NOT_FOUND, PUtils::getKeyValue(text, text, value, L':'));
    EXPECT_CODE(PERR_NOT_FOUND, PUtils::getKeyValue(text, text, value, L'\0'));
    EXPECT_TEXT(L"old", value);
    EXPECT_CODE(PERR_OK, PUtils::getKeyValue(text, text, value, L'=')) << "replaces the text";
    EXPECT_TEXT(L"k", text);
    EXPECT_TEXT(L"v=w", value);
    EXPECT_CODE(PERR_OK, PUtils::getKeyValue(L":", text, value, L':'));
    EXPECT_TEXT(L"", text);
    EXPECT_TEXT(L"", value);
}

TEST(Arguments, AreTextsOfWhichTheFirstIsAPair) {
    struct {
        char const* path;
        wchar_t const* first;
    } const rows[] = {
        {"/bin/x", L"process.name=/bin/x"}, {"p=q", L"p=q"}, {nullptr, L"process.name="}};
    for (auto const& row : rows) {
        char const* list[] = {row.path, "a=1", nullptr};
        PString* made = nullptr;
        unsigned long count = 0;
        ASSERT_CODE(PERR_OK, PUtils::convertArgs(3, const_cast<char**>(list), made, count, L'='));
        std::unique_ptr<PString[]> const texts(made);
        EXPECT_EQ(3U, count);
        EXPECT_TEXT(row.first, texts[0]);
        EXPECT_TEXT(L"a=1", texts[1]);
        EXPECT_TEXT(L"", texts[2]);
    }
}

TEST(Arguments, OfANegativeCountAreRefused) {
    PString* made = nullptr;
    unsigned long count = 77;
    EXPECT_CODE(PERR_NO_MEMORY, PUtils::convertArgs(-1, nullptr, made, count, L'='));
    EXPECT_EQ(77U, count);
}

TEST(Path, HasSlashesOnceFixedAndGetsNoExtension) {
    PString path(L"a\\b/c\\", P_WHOLE_STRING);
    EXPECT_CODE(PERR_OK, PUtils::fixFileSeparator(path));
    EXPECT_CODE(PERR_OK, PUtils::fixExecFileExtension(path));
    EXPECT_TEXT(L"a/b/c/", path);
}

TEST(Link, IsRefusedAndEmptiesBothOutputs) {
    PString path(L"old", 3), arguments(L"old", 3);
    EXPECT_CODE(PERR_INVALID_ARGUMENT, PUtils::parseLink(L"#/bin/x a", path, arguments));
    EXPECT_TEXT(L"", path);
    EXPECT_TEXT(L"", arguments);
}
