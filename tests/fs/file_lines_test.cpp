#include <clocale>

#include <sys/stat.h>

#include <fs/files.h>

using Lines = std::vector<std::wstring>;

class FileLines : public InAFolder {
protected:
    void open(std::string const& content) {
        PString const name = named(scratch.write("f", content));
        ASSERT_CODE(PERR_OK, file.popen(name, READ | WRITE, PFile::UNLOCKED));
    }
    Lines linesOf(std::string const& content) {
        Lines lines;
        open(content);
        while (file.preadLine(text) == PERR_OK) lines.emplace_back(view(text));
        EXPECT_CODE(PERR_END_OF_FILE, file.preadLine(text));
        EXPECT_CODE(PERR_OK, file.pclose());
        return lines;
    }
};

TEST_F(FileLines, AreReadWithoutTheirEnds) {
    EXPECT_EQ((Lines{L"a", L"b"}), linesOf("a\r\nb"));
    EXPECT_TEXT(L"b", text) << "left alone at the end";
    EXPECT_EQ(Lines{L""}, linesOf("\n"));
    EXPECT_EQ(Lines{}, linesOf(""));
    EXPECT_EQ(Lines{}, linesOf("\r\r")) << "nothing but carriage returns";
    EXPECT_EQ((Lines{L"a", L"c"}), linesOf(std::string("a\0b\nc", 5))) << "a zero byte";
}

TEST_F(FileLines, OfAnyLengthComeWhole) {
    std::string content;
    Lines lines;
    for (unsigned long length = 0; length < 1100; ++length) {
        content += std::string(length, '\xe9') + "\n";
        lines.emplace_back(length, L'\xffffffe9');  // bytes with their sign
    }
    EXPECT_TRUE(lines == linesOf(content));
}

TEST_F(FileLines, AreWrittenAsMultibyteTextAndALineFeed) {
    open("");
    EXPECT_CODE(PERR_OK, file.pwriteLine(L"a\u00e9")) << "what the locale cannot express";
    EXPECT_EQ("\n", scratch.read("f"));
    ASSERT_NE(nullptr, std::setlocale(LC_CTYPE, "C.UTF-8"));
    EXPECT_CODE(PERR_OK, file.pwriteLine(L"\u00e9\u00e9\u00e9"));
    EXPECT_EQ("\n\xc3\xa9\n", scratch.read("f")) << "cut at as many bytes as characters";
    (void)std::setlocale(LC_CTYPE, "C");
}

TEST_F(FileLines, OfAnyLengthAreWrittenWhole) {
    std::string content;
    open("");
    for (unsigned long const length : {511UL, 512UL, 5000UL}) {
        EXPECT_CODE(PERR_OK, file.pwriteLine(std::wstring(length, L'x').c_str()));
        content += std::string(length, 'x') + "\n";
    }
    EXPECT_EQ(content, scratch.read("f"));
}

TEST_F(FileLines, OfAPipeLoseWhatFollows) {
    EXPECT_EQ(0, mkfifo(scratch.path("f").c_str(), 0600));
    ASSERT_CODE(PERR_OK, file.popen(named(scratch.path("f")), READ | WRITE, PFile::UNLOCKED));
    EXPECT_CODE(PERR_OK, file.pwrite("one\nlost\n", 9, done));
    EXPECT_CODE(PERR_OK, file.preadLine(text));
    EXPECT_TEXT(L"one", text);
}
