#include "process/process_entries.h"

#include <cstdlib>
#include <cstring>

#include "sync/uncancelled.h"

namespace {

constexpr std::size_t LONGEST_NAME = 127 - 16;  // what a path of 127 characters leaves for it

bool _isProcess(dirent const& entry) {
    return entry.d_type == DT_DIR && entry.d_name[0] >= '0' && entry.d_name[0] <= '9' &&
           std::strlen(entry.d_name) <= LONGEST_NAME;
}

}  // namespace

void ProcessEntries::CloseDirectory::operator()(DIR* stream) const {
    Uncancelled const uncancelled;
    (void)closedir(stream);
}

ProcessEntries::ProcessEntries() : directory(opendir("/proc")) {
}

bool ProcessEntries::next(unsigned int& processId) {
    while (dirent const* const entry = readdir(directory.get())) {
        if (!_isProcess(*entry)) continue;
        processId = static_cast<unsigned int>(std::strtol(entry->d_name, nullptr, 10));
        return true;
    }
    return false;
}
