/// A folder of the test's own, and names that no other test or process uses.
#ifndef TESTS_SUPPORT_SCRATCH_H
#define TESTS_SUPPORT_SCRATCH_H

#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>

#include <unistd.h>

/// The wide form of ASCII text.
inline std::wstring wide(std::string const& ascii) {
    return {ascii.begin(), ascii.end()};
}

/// A name such as "/plt-4711-3" that this process has not given before.
inline std::string uniqueName() {
    static int count = 0;
    return "/plt-" + std::to_string(getpid()) + "-" + std::to_string(++count);
}

/// The rights of a file in octal digits, as chmod takes them.
inline std::string modeOf(std::filesystem::path const& file) {
    std::ostringstream digits;
    digits << std::oct << static_cast<unsigned int>(status(file).permissions());
    return digits.str();
}

/// A fresh folder under the system's temporary folder, gone with everything in it (links are
/// removed, never followed) when the object ends.
class Scratch {
public:
    Scratch() {
        if (mkdtemp(folder.data()) == nullptr) throw std::runtime_error("no scratch folder");
    }
    ~Scratch() { std::filesystem::remove_all(folder); }

    std::string const& dir() const { return folder; }
    std::string path(std::string const& name) const { return folder + "/" + name; }
    std::wstring wpath(std::string const& name) const { return wide(path(name)); }

    std::string write(std::string const& name, std::string const& content) const {
        std::ofstream(path(name)) << content;
        return path(name);
    }
    std::string read(std::string const& name) const {
        std::ifstream file(path(name));
        return {std::istreambuf_iterator(file), {}};
    }

private:
    std::string folder = std::filesystem::temp_directory_path() /
                         ("portinglayer-test-" + std::to_string(getpid()) + "-XXXXXX");
};

#endif
