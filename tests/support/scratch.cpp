#include <support/scratch.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>

#include <unistd.h>

namespace fs = std::filesystem;

Scratch::Scratch()
    : folder(fs::temp_directory_path() /
             ("portinglayer-test-" + std::to_string(getpid()) + "-XXXXXX")) {
    if (mkdtemp(folder.data()) == nullptr) throw std::runtime_error("no scratch folder");
}

Scratch::~Scratch() {
    std::error_code ignored;
    fs::permissions(folder, fs::perms::owner_all, fs::perm_options::add, ignored);
    fs::remove_all(folder, ignored);
}

std::wstring Scratch::wpath(std::string const& name) const {
    return wide(path(name));
}

std::string Scratch::write(std::string const& name, std::string const& content) const {
    std::ofstream(path(name), std::ios::binary) << content;
    return path(name);
}

std::string Scratch::read(std::string const& name) const {
    std::ostringstream content;
    content << std::ifstream(path(name), std::ios::binary).rdbuf();
    return content.str();
}

std::vector<std::string> Scratch::names() const {
    std::vector<std::string> found;
    for (auto const& entry : fs::directory_iterator(folder))
        found.push_back(entry.path().filename());
    std::sort(found.begin(), found.end());
    return found;
}

std::string uniqueName() {
    static int count = 0;
    return "/plt-" + std::to_string(getpid()) + "-" + std::to_string(++count);
}

std::wstring wide(std::string const& ascii) {
    return {ascii.begin(), ascii.end()};
}
