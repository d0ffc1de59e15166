#include <clocale>

#include <sys/stat.h>

#include <fs/files.h>

/// Opens a file of the content for reading and writing lines.
static void _open(PFile& file, Scratch const& scratch, std::string const& content) {
    PString const name = named(scratch.write("f", content));
    ASSERT_CODE(PERR_OK, file.popen(name, READ | WRITE, PFile::UNLOCKED));
}

using FileLines = InAFolder;

TEST_F(FileLines, AreReadWithoutTheirEnds) {
    struct {
        char const* what;
        std::string content;
        wchar_t const *first, *second;  // null where there is no such line
    } const rows[] = {
        {"carriage returns, no feed at the end", "a\r\nb", L"a", L"b"},
        {"an empty line", "\n", L"", nullptr},
        {"an empty file", "", nullptr, nullptr},
        {"nothing but carriage returns", "\r\r", nullptr, nullptr},
        {"a zero byte", std::string("a\0b\nc", 5), L"a", L"c"},
    };
    for (auto const& row : rows) {
        SCOPED_TRACE(row.what);
        PFile opened;
        _open(opened, scratch, row.content);
        for (wchar_t const* const expected : {row.first, row.second}) {
            PString line(L"untouched", P_WHOLE_STRING);
            EXPECT_CODE(expected != nullptr ? PERR_OK : PERR_END_OF_FILE, opened.preadLine(line));
            EXPECT_TEXT(expected != nullptr ? expected : L"untouched", line);
        }
    }
}

TEST_F(FileLines, OfAnyLengthComeWhole) {
    std::string content;
    for (unsigned long length = 0; length < 1100; ++length)
        content += std::string(length, '\xe9') + "\n";
    _open(file, scratch, content);
    for (unsigned long length = 0; length < 1100; ++length) {
        ASSERT_CODE(PERR_OK, file.preadLine(text));
        ASSERT_TEXT(std::wstring(length, L'\xffffffe9'), text) << "bytes with their sign";
    }
}

TEST_F(FileLines, AreWrittenAsMultibyteTextAndALineFeed) {
    _open(file, scratch, "");
    EXPECT_CODE(PERR_OK, file.pwriteLine(L"a\u00e9")) << "what the locale cannot express";
    EXPECT_EQ("\n", scratch.read("f"));
    ASSERT_NE(nullptr, std::setlocale(LC_CTYPE, "C.UTF-8"));
    EXPECT_CODE(PERR_OK, file.pwriteLine(L"\u00e9\u00e9\u00e9"));
    EXPECT_EQ("\n\xc3\xa9\n", scratch.read("f")) << "cut at as many bytes as characters";
    (void)std::setlocale(LC_CTYPE, "C");
}

TEST_F(FileLines, OfAPipeLoseWhatFollows) {
    EXPECT_EQ(0, mkfifo(scratch.path("f").c_str(), 0600));
    ASSERT_CODE(PERR_OK, file.popen(named(scratch.path("f")), READ | WRITE, PFile::UNLOCKED));
    EXPECT_CODE(PERR_OK, file.pwrite("one\nlost\n", 9, done));
    EXPECT_CODE(PERR_OK, file.preadLine(text));
    EXPECT_TEXT(L"one", text);
}
