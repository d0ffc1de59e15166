// Folders: making, listing, removing.

#include "operation.h"

#include <dirent.h>
#include <fcntl.h>
#include <fnmatch.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include <portinglayer/files.h>

#include "scratch.h"

namespace {

namespace fs = std::filesystem;

void _addMaking() {
    static Name const name("made");
    Operation op("make and remove a folder", 1.10, 0, "mkdir, rmdir");
    op.way(BARE, [] { return mkdir(name.c(), 0775) + rmdir(name.c()); });
    op.way(OURS, [] {
        errno = 0;
        return PDir::pcreate(name.ours) + PDir::pdelete(name.ours);
    });
}

std::size_t _listBare(Name const& folder, char const* pattern) {
    DIR* const stream = opendir(folder.c());
    std::size_t names = 0;
    while (dirent const* const entry = readdir(stream))
        if (pattern == nullptr || fnmatch(pattern, entry->d_name, FNM_PATHNAME | FNM_NOESCAPE) == 0)
            ++names;
    closedir(stream);
    return names;
}

std::size_t _listOurs(Name const& folder, PLiteral const& pattern) {
    PDir dir(folder.ours, pattern);
    std::size_t names = 0;
    for ((void)dir.preaddir(); dir == PERR_OK; ++dir) ++names;
    return names;
}

/// Every library counts "." and ".." where it gives them; the others add two.
template <typename Iterator>
std::size_t _count(Name const& folder) {
    std::size_t names = 2;
    for (Iterator entry(folder.narrow), end; entry != end; ++entry) ++names;
    return names;
}

std::shared_ptr<Name const> _filled(unsigned count) {
    auto const folder = std::make_shared<Name>("listed" + std::to_string(count));
    fs::create_directory(folder->narrow);
    for (unsigned i = 0; i < count; ++i)
        makeFile(folder->narrow + "/file-" + std::to_string(i) + (i % 4 == 0 ? ".conf" : ".txt"));
    return folder;
}

void _addListing(std::shared_ptr<Name const> const& folder, unsigned count) {
    Operation op("list names " + std::to_string(count), 2.0, count + 2UL, "opendir, readdir");
    op.way(BARE, [=] { return _listBare(*folder, nullptr); });
    op.way("std::filesystem", [=] { return _count<fs::directory_iterator>(*folder); });
    WITH_QT(op.way("Qt", [=] {
        auto const filter = QDir::AllEntries | QDir::Hidden | QDir::System;
        return QDir(folder->qt).entryList(filter, QDir::Unsorted).size();
    }));
    WITH_BOOST(
        op.way("Boost", [=] { return _count<boost::filesystem::directory_iterator>(*folder); }));
    WITH_POCO(op.way("POCO", [=] { return _count<Poco::DirectoryIterator>(*folder); }));
    WITH_GLIB(op.way("GLib", [=] {
        GDir* const dir = g_dir_open(folder->c(), 0, nullptr);
        std::size_t names = 2;
        while (g_dir_read_name(dir) != nullptr) ++names;
        g_dir_close(dir);
        return names;
    }));
    WITH_LIBUV(op.way("libuv", [=] {
        uv_fs_t request;
        int const names = 2 + uv_fs_scandir(nullptr, &request, folder->c(), 0, nullptr);
        uv_fs_req_cleanup(&request);
        return names;
    }));
    op.way(OURS, [=] { return _listOurs(*folder, L""); });
}

void _addMatching(std::shared_ptr<Name const> const& folder, unsigned count) {
    Operation op("list names of a pattern " + std::to_string(count), NO_LIMIT, (count + 3UL) / 4,
                 "opendir, readdir, fnmatch");
    op.way(BARE, [=] { return _listBare(*folder, "*.conf"); });
    WITH_QT(op.way("Qt", [=] {
        QDir const dir(folder->qt, "*.conf", QDir::Unsorted);
        return dir.entryList().size();
    }));
    op.way(OURS, [=] { return _listOurs(*folder, L"*.conf"); });
}

/// The sequence the library is bound to: existence, kind, listing, one `stat` for each entry.
int _removeBare(std::string const& path) {
    struct stat status {};
    if (access(path.c_str(), F_OK) != 0 || stat(path.c_str(), &status) != 0) return 1;
    DIR* const stream = opendir(path.c_str());
    while (dirent const* const entry = readdir(stream)) {
        if (strcmp(entry->d_name, ".") == 0 || strcmp(entry->d_name, "..") == 0) continue;
        std::string const child = path + "/" + entry->d_name;
        if (stat(child.c_str(), &status) != 0) return 1;
        if ((S_ISDIR(status.st_mode) ? _removeBare(child) : unlink(child.c_str())) != 0) return 1;
    }
    closedir(stream);
    return rmdir(path.c_str());
}

void _addRemoving() {
    static Name const tree("tree");
    auto const make = [] {
        for (int i = 0; i < 10; ++i) {
            std::string const folder = tree.narrow + "/" + std::to_string(i);
            fs::create_directories(folder);
            for (int j = 0; j < 100; ++j)
                close(creat((folder + "/file" + std::to_string(j)).c_str(), 0644));
        }
    };
    Operation op("remove a tree of 1000 files", 1.15, 0, "opendir, readdir, stat, unlink, rmdir");
    op.prepared(BARE, make, [] { return _removeBare(tree.narrow); });
    op.prepared("std::filesystem", make, [] { return fs::remove_all(tree.narrow) != 1011; });
    WITH_QT(op.prepared("Qt", make, [] { return !QDir(tree.qt).removeRecursively(); }));
    WITH_BOOST(op.prepared("Boost", make,
                           [] { return boost::filesystem::remove_all(tree.narrow) != 1011; }));
    WITH_POCO(op.prepared("POCO", make, [] {
        Poco::File(tree.narrow).remove(true);
        return 0;
    }));
    op.prepared(OURS, make, [] { return PFile::removeAll(tree.ours); });
}

}  // namespace

void addFolders() {
    _addMaking();
    for (unsigned const count : {64U, 1024U, 16384U}) {
        auto const folder = _filled(count);
        _addListing(folder, count);
        _addMatching(folder, count);
    }
    _addRemoving();
}
