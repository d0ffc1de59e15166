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

bool _same(PLiteral const& text, std::wstring const& model) {
    return text.len() == model.size() &&
           wmemcmp(text.len() ? text.ptr() : L"", model.data(), model.size()) == 0;
}

template <typename T>
void _number(int (*read)(PLiteral const&, T&), wchar_t const* format, std::wstring const& text) {
    T ours{}, scanned{};
    bool const valid = swscanf(text.c_str(), format, &scanned) == 1 && text[0] != 0;
    _must((read(text.c_str(), ours) == PERR_OK) == valid && (!valid || ours == scanned));
}

void _values(std::wstring const& text) {
    _number<int>(PUtils::strToInt32, L"%d", text);
    _number<unsigned int>(PUtils::strToUint32, L"%u", text);
    _number<long long>(PUtils::strToInt64, L"%lld", text);
    _number<unsigned long long>(PUtils::strToUint64, L"%llu", text);
    bool flag = false;
    _must((PUtils::strToBool(text.c_str(), flag) == PERR_OK) ==
          (text == L"true" || text == L"false"));

    unsigned char* bytes = nullptr;
    unsigned long count = 0;
    PString shown;
    if (PUtils::strToBinary(text.c_str(), bytes, count) != PERR_OK) return;
    _must(PUtils::binaryToStr(bytes, count, shown) == (count ? PERR_OK : PERR_INVALID_ARGUMENT));
    delete[] bytes;
}

void _tokens(std::wstring const& text, wchar_t separator) {
    PString rest(text.data(), text.size()), token, key, value;
    unsigned long taken = 0;
    while (PLiteral::getNextToken(rest, token, separator) == PERR_OK)
        _must(++taken <= text.size() && token.len() <= text.size());
    if (PUtils::getKeyValue(text.c_str(), key, value, separator) == PERR_OK)
        _must(key.len() + value.len() < text.size());
}

void _edit(PString& ours, std::wstring& model, std::uint8_t operation, unsigned long pos,
           unsigned long n) {
    std::wstring const piece(n, L'p');
    bool const inside = pos <= model.size() && n <= model.size() - pos;
    switch (operation % 5) {
    case 0:
        _must(ours.cat(piece.data(), n) == PERR_OK);
        model += piece;
        break;
    case 1:
        _must(ours.insert(pos, piece.data(), n) ==
              (pos > model.size() ? PERR_INVALID_ARGUMENT : PERR_OK));
        if (pos <= model.size()) model.insert(pos, piece);
        break;
    case 2:
        _must(ours.erase(pos, n) == (inside ? PERR_OK : PERR_INVALID_ARGUMENT));
        if (inside) model.erase(pos, n);
        break;
    case 3:
        _must(ours.replace(L'p', L' ') == PERR_OK);
        for (wchar_t& c : model) c = c == L'p' ? L' ' : c;
        break;
    default:
        _must(ours.stripall() == PERR_OK);
        std::erase_if(model, [](wchar_t c) { return c == 9 || c == 10 || c == 13 || c == 32; });
    }
    _must(_same(ours, model));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* input, std::size_t size) {
    if (size < 4) return 0;
    std::wstring text(input, input + size);
    _values(std::wstring(text.c_str()));
    _tokens(std::wstring(text.c_str()), static_cast<wchar_t>(input[0]));
    PString ours(text.data(), size);
    for (std::size_t i = 0; i + 2 < size && i < 60; i += 3)
        _edit(ours, text, input[i], input[i + 1] % 64, input[i + 2] % 16);
    return 0;
}
