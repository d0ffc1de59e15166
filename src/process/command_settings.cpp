#include "process/command_settings.h"

#include <algorithm>
#include <cstring>
#include <cwchar>

#include <unistd.h>

#include "text/utf8_name.h"

namespace {

/// Whether an entry of an environment is that of the variable which another entry, or a bare name,
/// begins with.
bool _sameVariable(char const* entry, std::string const& other) {
    std::size_t const name = std::min(other.find('='), other.size());
    return std::strncmp(entry, other.c_str(), name) == 0 && entry[name] == '=';
}

}  // namespace

int _utf8Variable(PLiteral const& name, std::string& bytes) {
    if (name.len() > 0 && std::wmemchr(name.ptr(), L'=', name.len()) != nullptr)
        return PERR_INVALID_ARGUMENT;
    return _utf8Name(name, bytes);
}

void EnvironmentChanges::clear() {
    changes.clear();
    cleared = true;
}

std::vector<char*> EnvironmentChanges::apply() const {
    std::vector<char*> entries;
    for (char** entry = environ; !cleared && entry != nullptr && *entry != nullptr; ++entry)
        entries.push_back(*entry);

    for (std::string const& change : changes) {
        std::erase_if(entries, [&](char const* entry) { return _sameVariable(entry, change); });
        if (change.find('=') != std::string::npos)
            entries.push_back(const_cast<char*>(change.c_str()));  // the system only reads it
    }
    entries.push_back(nullptr);
    return entries;
}
