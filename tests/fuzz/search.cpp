#include <algorithm>
#include <clocale>
#include <cstdint>
#include <stdexcept>
#include <string>

#include <portinglayer/strings.h>

// Searches of every kind beside those of the standard library, in texts and for texts of few
// letters, in which much matches in vain.

namespace {

std::wstring _letters(std::uint8_t const* input, std::size_t size) {
    constexpr wchar_t LETTERS[] = L"aAbiI\u00e1\u00c1\u0130\u0131\u01c5\u01c6\x10428";
    std::wstring text;
    for (std::size_t i = 0; i < size; ++i) text += LETTERS[input[i] % (std::size(LETTERS) - 1)];
    return text;
}

std::wstring _repeated(std::wstring const& unit, unsigned times) {
    std::wstring text;
    for (unsigned i = 0; i < times; ++i) text += unit;
    return text;
}

void _must(bool holds) {
    if (!holds) throw std::runtime_error("another result of a search");
}

/// Compares one search with the model, and the tests for beginning and end.
void _compare(std::wstring text, std::wstring sought, bool fromEnd, bool ignoreCase) {
    PString const searched(text.data(), text.size()), what(sought.data(), sought.size());
    unsigned long pos = text.npos;
    int const code = searched.str(what, pos, fromEnd, ignoreCase);
    bool const starts = searched.startsWith(what, ignoreCase);
    bool const ends = searched.endsWith(what, ignoreCase);

    if (ignoreCase) {
        std::transform(text.begin(), text.end(), text.begin(), PLiteral::toupper);
        std::transform(sought.begin(), sought.end(), sought.begin(), PLiteral::toupper);
    }
    std::size_t const expected = fromEnd ? text.rfind(sought) : text.find(sought);
    _must(pos == expected);
    _must(code == (expected == text.npos ? PERR_NOT_FOUND : PERR_OK));
    _must(starts == text.starts_with(sought));
    _must(ends == text.ends_with(sought));
}

}  // namespace

/// Letters from byte 7 on: some to be repeated on both sides of the others. A part of that is
/// sought, with one letter changed.
extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* input, std::size_t size) {
    if (size < 8) return 0;
    char const* const locales[] = {"C", "C.UTF-8", "UTF-8"};  // the last is the test's
    setlocale(LC_CTYPE, locales[input[0] % 3]);
    std::size_t const unit = 1 + input[1] % (size - 7);
    std::wstring const side = _repeated(_letters(input + 7, unit), input[2]);
    std::wstring const text = side + _letters(input + 7, size - 7) + side;

    std::wstring sought =
        text.substr(input[3] * text.size() / 256, 1 + input[4] * text.size() / 256);
    sought[input[5] * sought.size() / 256] = _letters(input + 6, 1)[0];
    for (unsigned mode = 0; mode < 4; ++mode) _compare(text, sought, mode & 1U, mode & 2U);
    return 0;
}
