#include <clocale>
#include <memory>
#include <random>
#include <sstream>

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <portinglayer/files.h>
#include <support/scratch.h>

/// What the lines of a content are by the rules.
static std::vector<std::wstring> _model(std::string const& content) {
    std::vector<std::wstring> lines;
    std::istringstream in(content);
    for (std::string line; std::getline(in, line);) {
        std::erase(line, '\r');
        if (in.eof() && line.empty()) break;
        std::wstring chars;
        for (char const byte : line) chars += static_cast<signed char>(byte);
        lines.emplace_back(chars.c_str());  // cut at a zero byte
    }
    return lines;
}

TEST(FileLines, ComeAsTheModelSays) {
    Scratch scratch;
    std::mt19937 random(4711);
    std::string const bytes("ab\r\n\n\xe9z\0", 8);
    for (int round = 0; round < 300; ++round) {
        std::string content;
        for (auto left = random() % 40; left > 0; --left)
            content.append(random() % 4 == 0 ? random() % 300 : 1, bytes[random() % bytes.size()]);
        scratch.write("f", content);
        PFile file;
        ASSERT_EQ(file.popen(scratch.wpath("f").c_str(), PFile::OPEN_READ, 1), PERR_OK);
        std::vector<std::wstring> lines;
        PString line;
        int result = PERR_OK;
        while ((result = file.preadLine(line)) == PERR_OK) lines.emplace_back(line.ptr());
        ASSERT_EQ(result, PERR_END_OF_FILE);
        ASSERT_EQ(lines, _model(content)) << "seed 4711, round " << round;
    }
}

TEST(FileLines, AreWrittenAsTheirMultibyteText) {
    Scratch scratch;
    std::mt19937 random(42);
    wchar_t const signs[] = L"azAZ09 ~}{|\\/\x7f\x1f\u00e9\u20ac\U0001f600";
    std::string expected;
    PFile file;
    ASSERT_EQ(file.popen(scratch.wpath("f").c_str(), 18, 1), PERR_OK);
    for (int round = 0; round < 4000; ++round) {
        ASSERT_NE(std::setlocale(LC_CTYPE, round % 2 == 0 ? "C.UTF-8" : "C"), nullptr);
        std::wstring line;
        for (auto left = random() % 40 * (round % 50 == 0 ? 20 : 1); left > 0; --left)
            line += signs[random() % (round % 3 == 0 ? 18 : 11)];
        std::unique_ptr<char[]> const narrow(PLiteral(line.c_str()).ascii());
        expected += std::string(narrow ? narrow.get() : "") + "\n";
        ASSERT_EQ(file.pwriteLine(line.c_str()), PERR_OK);
    }
    std::setlocale(LC_CTYPE, "C");
    EXPECT_TRUE(scratch.read("f") == expected) << "seed 42";
}

TEST(FileLines, LoseWhatFollowsThemInAPipe) {
    Scratch scratch;
    ASSERT_EQ(mkfifo(scratch.path("pipe").c_str(), 0600), 0);
    PString line;
    PFile file;
    ASSERT_EQ(file.popen(scratch.wpath("pipe").c_str(), 3, 1), PERR_OK);
    for (wchar_t const* const text : {L"one", L"three"}) {
        EXPECT_TRUE(file.pwriteLine(text) == PERR_OK && file.pwriteLine(L"lost") == PERR_OK);
        EXPECT_EQ(file.preadLine(line), PERR_OK);
        EXPECT_EQ(line, text);
    }
}
