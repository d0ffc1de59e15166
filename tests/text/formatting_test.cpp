#include <cerrno>
#include <clocale>
#include <cwchar>
#include <memory>

#include <support/expect.h>

using namespace std::string_view_literals;

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
    int count = 0;  // checked functions end the program where the format numbers its arguments so
    EXPECT_CODE(PERR_OK, PUtils::pformatString(text, L"%2$d%3$n", 1, 2, &count));
    EXPECT_EQ(1, count);
}

TEST(Formatting, EmptiesTheOutputFirstWhereItIsTheFormat) {
    va_list none{};
    PString text(L"%%", 2);
    EXPECT_CODE(PERR_OK, PUtils::vformatString(text, PLiteral(L"%%"), none));
    EXPECT_TEXT(L"%", text);
    EXPECT_CODE(PERR_OK, PUtils::vformatString(text, text, none));
    EXPECT_TEXT(L"", text);
}

TEST(Formatting, GivesWhatOnePassWithItsRoomGives) {
    wchar_t const format[] = L"%m%ls%s|";
    PString text;
    for (std::size_t length : {0, 254, 255, 256, 2036, 2037, 2038, 2053, 2054, 2055, 9000})
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
    struct {
        char const* what;
        std::wstring_view text;
        wchar_t separator;
        int code;
        std::wstring_view key, value;
    } const rows[] = {
        {"trimmed", L" k \t=\r v ", L'=', PERR_OK, L"k", L"v"},
        {"a later separator", L"a=b=c", L'=', PERR_OK, L"a", L"b=c"},
        {"without a value", L"k=", L'=', PERR_OK, L"k", L""},
        {"without a key", L"=v", L'=', PERR_OK, L"", L"v"},
        {"another separator", L"k:v", L':', PERR_OK, L"k", L"v"},
        {"no separator", L"kv", L'=', PERR_NOT_FOUND, L"old", L"old"},
        {"no text", L"", L'=', PERR_NOT_FOUND, L"old", L"old"},
        {"behind a zero character", L"k\0=v"sv, L'=', PERR_NOT_FOUND, L"old", L"old"},
        {"a zero character", L"k\0v"sv, L'\0', PERR_OK, L"k", L"v"},
        {"the terminator", L"kv", L'\0', PERR_NOT_FOUND, L"old", L"old"},
        {"a value up to its first zero", L"k= v\0w"sv, L'=', PERR_OK, L"k", L"v"},
    };
    for (auto const& row : rows) {
        SCOPED_TRACE(row.what);
        PString const text(row.text.data(), row.text.size());
        PString key(L"old", 3), value(L"old", 3);
        EXPECT_CODE(row.code, PUtils::getKeyValue(text, key, value, row.separator));
        EXPECT_TEXT(row.key, key);
        EXPECT_TEXT(row.value, value);
    }
}

TEST(KeyAndValue, MayReplaceTheText) {
    PString text(L" k = v ", 7), other;
    EXPECT_CODE(PERR_OK, PUtils::getKeyValue(text, text, other, L'='));
    EXPECT_TEXT(L"k", text);
    EXPECT_TEXT(L"v", other);
    EXPECT_CODE(PERR_OK, PUtils::getKeyValue(PLiteral(L"k=v"), text, text, L'='));
    EXPECT_TEXT(L"v", text) << "one object for both";
}

TEST(Arguments, AreTextsOfWhichTheFirstIsAPair) {
    struct {
        char const *what, *path;
        wchar_t const* first;
    } const rows[] = {
        {"a path", "/bin/x", L"process.name=/bin/x"},
        {"a pair already", "p=q", L"p=q"},
        {"a path that cannot be converted", "\xff", L"process.name="},
        {"no path", nullptr, L"process.name="},
    };
    for (auto const& row : rows) {
        SCOPED_TRACE(row.what);
        char const* const list[] = {row.path, "a=1", "b", nullptr};
        Arguments const made(4, list);
        ASSERT_CODE(PERR_OK, made.code);
        ASSERT_EQ(4U, made.count);
        EXPECT_TEXT(row.first, made.texts[0]);
        EXPECT_TEXT(L"a=1", made.texts[1]);
        EXPECT_TEXT(L"b", made.texts[2]);
        EXPECT_TEXT(L"", made.texts[3]);
    }
}

TEST(Arguments, OfNoneAreAnArrayAllTheSame) {
    Arguments const none(0, nullptr);
    EXPECT_CODE(PERR_OK, none.code);
    EXPECT_NE(nullptr, none.texts);
    EXPECT_EQ(0U, none.count);

    Arguments const fewer(-1, nullptr);
    EXPECT_CODE(PERR_NO_MEMORY, fewer.code);
    EXPECT_EQ(nullptr, fewer.texts);
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
    EXPECT_EQ(nullptr, path.ptr());
    EXPECT_EQ(nullptr, arguments.ptr());
}
