#include <ctime>
#include <limits>
#include <random>
#include <sstream>

#include <sys/stat.h>

#include <fs/files.h>
#include <support/child_run.h>

/// Opens a file of the content for reading and writing lines.
static void _open(PFile& file, Scratch const& scratch, std::string const& content) {
    constexpr unsigned int BOTH = PFile::OPEN_READ | PFile::OPEN_WRITE;
    ASSERT_CODE(PERR_OK, file.popen(named(scratch.write("f", content)), BOTH, PFile::UNLOCKED));
}

TEST(FileLines, AreReadWithoutTheirEnds) {
    struct {
        char const* what;
        std::string content;
        wchar_t const *first, *second;  // null where there is no such line
    } const rows[] = {
        {"two lines", "a\nb\n", L"a", L"b"},
        {"no feed at the end", "a\nb", L"a", L"b"},
        {"carriage returns", "a\r\nb", L"a", L"b"},
        {"one within the line", "x\ry\n", L"xy", nullptr},
        {"an empty line", "\n", L"", nullptr},
        {"an empty file", "", nullptr, nullptr},
        {"nothing but carriage returns", "\r\r", nullptr, nullptr},
        {"a zero byte", std::string("a\0b\nc", 5), L"a", L"c"},
        {"bytes beyond ASCII", "\xe9\x80", L"\xffffffe9\xffffff80", nullptr},
    };
    for (auto const& row : rows) {
        SCOPED_TRACE(row.what);
        Scratch const scratch;
        PFile file;
        _open(file, scratch, row.content);
        for (wchar_t const* const expected : {row.first, row.second}) {
            PString line(L"untouched", P_WHOLE_STRING);
            EXPECT_CODE(expected != nullptr ? PERR_OK : PERR_END_OF_FILE, file.preadLine(line));
            EXPECT_TEXT(expected != nullptr ? expected : L"untouched", line);
        }
    }
}

TEST(FileLines, OfAnyLengthAndBytesAreThoseOfANaiveReader) {
    Scratch const scratch;
    std::mt19937 random(42);
    std::string content;
    for (int length = 0; length < 1100; ++length) {
        for (int i = 0; i < length; ++i) content += static_cast<char>(random() % 255 + 1);
        content += '\n';
    }
    PFile file;
    _open(file, scratch, content);
    std::istringstream model(content);
    for (std::string bytes; std::getline(model, bytes);) {
        std::wstring expected;
        for (char const byte : bytes)
            if (byte != '\r') expected += static_cast<signed char>(byte);
        PString line;
        ASSERT_CODE(PERR_OK, file.preadLine(line));
        ASSERT_TEXT(expected, line) << "seed 42";
    }
}

/// How much of the processor the reading of one line takes, at best.
static std::clock_t _timeToRead(unsigned long length) {
    Scratch const scratch;
    PString line;
    std::clock_t best = std::numeric_limits<std::clock_t>::max();
    for (int turn = 0; turn < 5; ++turn) {
        PFile file;
        _open(file, scratch, std::string(length, 'x'));
        std::clock_t const start = std::clock();
        EXPECT_CODE(PERR_OK, file.preadLine(line));
        best = std::min(best, std::clock() - start);
    }
    return best;
}

TEST(FileLines, CostInProportionToTheirLength) {
    EXPECT_LT(_timeToRead(1 << 20), 64 * _timeToRead(1 << 16)) << "for 16 times the length";
}

TEST(FileLines, AreWrittenAsMultibyteTextAndALineFeed) {
    struct {
        char const *what, *locale;
        wchar_t const* line;
        char const* bytes;
    } const rows[] = {
        {"ASCII", "C", L"abc", "abc\n"},
        {"nothing", "C", L"", "\n"},
        {"what the locale cannot express", "C", L"a\u00e9", "\n"},
        {"text cut at as many bytes as characters", "C.UTF-8", L"\u00e9a", "\xc3\xa9\n"},
    };
    for (auto const& row : rows) {
        SCOPED_TRACE(row.what);
        Scratch const scratch;
        Locale const locale(row.locale);
        PFile file;
        _open(file, scratch, "");
        EXPECT_CODE(PERR_OK, file.pwriteLine(row.line));
        EXPECT_EQ(row.bytes, scratch.read("f"));
    }
}

TEST(FileLines, EndAtTheFirstWriteThatIsRefused) {
    Scratch const scratch;
    PFile file;
    EXPECT_CODE(PERR_OK, file.popen(L"/dev/full", PFile::OPEN_WRITE, PFile::UNLOCKED));
    EXPECT_CODE(PERR_WRITE, file.pwriteLine(L"x"));
    EXPECT_CODE(PERR_WRITE, file.pwriteLine(L"")) << "the line feed itself";
}

TEST(FileLines, OfAPipeLoseWhatFollowsAndEndWhereASignalComes) {
    Scratch const scratch;
    unsigned long done = 0;
    PString line;
    PFile file;
    EXPECT_EQ(0, mkfifo(scratch.path("f").c_str(), 0600));
    ASSERT_CODE(PERR_OK, file.popen(named(scratch.path("f")), 3, PFile::UNLOCKED));
    EXPECT_CODE(PERR_OK, file.pwrite("one\nlost\n", 9, done));
    EXPECT_CODE(PERR_OK, file.preadLine(line));
    EXPECT_TEXT(L"one", line);
    EXPECT_CODE(PERR_READ, interrupted([&] { return file.preadLine(line); }));

    EXPECT_CODE(PERR_OK, file.pwrite("two", 3, done));
    EXPECT_CODE(PERR_OK, interrupted([&] { return file.preadLine(line); }));
    EXPECT_TEXT(L"two", line) << "a failure behind it ends it";
}
