#include <cstdint>
#include <cstdlib>
#include <cwchar>
#include <string>

#include <portinglayer/strings.h>

// What takes a text apart, and the editing operations beside a plain model.

namespace {

void _must(bool holds) {
    if (!holds) abort();
}

void _parse(std::wstring const& s, wchar_t separator) {
    PString rest(s.data(), s.size()), token, key, value;
    unsigned long count = 0;
    while (PLiteral::getNextToken(rest, token, separator) == PERR_OK)
        _must(++count <= s.size() && token.len() <= s.size());
    if (PUtils::getKeyValue(s.c_str(), key, value, separator) == PERR_OK)
        _must(key.len() + value.len() < s.size());

    unsigned char* bytes = nullptr;
    if (PUtils::strToBinary(s.c_str(), bytes, count) != PERR_OK) return;
    _must(PUtils::binaryToStr(bytes, count, value) == (count ? PERR_OK : PERR_INVALID_ARGUMENT));
    delete[] bytes;
}

/// Makes one edit in both and compares what comes of it.
void _edit(PString& ours, std::wstring& model, unsigned operation, unsigned long pos,
           unsigned long n) {
    std::wstring const spaces(n, L' ');
    int code = PERR_OK;
    bool valid = true;
    switch (operation) {
    case 0:
        code = ours.cat(spaces.data(), n);
        model += spaces;
        break;
    case 1:
        code = ours.insert(pos, spaces.data(), n);
        valid = pos <= model.size();
        if (valid) model.insert(pos, spaces);
        break;
    case 2:
        code = ours.erase(pos, n);
        valid = pos <= model.size() && n <= model.size() - pos;
        if (valid) model.erase(pos, n);
        break;
    default:
        code = ours.stripall();
        std::erase_if(model, [](wchar_t c) { return c != 0 && wcschr(L"\t\n\r ", c); });
    }
    _must(code == (valid ? PERR_OK : PERR_INVALID_ARGUMENT));
    _must(std::wstring(ours.len() != 0 ? ours.ptr() : L"", ours.len()) == model);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* input, std::size_t size) {
    if (size < 4) return 0;
    std::wstring model(input, input + size);
    _parse(std::wstring(model.c_str()), static_cast<wchar_t>(input[0]));
    PString ours(model.data(), size);
    for (std::size_t i = 0; i + 2 < size && i < 60; i += 3)
        _edit(ours, model, input[i] % 4, input[i + 1] % 64, input[i + 2] % 16);
    return 0;
}
