#include <cstdint>
#include <cstdlib>
#include <cwchar>
#include <string>

#include <portinglayer/strings.h>

// The parsers beside the C library's, the editing operations and the tokeniser beside a plain model.

namespace {

void _must(bool holds) {
    if (!holds) abort();
}

template <typename T>
void _number(int (*read)(PLiteral const&, T&), wchar_t const* format, std::wstring const& text) {
    T ours{}, scanned{};
    bool const valid = swscanf(text.c_str(), format, &scanned) == 1 && text[0] != 0;
    _must((read(text.c_str(), ours) == PERR_OK) == valid && (!valid || ours == scanned));
}

void _parse(std::wstring const& text, wchar_t separator) {
    _number<int>(PUtils::strToInt32, L"%d", text);
    _number<unsigned int>(PUtils::strToUint32, L"%u", text);
    _number<long long>(PUtils::strToInt64, L"%lld", text);
    _number<unsigned long long>(PUtils::strToUint64, L"%llu", text);
    bool flag = false;
    _must((PUtils::strToBool(text.c_str(), flag) == PERR_OK) ==
          (text == L"true" || text == L"false"));

    PString rest(text.data(), text.size()), token, key, value;
    unsigned long count = 0;
    while (PLiteral::getNextToken(rest, token, separator) == PERR_OK)
        _must(++count <= text.size() && token.len() <= text.size());
    if (PUtils::getKeyValue(text.c_str(), key, value, separator) == PERR_OK)
        _must(key.len() + value.len() < text.size());

    unsigned char* bytes = nullptr;
    if (PUtils::strToBinary(text.c_str(), bytes, count) != PERR_OK) return;
    _must(PUtils::binaryToStr(bytes, count, value) == (count ? PERR_OK : PERR_INVALID_ARGUMENT));
    delete[] bytes;
}

void _edit(PString& ours, std::wstring& model, unsigned int operation, unsigned long pos,
           std::wstring const& piece) {
    unsigned long const n = piece.size();
    bool const valid = operation == 0 || operation == 3 ||
                       (pos <= model.size() && (operation == 1 || n <= model.size() - pos));
    int code = PERR_OK;
    switch (operation) {
    case 0: code = ours.cat(piece.data(), n); break;
    case 1: code = ours.insert(pos, piece.data(), n); break;
    case 2: code = ours.erase(pos, n); break;
    default: code = ours.stripall();
    }
    _must(code == (valid ? PERR_OK : PERR_INVALID_ARGUMENT));
    if (operation == 0) model += piece;
    if (operation == 1 && valid) model.insert(pos, piece);
    if (operation == 2 && valid) model.erase(pos, n);
    if (operation == 3)
        std::erase_if(model, [](wchar_t c) { return c != 0 && wcschr(L"\t\n\r ", c); });
    _must(std::wstring(ours.len() != 0 ? ours.ptr() : L"", ours.len()) == model);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* input, std::size_t size) {
    if (size < 4) return 0;
    std::wstring text(input, input + size);
    _parse(std::wstring(text.c_str()), static_cast<wchar_t>(input[0]));
    PString ours(text.data(), size);
    for (std::size_t i = 0; i + 2 < size && i < 60; i += 3)
        _edit(ours, text, input[i] % 4, input[i + 1] % 64, std::wstring(input[i + 2] % 16, L' '));
    return 0;
}
