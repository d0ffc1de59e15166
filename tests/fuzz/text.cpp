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

void _parse(std::wstring const& s, wchar_t separator) {
    _number<int>(PUtils::strToInt32, L"%d", s);
    _number<unsigned int>(PUtils::strToUint32, L"%u", s);
    _number<long long>(PUtils::strToInt64, L"%lld", s);
    _number<unsigned long long>(PUtils::strToUint64, L"%llu", s);
    bool flag = false;
    _must((PUtils::strToBool(s.c_str(), flag) == PERR_OK) == (s == L"true" || s == L"false"));

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

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* input, std::size_t size) {
    if (size < 4) return 0;
    std::wstring text(input, input + size);
    _parse(std::wstring(text.c_str()), static_cast<wchar_t>(input[0]));
    PString ours(text.data(), size);
    for (std::size_t i = 0; i + 2 < size && i < 60; i += 3) {
        unsigned long const n = input[i + 2] % 16;
        unsigned int const operation = input[i] % 4;
        unsigned long const pos = operation % 3 == 0 ? text.size() : input[i + 1] % 64;
        bool const valid = pos <= text.size() && (operation != 2 || n <= text.size() - pos);
        int const code = operation == 0   ? ours.cat(std::wstring(n, L' ').data(), n)
                         : operation == 1 ? ours.insert(pos, std::wstring(n, L' ').data(), n)
                         : operation == 2 ? ours.erase(pos, n)
                                          : ours.stripall();
        _must(code == (valid ? PERR_OK : PERR_INVALID_ARGUMENT));
        if (operation < 2 && valid) text.insert(pos, n, L' ');
        if (operation == 2 && valid) text.erase(pos, n);
        if (operation == 3)
            std::erase_if(text, [](wchar_t c) { return c != 0 && wcschr(L"\t\n\r ", c); });
        _must(std::wstring(ours.len() != 0 ? ours.ptr() : L"", ours.len()) == text);
    }
    return 0;
}
