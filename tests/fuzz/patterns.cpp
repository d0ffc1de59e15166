#include <fnmatch.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cwchar>
#include <string>

#include "fs/name_pattern.h"

// Patterns of listings beside fnmatch.

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* input, std::size_t size) {
    std::string const all(input, input + size);
    std::string pattern = all.substr(0, all.find('\n')).c_str();
    for (char& c : pattern) c = c < 0 ? '*' : c;  // ASCII only
    std::string name = pattern.size() < size ? all.substr(pattern.size() + 1).c_str() : "";
    std::replace(name.begin(), name.end(), '/', '_');  // no name in a directory holds one
    std::wstring const wide(pattern.begin(), pattern.end());
    wchar_t const* const text = wide.c_str();
    bool const matches = fnmatch(pattern.c_str(), name.c_str(), FNM_PATHNAME | FNM_NOESCAPE) == 0;
    if (!pattern.empty() && _matchesPattern(text, name.c_str()) != matches) abort();
    return 0;
}
