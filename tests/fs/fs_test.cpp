#include <clocale>
#include <map>
#include <memory>
#include <random>
#include <set>
#include <sstream>

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <faults/interpose.h>
#include <portinglayer/files.h>
#include <portinglayer/libraries.h>
#include <support/child_run.h>
#include <support/scratch.h>

namespace fs = std::filesystem;

using Codes = std::vector<int>;

static int refusal = -1;  // errno of renames and locks; 0 lets a lock be taken; -1 leaves them be
static int drawn = 7;     // what the generator gives

INTERPOSE(rename, if (refusal >= 0) return errno = refusal, -1)
INTERPOSE(flock, if (refusal >= 0) return errno = refusal, refusal == 0 ? 0 : -1)
INTERPOSE(rand, return drawn)

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
        EXPECT_EQ(file.popen(path.c_str(), flags, 1), PERR_OK);
        EXPECT_EQ(fcntl(descriptor, F_GETFL) & (O_ACCMODE | O_APPEND), access);
        EXPECT_EQ(scratch.read("f"), (flags & PFile::OPEN_TRUNCATE) != 0 ? "" : "old");
    }
    for (auto const& [flags, share] : {std::pair(8U, 1U), {33U, 0U}, {32U, 1U}})
        EXPECT_EQ(PFile().popen(L"/dev/null", flags, share), PERR_INVALID_ARGUMENT) << flags;
}

