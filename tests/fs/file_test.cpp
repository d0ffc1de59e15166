#include <clocale>
#include <csignal>
#include <map>
#include <memory>
#include <random>
#include <sstream>

#include <fcntl.h>
#include <fnmatch.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <portinglayer/files.h>
#include <support/child_run.h>
#include <support/interrupted.h>
#include <support/scratch.h>

TEST(FileHandle, OpensByItsModeBits) {
    Scratch scratch;
    std::map<unsigned int, int> const modes{
        {0, O_RDONLY},  {64 + 3, O_RDWR}, {4, O_RDONLY | O_APPEND},
        {10, O_WRONLY}, {16, O_RDONLY},   {24, O_RDONLY}};
    for (auto const& [flags, access] : modes) {
        SCOPED_TRACE(flags);
        std::wstring const path = wide(scratch.write("f", "old"));
        int const descriptor = dup(0);  // and free again, for the file to get it
        (void)close(descriptor);
        PFile file;
        ASSERT_EQ(file.popen(path.c_str(), flags, 1), PERR_OK);
        EXPECT_EQ(fcntl(descriptor, F_GETFL) & (O_ACCMODE | O_APPEND), access);
        EXPECT_EQ(fcntl(descriptor, F_GETFD), FD_CLOEXEC);
        EXPECT_EQ(scratch.read("f"), (flags & PFile::OPEN_TRUNCATE) != 0 ? "" : "old");
    }
    PFile file;
    for (auto const& [flags, share] : {std::pair(8U, 1U), {33U, 0U}, {32U, 1U}})
        EXPECT_EQ(file.popen(scratch.wpath("f").c_str(), flags, share), PERR_INVALID_ARGUMENT);
    EXPECT_EQ(file.popen(L"", 1, 1), PERR_INVALID_ARGUMENT);
    EXPECT_EQ(file.popen(scratch.wpath("none/f").c_str(), 32, 0), PERR_NO_SUCH_FILE);
    EXPECT_EQ(file.popen(L"/tmp/\u00e9", 16, 1), PERR_OPEN) << "not in the C locale";
}

TEST(FileHandle, ReadsWritesAndSeeks) {
    Scratch scratch;
    char at[8] = {};
    unsigned long done = 77;
    long long size = 0;
    PString line(L"kept", 4);
    PFile file, memory;
    EXPECT_EQ(file.pread(nullptr, 1, done), PERR_INVALID_ARGUMENT) << "even if closed";
    for (int const code : {file.pread(at, 1, done), file.pwrite(at, 1, done), file.pflush(),
                           file.pseek(0, 0), file.pgetSize(size), file.pgetName(line),
                           file.preadLine(line), file.pwriteLine(line), file.pclose()})
        EXPECT_EQ(code, PERR_NOT_OPEN);
    ASSERT_EQ(file.popen(wide(scratch.write("f", "hello")).c_str(), 3, 1), PERR_OK);
    EXPECT_EQ(file.pwrite(at, 0, done), PERR_END_OF_FILE);
    EXPECT_EQ(file.pseek(-1, 0), PERR_SEEK);
    EXPECT_TRUE(done == 77 && line == L"kept") << "failures leave outputs alone";
    EXPECT_TRUE(file.pseek(-2, 2) == PERR_OK && file.pread(at, sizeof at, done) == PERR_OK);
    EXPECT_TRUE(std::string(at, done) == "lo" && file.pgetSize(size) == PERR_OK && size == 5);
    EXPECT_EQ(memory.popen(L"/proc/self/mem", 1, 1), PERR_OK);
    EXPECT_EQ(memory.pseek(-(1LL << 47), 0), PERR_OK) << "unsigned there, and no failure";
}

