#include <clocale>

#include <gtest/gtest.h>
#include <pwd.h>
#include <support/scratch.h>
#include <sys/resource.h>
#include <unistd.h>

#include "process/children.h"

namespace {

/// Joins arguments as they come in chunks of 255 bytes, one character at a time.
std::string _naiveJoin(std::vector<std::string> const& arguments) {
    std::string bytes, joined;
    for (auto const& argument : arguments) bytes += argument + '\0';
    std::size_t start = 0;
    for (std::size_t from = 0; from < bytes.size(); from += 255) {
        std::string const chunk = bytes.substr(from, 255);
        for (std::size_t i = 0; i < chunk.size(); ++i) {
            if (chunk[i] != '\0') continue;
            std::string const one = start < i ? chunk.substr(start, i - start) : "";
            char const* const quote = one.find(' ') == std::string::npos ? "" : "\"";
            joined += (joined.empty() ? "" : " ") + (quote + one) + quote;
            start = i + 1;
        }
    }
    return joined;
}

}  // namespace

TEST(ProcessFacts, TellWhatAChildWasStartedWith) {
    std::string const longValue = "LONG=" + std::string(300, 'v') + "\xC3\xA9";
    Child child({"first arg", "sleep", "60", "b c"}, {"A=1", "", "NO_VALUE", longValue, "Z=\t"});
    PString text;
    std::vector<PString> environment;
    std::vector<PString> const expected{owned("A=1"), owned(""), owned("NO_VALUE"),
                                        owned(longValue.substr(0, 305)), owned("Z=\t")};
    EXPECT_EQ(PERR_OK, PProcess::getPath(child.pid, text));
    EXPECT_EQ(wide(TEST_CHILD), text.ptr());
    EXPECT_EQ(PERR_OK, PProcess::getName(child.pid, text));
    EXPECT_STREQ(L"test_child", text);
    EXPECT_EQ(PERR_OK, PProcess::getCmdLine(child.pid, text));
    EXPECT_STREQ(L"\"first arg\" sleep 60 \"b c\"", text);
    EXPECT_EQ(PERR_OK, PProcess::getEnvironment(child.pid, environment));
    EXPECT_EQ(expected, environment);  // what the C locale cannot convert is dropped

    unsigned int parent = 0;
    int nice = 99;
    unsigned long long bytes = 0;
    EXPECT_EQ(PERR_OK, PProcess::getParentPID(child.pid, parent));
    EXPECT_EQ(PProcess::getCurrentPID(), parent);
    EXPECT_EQ(0, setpriority(PRIO_PROCESS, child.pid, 7));
    EXPECT_EQ(PERR_OK, PProcess::getPriority(child.pid, nice));
    EXPECT_EQ(7, nice);
    EXPECT_EQ(PERR_OK, PProcess::getMemoryUsage(child.pid, bytes));
    EXPECT_GT(bytes, 100U << 10);
    EXPECT_EQ(PERR_OK, PProcess::getUserName(child.pid, text));
    EXPECT_STREQ(L"root", text);  // whoever runs it
    EXPECT_EQ(PERR_OK, PProcess::getFreeMemory(bytes));
    EXPECT_GT(bytes, 1U << 20);
    EXPECT_EQ(PERR_OK, PProcess::getCurrentEnvironment(environment));
    EXPECT_FALSE(environment.empty());
}

TEST(ProcessFacts, CommandLinesAreCutInChunksOf255Bytes) {
    srand(4711);
    for (int round = 0; round < 40; ++round) {
        std::vector<std::string> arguments{"p", "sleep", "60"};
        for (int i = rand() % 40; i > 0; --i) {
            arguments.emplace_back(static_cast<std::size_t>(rand() % (i % 9 == 0 ? 300 : 20)), 'x');
            if (arguments.back().size() % 4 == 1) arguments.back()[0] = ' ';
        }
        Child child(arguments);
        PString text;
        EXPECT_EQ(PERR_OK, PProcess::getCmdLine(child.pid, text));
        EXPECT_EQ(wide(_naiveJoin(arguments)), text.ptr()) << "round " << round;
    }
}

