#include <fnmatch.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cwchar>
#include <string>

#include "fs/name_pattern.h"

// Patterns of listings beside fnmatch; formatted text beside the C library's.

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

    // The text's own characters are formatted, never used as a format.
    PString out;
    std::wstring model(wide.size() + 2048 + 16, L'\0');
    int const width = static_cast<int>(size % 300) * 9;
    std::wstring const format = L"%*d|%ls|%.3ls";
    int const made =
        swprintf(model.data(), format.size() + 2048, format.c_str(), width, 7, text, text);
    if (PUtils::pformatString(out, format.c_str(), width, 7, text, text) != PERR_OK) abort();
    if (made >= 0 ? out != model.c_str() : out.len() > format.size() + 2047) abort();
    return 0;
}
