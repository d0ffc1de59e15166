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

struct Arguments {
    std::unique_ptr<PString[]> texts;
    unsigned long count = 77;
    int code;

    Arguments(int argc, char const* const* argv) {
        PString* made = nullptr;
        code = PUtils::convertArgs(argc, const_cast<char**>(argv), made, count, L'=');
        texts.reset(made);
    }
};

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
    for (auto const& [path, first] : rows) {
        char const* const list[] = {path, "a=1", nullptr};
        Arguments const made(3, list);
        ASSERT_CODE(PERR_OK, made.code);
        ASSERT_EQ(3U, made.count);
        EXPECT_TEXT(first, made.texts[0]);
        EXPECT_TEXT(L"a=1", made.texts[1]);
        EXPECT_TEXT(L"", made.texts[2]);
    }
}

TEST(Arguments, OfANegativeCountAreRefused) {
    Arguments const fewer(-1, nullptr);
    EXPECT_CODE(PERR_NO_MEMORY, fewer.code);
    EXPECT_EQ(77U, fewer.count);
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
