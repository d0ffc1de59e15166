#include <algorithm>
#include <clocale>
#include <cstdint>
#include <cstdlib>
#include <string>

#include <portinglayer/strings.h>

// Searches of every kind beside those of the standard library. Texts of few letters match much in
// vain; the first byte repeats them, so that few bytes make a long text.

namespace {

std::wstring _letters(std::uint8_t const* input, std::size_t size) {
    constexpr wchar_t LETTERS[] = L"aAb\u00e1\u00c1\u0131\x10428";
    std::wstring text;
    for (std::size_t i = 0; i < size; ++i) text += LETTERS[input[i] % (std::size(LETTERS) - 1)];
    return text;
}

std::wstring _repeated(std::wstring const& unit, unsigned times) {
    std::wstring text;
    for (unsigned i = 0; i < times; ++i) text += unit;
    return text;
}

void _compare(std::wstring text, std::wstring sought, bool fromEnd, bool ignoreCase) {
    PLiteral const literal(text.c_str());
    unsigned long pos = text.npos;
    int const code = literal.str(sought.c_str(), pos, fromEnd, ignoreCase);

    if (ignoreCase) {
        std::transform(text.begin(), text.end(), text.begin(), PLiteral::toupper);
        std::transform(sought.begin(), sought.end(), sought.begin(), PLiteral::toupper);
    }
    std::size_t const expected = fromEnd ? text.rfind(sought) : text.find(sought);
    if (pos != expected) abort();
    if ((code == PERR_OK) != (expected != text.npos)) abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* input, std::size_t size) {
    if (size < 6) return 0;
    setlocale(LC_CTYPE, input[0] % 2 == 0 ? "C" : "C.UTF-8");
    std::size_t const unit = 1 + input[1] % (size - 5);
    std::wstring const text = _repeated(_letters(input + 4, unit), 1U + input[2]);
    std::wstring sought = _repeated(_letters(input + 4, unit), input[3] % 64U);
    sought += _letters(input + 4 + unit, size - 4 - unit);
    for (unsigned mode = 0; mode < 4; ++mode) _compare(text, sought, mode & 1U, mode & 2U);
    return 0;
}
