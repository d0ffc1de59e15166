/// A folder of the test's own, and names that no other test or process uses.
#ifndef TESTS_SUPPORT_SCRATCH_H
#define TESTS_SUPPORT_SCRATCH_H

#include <string>
#include <vector>

/// A fresh folder under the system's temporary folder, gone with everything in it (links are
/// removed, never followed) when the object ends.
class Scratch {
public:
    Scratch();
    ~Scratch();
    Scratch(Scratch const&) = delete;
    Scratch& operator=(Scratch const&) = delete;

    std::string const& dir() const { return folder; }
    std::string path(std::string const& name) const { return folder + "/" + name; }
    std::wstring wpath(std::string const& name) const;

    std::string write(std::string const& name, std::string const& content) const;
    std::string read(std::string const& name) const;
    std::vector<std::string> names() const;  ///< what the folder holds, sorted, without . and ..

private:
    std::string folder;
};

/// A name such as "/plt-4711-3" that this process has not given before.
std::string uniqueName();

/// The wide form of ASCII text.
std::wstring wide(std::string const& ascii);

#endif
