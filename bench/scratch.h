/// @file
/// Names of files in a folder of the run's own.
#ifndef PORTINGLAYER_BENCH_SCRATCH_H
#define PORTINGLAYER_BENCH_SCRATCH_H

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "forms.h"

/// Removed at the end of the run, which works in it.
class Folder {
public:
    Folder() {
        path = (std::filesystem::temp_directory_path() / "portinglayer-bench-XXXXXX").string();
        if (mkdtemp(path.data()) == nullptr) std::abort();
        std::filesystem::current_path(path);
    }
    Folder(Folder const&) = delete;
    Folder& operator=(Folder const&) = delete;
    ~Folder() {
        std::error_code ignored;
        std::filesystem::remove_all(path, ignored);
    }
    std::string path;
};

inline std::string const& folder() {
    static Folder const made;
    return made.path;
}

/// The full name of a file in the folder.
struct Name : Forms {
    explicit Name(std::string const& name) : Forms(wideOf(folder() + "/" + name)) {}
    static std::wstring wideOf(std::string const& ascii) { return {ascii.begin(), ascii.end()}; }
};

inline void makeFile(std::string const& name, std::string const& content = "") {
    std::ofstream(name) << content;
}

#endif
