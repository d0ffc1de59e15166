/// What the tests of files share.
#ifndef TESTS_FS_FILES_H
#define TESTS_FS_FILES_H

#include <set>

#include <portinglayer/files.h>
#include <support/child_run.h>
#include <support/expect.h>
#include <support/scratch.h>

constexpr unsigned int READ = PFile::OPEN_READ, WRITE = PFile::OPEN_WRITE;
constexpr unsigned int CREATE = PFile::OPEN_CREATE, SAFE_WRITE = PFile::OPEN_SAFE_WRITE;

/// A folder of the test's own, and what operations give.
class InAFolder : public testing::Test {
protected:
    Scratch const scratch;
    PFile file;
    PString text;
    char byte = '?';
    unsigned long done = 77;
};

/// A name as the library takes it.
inline PString named(std::string const& ascii) {
    return {wide(ascii).c_str(), P_WHOLE_STRING};
}

/// The names in a folder, in order.
inline std::set<std::string> namesIn(std::string const& folder) {
    std::set<std::string> names;
    for (auto const& entry : std::filesystem::directory_iterator(folder))
        names.insert(entry.path().filename());
    return names;
}

/// Runs a piece of a test in a child, which may restrict itself.
inline void inAChild(std::function<void()> const& work) {
    ChildRun child([&] {
        work();
        return testing::Test::HasFailure() ? 1 : 0;
    });
    EXPECT_EQ(0, child.wait());
}

#endif
