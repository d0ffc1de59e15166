#include <cstdint>
#include <cstdlib>
#include <string>

#include <portinglayer/strings.h>

// What takes a text apart.

static void _must(bool holds) {
    if (!holds) abort();
}

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* input, std::size_t size) {
    if (size == 0) return 0;
    std::wstring const text(input, input + size);
    auto const separator = static_cast<wchar_t>(input[0]);
    PString rest(text.data(), size), token, key, value;
    unsigned long count = 0;
    while (PLiteral::getNextToken(rest, token, separator) == PERR_OK)
        _must(++count <= size && token.len() <= size);
    if (PUtils::getKeyValue(PString(text.data(), size), key, value, separator) == PERR_OK)
        _must(key.len() + value.len() < size);

    unsigned char* bytes = nullptr;
    if (PUtils::strToBinary(PString(text.data(), size), bytes, count) != PERR_OK) return 0;
    _must(PUtils::binaryToStr(bytes, count, value) == (count ? PERR_OK : PERR_INVALID_ARGUMENT));
    delete[] bytes;
    return 0;
}