TEST(FileLines, AreWrittenAsMultibyteTextAndReadAsSignedBytes) {
    Scratch scratch;
    std::mt19937 random(42);
    std::string content;
    unsigned long done = 77;
    long long size = 0;
    PString line;
    PFile file, memory;
    for (int i = 0; i < 100'000; ++i)
        content += random() % 90 == 0 ? '\n' : static_cast<char>(random());
    scratch.write("f", content + "no feed\r");
    EXPECT_EQ(file.popen(scratch.wpath("f").c_str(), 3, 1), PERR_OK);
    for (char const* const locale : {"C.UTF-8", "C"}) {  // cut there; not in this one
        (void)std::setlocale(LC_CTYPE, locale);
        EXPECT_EQ(file.pwriteLine(L"\u00e9a"), PERR_OK);
    }
    EXPECT_EQ((Codes{file.pread(nullptr, 1, done), file.pwrite("", 0, done), file.pseek(-1, 0),
                     file.pgetSize(size), file.pseek(0, 0)}),
              (Codes{PERR_INVALID_ARGUMENT, PERR_END_OF_FILE, PERR_SEEK, PERR_OK, PERR_OK}));
    EXPECT_TRUE(done == 77 && size == 100'008);
    std::istringstream model("\xc3\xa9\n\n" + scratch.read("f").substr(4));
    for (std::string bytes; std::getline(model, bytes);) {
        std::wstring chars;
        for (char const byte : bytes)
            if (byte != '\r') chars += static_cast<signed char>(byte);
        ASSERT_EQ(file.preadLine(line), PERR_OK);
        ASSERT_EQ(line, chars.c_str()) << "seed 42";  // a zero byte cuts it
    }
    EXPECT_EQ(file.preadLine(line), PERR_END_OF_FILE);
    EXPECT_EQ(memory.popen(L"/proc/self/mem", 1, 1), PERR_OK);
    EXPECT_EQ(memory.pseek(-(1LL << 47), 0), PERR_OK) << "unsigned there, and no failure";
}

TEST(FileLines, LoseWhatFollowsThemInAPipeWhereSignalsEndTheWait) {
    Scratch scratch;
    std::wstring const name = scratch.wpath("pipe");
    std::string const much(1 << 20, 'x');
    unsigned long done = 0;
    PString line;
    PFile file;
    EXPECT_EQ(mkfifo(scratch.path("pipe").c_str(), 0600), 0);
    EXPECT_EQ(interrupted([&] { return file.popen(name.c_str(), 1, 1); }), PERR_OPEN);
    ASSERT_EQ(file.popen(name.c_str(), 3, 1), PERR_OK);
    EXPECT_EQ(file.pwrite("one\nlost\n", 9, done), PERR_OK);
    EXPECT_TRUE(file.preadLine(line) == PERR_OK && line == L"one");
    EXPECT_EQ(interrupted([&] { return file.preadLine(line); }), PERR_READ);
    EXPECT_EQ(interrupted([&] { return file.pwrite(much.data(), much.size(), done); }), PERR_OK);
    EXPECT_EQ(interrupted([&] { return file.pwriteLine(L"x"); }), PERR_WRITE);
}

TEST(FilesUnderLoad, LoseNoUpdateIfExclusiveAndAreSeenWholeIfSafe) {
    Scratch scratch;
    std::wstring const number = wide(scratch.write("number", "")), safe = scratch.wpath("safe");
    auto const replace = [&](char sign) {
        PFile file;
        (void)file.popen(safe.c_str(), PFile::OPEN_SAFE_WRITE, 0);
        (void)file.pwriteLine(std::wstring(5000, sign).c_str());  // in two writes
        return file.pclose();
    };
    EXPECT_EQ(replace('o'), PERR_OK);
    std::vector<ChildRun> children;
    for (char const sign : {'a', 'b', 'c', 'd', 'e', 'f'})
        children.emplace_back([&] {
            for (int turn = 0; turn < 20; ++turn) {
                unsigned long done = 0;
                char count = 0;
                PFile file;
                while (file.popen(number.c_str(), 3, 0) == PERR_LOCKED)
                    if (file.pclose() + replace(sign) != PERR_OK) return 1;
                (void)file.pread(&count, 1, done);  // nothing at the very first
                (void)usleep(500);
                ++count;
                if (file.pseek(0, 0) + file.pwrite(&count, 1, done) != PERR_OK) return 2;
            }
            return 0;
        });
    EXPECT_TRUE(eventually([&] {
        std::string const content = scratch.read("safe");
        EXPECT_EQ(content, std::string(5000, content[0]) + "\n");
        return scratch.read("number")[0] == 6 * 20;
    })) << "an update was lost";
    for (ChildRun& child : children) EXPECT_EQ(child.wait(), 0);
}

TEST(FileFaults, RenameTellsTheReasonByItsTable) {
    std::map<int, int> codes{{ENOENT, PERR_NOT_FOUND}};
    for (int const error : {EIO, EMLINK, ENAMETOOLONG, ELOOP}) codes[error] = PERR_IO;
    for (int const error :
         {EPERM, EBUSY, EEXIST, EXDEV, ENOTDIR, EISDIR, EINVAL, ENOSPC, EROFS, ENOTEMPTY})
        codes[error] = PERR_REFUSED;
    for (refusal = 1; refusal < 134; ++refusal)
        EXPECT_EQ(PFile::rename(L"a", L"b"), codes.contains(refusal) ? codes[refusal] : PERR_SYSTEM)
            << refusal;
    refusal = -1;
}

TEST(FileFaults, RefusedLocksLeaveHandlesHalfOpenAndRefusedMovesTheSibling) {
    for (auto const& [error, code] :
         {std::pair(EAGAIN, PERR_LOCKED), {ENOLCK, PERR_OPEN}, {0, PERR_OK}}) {
        SCOPED_TRACE(error);
        Scratch scratch;
        std::wstring const path = scratch.wpath("f");
        PString name;
        PFile file;
        refusal = error;
        EXPECT_EQ(file.popen(path.c_str(), PFile::OPEN_SAFE_WRITE, 0), code);
        EXPECT_EQ(file.popen(path.c_str(), PFile::OPEN_SAFE_WRITE, 0), PERR_ALREADY_OPEN);
        EXPECT_TRUE(file.pgetName(name) == PERR_OK && name == (error == 0 ? path.c_str() : L""));
        refusal = ENOENT;  // which a rename itself would tell
        EXPECT_EQ(file.pclose(), error == 0 ? PERR_SYSTEM : PERR_OK) << "nothing to move";
        PDir siblings(scratch.wpath("").c_str(), L"f.talv_temp-[1-9]*-*[0-9]");
        EXPECT_EQ(siblings.preaddir(), PERR_OK) << "it is left where it was";
        refusal = -1;
    }
}

TEST(FileFaults, TemporaryNamesEndInANumberThatFitsItsRoom) {
    Scratch scratch;
    std::wstring const prefix = scratch.wpath("\\job");
    PTempFile file, second;
    for (int const number : {0, 2, 3, 9, 10, 99, 100, 238327, 238328, 2147483647, 7}) {
        drawn = number;
        std::unique_ptr<wchar_t[]> const made(PTempFile().getRandStr());
        EXPECT_EQ(made.get(), std::to_wstring(number % 238328));
        EXPECT_EQ(PSystem::getRandom(5, 10), number == 2147483647 ? 15 : 5);
    }
    EXPECT_EQ((Codes{file.popen(prefix.c_str(), 18, 0), second.popen(prefix.c_str(), 18, 0)}),
              (Codes{PERR_OK, PERR_OPEN}));  // taken at each attempt
    EXPECT_EQ((Codes{file.PFile::pclose(), file.popen(L"x", 18, 0), file.pclose(),
                     file.popen(L"", 18, 0)}),  // closed as another class, it isn't free
              (Codes{PERR_OK, PERR_ALREADY_OPEN, PERR_NOT_OPEN, PERR_INVALID_ARGUMENT}));
}

TEST(Directories, AreMadeListedAndRemovedInTheirStates) {
    Scratch scratch;
    std::wstring const top = scratch.wpath("d"), sub = scratch.wpath("d/sub");
    PLiteral const path(top.c_str()), below(sub.c_str());
    PDir dir;
    errno = 0;
    EXPECT_EQ((Codes{PDir::pcreate(below), PDir::pcreate(path)}),
              (Codes{PERR_DIR_CREATE, PERR_OK}));
    errno = EEXIST;
    EXPECT_EQ(PDir::pcreate(below), PERR_DIR_EXISTS) << "made, but errno is the old one";
    EXPECT_EQ(dir.popen(L"\\tmp", L"s?b"), PERR_DIR_NOT_OPEN);
    EXPECT_EQ(dir.popen(path, L"*"), PERR_OK) << "with the first pattern";
    EXPECT_EQ(++dir, PERR_DIR_NOT_OPEN) << "no first name yet";
    EXPECT_EQ((Codes{dir.preaddir(), dir.popen(L"/tmp", L""), dir++}),
              (Codes{PERR_OK, PERR_DIR_ALREADY_OPEN, PERR_READ}));
    EXPECT_TRUE(dir.getEntry() == L"sub" && !(dir != PERR_READ)) << "the last name stays";
    scratch.write("d/\xc3\xa9", "");  // not in the C locale, and no end of the listing
    for (auto const& [pattern, second] :
         {std::pair(L"s*b*", PERR_READ), {L"[!.]*", PERR_CONVERSION}}) {
        PDir found(path, pattern);
        EXPECT_EQ((std::multiset{found.preaddir(), found.preaddir(), found.preaddir()}),
                  (std::multiset{PERR_OK, second, PERR_READ}))
            << pattern;
    }
    EXPECT_TRUE(dir.pclose() == PERR_OK && dir.getEntry().len() == 0 && dir == PERR_OK);
    EXPECT_EQ((Codes{PDir::pdelete(path), PDir::pdelete(below), PDir::pdelete(below)}),
              (Codes{PERR_DIR_DELETE, PERR_OK, PERR_DIR_NOT_FOUND}));
}

TEST(Files, AreToldApartMovedAndDeleted) {
    Scratch scratch;
    fs::create_symlink(scratch.dir(), scratch.path("link"));
    std::wstring const file = wide(scratch.write("file", "content")), to = scratch.wpath("\\moved");
    std::map<std::wstring, std::set<int>> const kinds{{file, {0}},
                                                      {scratch.wpath("link"), {1}},
                                                      {L"\\dev\\null", {2}},
                                                      {L"/tmp/\u00e9", {0, 1, 2}}};
    for (auto const& [name, expected] : kinds) {
        EXPECT_EQ(PFile::exists(name.c_str()), expected.size() == 1) << name;
        for (int kind = -1; kind < 4; ++kind)
            EXPECT_EQ(PFile::check(name.c_str(), kind), expected.contains(kind)) << kind;
    }
    EXPECT_EQ((Codes{PFile::rename(file.c_str(), to.c_str()), PFile::rename(L"x", L""),
                     PFile::pdelete(scratch.wpath("moved").c_str()), PFile::pdelete(to.c_str())}),
              (Codes{PERR_OK, PERR_INVALID_ARGUMENT, PERR_OK, PERR_NO_SUCH_FILE}));
}

TEST(Files, RemoveAllEmptiesWhatLinksLeadToAndStopsAtWhatItCannotSee) {
    Scratch scratch;
    for (char const* const folder : {"tree/a/b", "target/sub", "dangling", "loop", "odd"})
        fs::create_directories(scratch.path(folder));
    for (int i = 0; i < 300; ++i) scratch.write("tree/a/" + std::to_string(i), "x");
    fs::create_symlink(scratch.path("target"), scratch.path("tree/a/b/link"));
    fs::create_symlink("none", scratch.path("dangling/link"));
    fs::create_symlink(scratch.path("loop"), scratch.path("loop/self"));
    scratch.write("odd/b\\c", "");  // a slash, for those who look
    for (char const* const name : {"dangling", "loop", "odd", "none"})
        EXPECT_EQ(PFile::removeAll(scratch.wpath(name).c_str()), PERR_DIR_NOT_FOUND) << name;
    EXPECT_EQ(PFile::removeAll(L"/dev/null/"), PERR_INVALID_ARGUMENT) << "less its slash";
    EXPECT_EQ(PFile::removeAll(scratch.wpath("tree\\").c_str()), PERR_OK);
    EXPECT_TRUE(!fs::exists(scratch.path("tree")) && fs::is_empty(scratch.path("target")));
}

TEST(Files, GiveTheirCodesAtTheLimitsOfTheSystem) {
    constexpr int MOST = 1 << 20;
    Scratch scratch;
    std::wstring const path = scratch.wpath("f"), closed = scratch.wpath("closed");
    fs::create_directory(scratch.path("closed"));
    fs::permissions(scratch.path("closed"), fs::perms::none);
    fs::permissions(scratch.dir(), fs::perms::all);
    ChildRun child([&] {
        rlimit const bytes{MOST, MOST}, none{0, 0};
        std::string const much(MOST + 1, 'x');
        unsigned long done = 0;
        PTempFile temporary;
        PFile file, other;
        EXPECT_TRUE(geteuid() != 0 || setresuid(65534, 65534, 65534) == 0);
        EXPECT_EQ(PDir().popen(closed.c_str(), L""), PERR_DIR_NOT_OPEN);
        EXPECT_EQ(PFile::removeAll(closed.c_str()), PERR_OK) << "unlisted";

        EXPECT_TRUE(signal(SIGXFSZ, SIG_IGN) != SIG_ERR && setrlimit(RLIMIT_FSIZE, &bytes) == 0);
        EXPECT_EQ(file.popen(path.c_str(), PFile::OPEN_SAFE_WRITE, 0), PERR_OK);
        EXPECT_EQ(file.pwrite(much.data(), much.size(), done), PERR_OK) << "as much as fits";
        EXPECT_EQ(file.pwriteLine(L"x"), PERR_WRITE);

        // Before the limit: the sanitizer needs a descriptor to see a type for the first time.
        EXPECT_EQ(temporary.popen(path.c_str(), 0, 0), PERR_NO_SUCH_FILE) << "not to be created";
        EXPECT_EQ(setrlimit(RLIMIT_NOFILE, &none), 0);
        EXPECT_EQ((Codes{other.popen(L"/dev/null", 1, 1), temporary.popen(path.c_str(), 18, 0),
                         PFile::removeAll(wide(scratch.dir()).c_str()), file.pclose()}),
                  (Codes{PERR_OPEN, PERR_OPEN, PERR_DELETE, PERR_OK}));
        EXPECT_EQ(PSystem::getTempDir().len(), 0U);
        return testing::Test::HasFailure() ? 1 : 0;
    });
    EXPECT_EQ(child.wait(), 0);
    EXPECT_EQ(scratch.read("f").size(), MOST) << "moved, cut as it is";
}

TEST(Library, IsUnloadedUnlessToldOtherwiseAndIsTheMainProgramWithoutAName) {
    PLibrary* library = nullptr;
    for (bool const unload : {true, false}) {
        ASSERT_EQ(PLibrary::load(L"libanl.so.1", library, unload), PERR_OK);
        EXPECT_EQ(library->getName(), L"libanl.so.1");
        delete library;
        EXPECT_EQ(dlopen("libanl.so.1", RTLD_LAZY | RTLD_NOLOAD) == nullptr, unload);
    }
    ASSERT_EQ(PLibrary::load(L"\u00e9", library, false), PERR_OK) << "not in the C locale";
    std::unique_ptr<PLibrary> const program(library);
    EXPECT_TRUE(program->getFunction("strlen") != nullptr && !program->getFunction(nullptr));
    testing::internal::CaptureStderr();
    EXPECT_EQ(PLibrary::load(L"/none.so", library, true), PERR_LIBRARY_LOAD);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "\n[tALV][ERR] [PLibrary::load] dlopen('/none.so', RTLD_LAZY) failed! dlerror: "
              "/none.so: cannot open shared object file: No such file or directory\n\n");
    PString made(L"/a/b\\c", 6);
    PLibrary::fixLibName(made);
    PFile::getFileName(made);
    EXPECT_EQ(made, L"b\\c.so") << "of lib/a/b\\c.so";
}
