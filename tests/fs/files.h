/// What the tests of files share.
#ifndef TESTS_FS_FILES_H
#define TESTS_FS_FILES_H

#include <clocale>
#include <set>

#include <portinglayer/files.h>
#include <support/expect.h>
#include <support/scratch.h>

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

/// The characters of the process's locale, until the object ends.
class Locale {
public:
    explicit Locale(char const* name) {
        if (std::setlocale(LC_CTYPE, name) == nullptr) throw std::runtime_error("no such locale");
    }
    ~Locale() { (void)std::setlocale(LC_CTYPE, "C"); }
};

#endif