TEST(ProcessFacts, AUserIsLookedUpOnlyForAProcessThatBearsTheKeyInItsName) {
    Scratch scratch;
    std::string const program = scratch.path("1uid");
    ASSERT_EQ(0, symlink(TEST_CHILD, program.c_str()));
    Child child({program, "sleep", "60"}, {}, program);
    passwd const* const account = getpwuid(1);
    PString name(L"kept", 4);
    EXPECT_EQ(PERR_OK, PProcess::getUserName(child.pid, name));
    EXPECT_EQ(wide(account == nullptr ? "kept" : account->pw_name), name.ptr());
}

TEST(ProcessFacts, MultibyteTextIsConvertedUnderTheLocale) {
    ASSERT_NE(nullptr, setlocale(LC_CTYPE, "C.UTF-8"));
    Child child({"\xC3\xA9", "sleep", "60"}, {"A=\xC3\xA9z"});
    std::vector<PString> environment;
    PString text;
    EXPECT_EQ(PERR_OK, PProcess::getEnvironment(child.pid, environment));
    EXPECT_EQ(std::vector<PString>{PLiteral(L"A=\xE9z")}, environment);
    EXPECT_EQ(PERR_OK, PProcess::getCmdLine(child.pid, text));
    EXPECT_EQ((std::wstring{L'\xE9', L'\0'} + L" sleep 60"), std::wstring(text.ptr(), text.len()));
    (void)setlocale(LC_CTYPE, "C");
}

TEST(ProcessFacts, AProcessThatIsGoneHasNone) {
    PProcess idle(L"/bin/idle", L"x"), ended(wide(TEST_CHILD).c_str(), L"exit 0");
    ASSERT_EQ(PERR_OK, ended.start());
    unsigned int gone = 0, parent = 7;
    std::vector<unsigned int> children;
    ASSERT_EQ(PERR_OK, PProcess::getChildPID(PProcess::getCurrentPID(), children));
    gone = children.back();
    int value = 7;
    EXPECT_EQ(PERR_OK, ended.waitExitCode(value));

    PString text(L"kept", 4);
    std::vector<PString> list{owned("kept")};
    unsigned long long bytes = 7;
    EXPECT_EQ(PERR_NOT_FOUND, PProcess::getPath(gone, text));
    EXPECT_EQ(PERR_NOT_FOUND, PProcess::getCmdLine(gone, text));
    EXPECT_EQ(PERR_NOT_FOUND, PProcess::getWorkingDir(gone, text));
    EXPECT_EQ(PERR_NOT_FOUND, PProcess::getUserName(gone, text));
    EXPECT_EQ(PERR_NO_PROCESS, idle.getName(text) | idle.getPath(text) | idle.getCmdLine(text) |
                                   idle.getWorkingDir(text) | idle.getPriority(value) |
                                   idle.getEnvironment(list) | idle.getMemoryUsage(bytes));
    EXPECT_STREQ(L"kept", text);
    EXPECT_EQ(0U, bytes);
    EXPECT_EQ(PERR_NOT_FOUND, PProcess::getName(gone, text));
    EXPECT_EQ(nullptr, text.ptr());
    EXPECT_EQ(PERR_NOT_FOUND, PProcess::getPriority(gone, value));
    EXPECT_EQ(PERR_NOT_FOUND, PProcess::getEnvironment(gone, list));
    EXPECT_TRUE(list.empty());
    EXPECT_EQ(PERR_NOT_FOUND, PProcess::getParentPID(gone, parent));
    EXPECT_EQ(0U, parent);
    EXPECT_EQ(PERR_NO_PROCESS, PProcess::getMemoryUsage(gone, bytes));
    EXPECT_EQ(PERR_OK, ended.getPath(text));  // the object's own data
    EXPECT_EQ(wide(TEST_CHILD), text.ptr());
    EXPECT_EQ(PERR_OK, ended.getCmdLine(text));
    EXPECT_STREQ(L"exit 0", text);
}
