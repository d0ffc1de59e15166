#include <random>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <portinglayer/files.h>
#include <support/scratch.h>

namespace {

/// What the lines of a content are by the rules, read byte by byte.
std::vector<std::wstring> _model(std::string const& content) {
    std::vector<std::wstring> lines;
    std::wstring line;
    bool any = false;
    auto const finish = [&] {
        lines.push_back(line.substr(0, line.find(L'\0')));
        line.clear();
    };
    for (char const byte : content) {
        any = byte != '\r' && byte != '\n' ? true : any;
        if (byte == '\n') {
            finish();
            any = false;
        } else if (byte != '\r') {
            line += static_cast<wchar_t>(static_cast<signed char>(byte));
        }
    }
    if (any) finish();
    return lines;
}

std::vector<std::wstring> _readLines(PFile& file) {
    std::vector<std::wstring> lines;
    PString line;
    int result = PERR_OK;
    while ((result = file.preadLine(line)) == PERR_OK) lines.emplace_back(line.ptr());
    EXPECT_EQ(result, PERR_END_OF_FILE);
    return lines;
}

}  // namespace

TEST(FileLines, ComeAsTheModelSays) {
    Scratch scratch;
    std::mt19937 random(4711);
    std::string const bytes = "ab\r\n\n\xe9z";
    for (int round = 0; round < 300; ++round) {
        std::string content;
        for (auto left = random() % 40; left > 0; --left) {
            content.append(random() % 4 == 0 ? random() % 300 : 1, bytes[random() % bytes.size()]);
            if (random() % 100 == 0) content += '\0';
        }
        if (round == 0) content = "a\r\nx\ry\n\nb\0c\n\xe9" + std::string(127, 'd') + "\n\r";
        scratch.write("f", content);
        PFile file;
        ASSERT_EQ(file.popen(scratch.wpath("f").c_str(), PFile::OPEN_READ, 1), PERR_OK);
        ASSERT_EQ(_readLines(file), _model(content)) << "seed 4711, round " << round;
    }
}

TEST(FileLines, FailureLeavesTheLineAlone) {
    Scratch scratch;
    PString line(L"kept", 4);
    PFile file;
    EXPECT_EQ(file.preadLine(line), PERR_NOT_OPEN);
    EXPECT_EQ(file.pwriteLine(L"x"), PERR_NOT_OPEN);
    ASSERT_EQ(file.popen(scratch.wpath("").c_str(), PFile::OPEN_READ, 1), PERR_OK);
    EXPECT_EQ(file.preadLine(line), PERR_READ) << "a folder cannot be read";
    EXPECT_EQ(line, L"kept");
}

TEST(FileLines, PipeLosesWhatFollowsTheLineFeed) {
    Scratch scratch;
    ASSERT_EQ(mkfifo(scratch.path("pipe").c_str(), 0600), 0);
    int const writer = open(scratch.path("pipe").c_str(), O_RDWR | O_CLOEXEC);
    PString line;
    PFile file;
    ASSERT_EQ(file.popen(scratch.wpath("pipe").c_str(), PFile::OPEN_READ, 1), PERR_OK);
    ASSERT_EQ(write(writer, "one\ntwo\n", 8), 8);
    EXPECT_EQ(file.preadLine(line), PERR_OK);
    EXPECT_EQ(line, L"one");
    ASSERT_EQ(write(writer, "three\n", 6), 6);
    EXPECT_EQ(file.preadLine(line), PERR_OK);
    EXPECT_EQ(line, L"three");
    (void)close(writer);
}

TEST(FileLines, AreWrittenWithALineFeed) {
    Scratch scratch;
    PFile file;
    ASSERT_EQ(file.popen(scratch.wpath("f").c_str(), PFile::OPEN_WRITE | PFile::OPEN_CREATE, 1),
              PERR_OK);
    for (wchar_t const* const line : {L"one", L"", L"\u00e9", L"two\r"})
        EXPECT_EQ(file.pwriteLine(line), PERR_OK);
    EXPECT_EQ(scratch.read("f"), "one\n\n\ntwo\r\n");
}