TEST(FileLines, AreWrittenAsMultibyteTextAndReadAsSignedBytes) {
    Scratch scratch;
    std::mt19937 random(42);
    std::string content;
    PString line;
    PFile file;
    ASSERT_EQ(file.popen(scratch.wpath("f").c_str(), 27, 1), PERR_OK);
    for (int round = 0; round < 4000; ++round) {
        (void)std::setlocale(LC_CTYPE, round % 2 == 0 ? "C.UTF-8" : "C");
        std::wstring text;
        auto const kinds = round % 3 == 0 ? 15U : 13U, most = round % 9 == 0 ? 600U : 20U;
        for (auto left = random() % most; left > 0; --left)
            text += L"az ~}{|\\/\x7f\x1f\r\n\u00e9\u6f22"[random() % kinds];
        std::unique_ptr<char[]> const narrow(PLiteral(text.c_str()).ascii());
        content += std::string(narrow ? narrow.get() : "") + "\n";
        EXPECT_EQ(file.pwriteLine(text.c_str()), PERR_OK);
    }
    ASSERT_EQ(scratch.read("f"), content);
    std::istringstream model(content + std::string("cut\0off\nno feed\r", 16));
    scratch.write("f", model.str());
    EXPECT_EQ(file.pseek(0, 0), PERR_OK);
    for (std::string bytes; std::getline(model, bytes);) {
        std::wstring chars;
        for (char const byte : bytes)
            if (byte != '\r') chars += static_cast<signed char>(byte);
        ASSERT_EQ(file.preadLine(line), PERR_OK);
        ASSERT_EQ(line, chars.c_str()) << "seed 42";  // a zero byte cuts it
    }
    EXPECT_EQ(file.preadLine(line), PERR_END_OF_FILE);
}

TEST(FileLines, LoseWhatFollowsThemInAPipeWhereSignalsEndTheWait) {
    Scratch scratch;
    std::wstring const name = scratch.wpath("pipe");
    std::string const much(1 << 20, 'x');
    unsigned long done = 0;
    PString line;
    PFile file;
    ASSERT_EQ(mkfifo(scratch.path("pipe").c_str(), 0600), 0);
    EXPECT_EQ(interrupted([&] { return file.popen(name.c_str(), 1, 1); }), PERR_OPEN);
    ASSERT_EQ(file.popen(name.c_str(), 3, 1), PERR_OK);
    ASSERT_EQ(file.pwrite("one\nlost\n", 9, done), PERR_OK);
    EXPECT_TRUE(file.preadLine(line) == PERR_OK && line == L"one");
    EXPECT_EQ(interrupted([&] { return file.preadLine(line); }), PERR_READ);
    EXPECT_EQ(interrupted([&] { return file.pwrite(much.data(), much.size(), done); }), PERR_OK);
    EXPECT_LT(done, much.size()) << "no more than there was room for";
    EXPECT_EQ(interrupted([&] { return file.pwriteLine(L"x"); }), PERR_WRITE);
}

TEST(FilesUnderLoad, LoseNoUpdateIfExclusiveAndAreSeenWholeIfSafe) {
    Scratch scratch;
    std::wstring const number = wide(scratch.write("number", "")), safe = scratch.wpath("safe");
    auto const replace = [&](char sign, int signal) {
        PFile file;
        (void)file.popen(safe.c_str(), PFile::OPEN_SAFE_WRITE, 0);
        (void)file.pwriteLine(std::wstring(5000, sign).c_str());  // in two writes
        return raise(signal) + file.pclose();
    };
    EXPECT_EQ(replace('o', 0), PERR_OK);
    ChildRun killed([&] { return replace('k', SIGKILL); });
    std::string const sibling = "safe.talv_temp-" + std::to_string(killed.pid) + "-[0-9]*[0-9]";
    EXPECT_EQ(killed.wait(), -SIGKILL);
    std::vector<ChildRun> children;
    for (char const sign : {'a', 'b', 'c', 'd', 'e', 'f'})
        children.emplace_back([&] {
            for (int turn = 0; turn < 20; ++turn) {
                unsigned long done = 0;
                char count = 0;
                PFile file;
                while (file.popen(number.c_str(), 3, 0) == PERR_LOCKED)
                    if (file.pclose() + replace(sign, 0) != PERR_OK) return 1;
                (void)file.pread(&count, 1, done);  // nothing at the very first
                (void)usleep(500);
                ++count;
                if (file.pseek(0, 0) + file.pwrite(&count, 1, done) != PERR_OK) return 2;
            }
            return 0;
        });
    EXPECT_TRUE(eventually([&] {
        std::string const content = scratch.read("safe");
        EXPECT_TRUE(content == std::string(5000, content[0]) + "\n" && content[0] != 'k');
        return scratch.read("number")[0] == 6 * 20;
    })) << "an update was lost";
    for (ChildRun& child : children) EXPECT_EQ(child.wait(), 0);
    ASSERT_EQ(scratch.names().size(), 3U) << "both files, and what the killed one left";
    EXPECT_EQ(fnmatch(sibling.c_str(), scratch.names()[2].c_str(), 0), 0) << scratch.names()[2];
}
