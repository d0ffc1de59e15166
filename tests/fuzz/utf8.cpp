#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include <portinglayer/utf8.h>

// Decoding beside a plain model, byte by byte as the definition of UTF-8 has it.

namespace {

void _must(bool holds) {
    if (!holds) abort();
}

/// Takes a character off the front; -1 when the bytes there are none.
long _take(std::string& bytes) {
    struct {
        unsigned int mask, mark;
        long least;
    } const forms[] = {
        {0x80, 0x00, 0}, {0xE0, 0xC0, 0x80}, {0xF0, 0xE0, 0x800}, {0xF8, 0xF0, 0x10000}};
    auto const lead = static_cast<unsigned char>(bytes[0]);
    for (std::size_t following = 0; following < 4; ++following) {
        auto const& form = forms[following];
        if ((lead & form.mask) != form.mark || bytes.size() <= following) continue;
        long c = lead & ~form.mask;
        for (std::size_t i = 1; i <= following; ++i) {
            if ((bytes[i] & 0xC0) != 0x80) return -1;
            c = c << 6 | (bytes[i] & 0x3F);
        }
        bytes.erase(0, following + 1);
        return c < form.least || c > 0x10FFFF || (c >= 0xD800 && c <= 0xDFFF) ? -1 : c;
    }
    return -1;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* input, std::size_t size) {
    std::vector<char> const bytes(input, input + size);  // so that reading behind the end is seen
    std::string rest(bytes.begin(), bytes.end());
    std::wstring expected;
    long c = 0;
    while (!rest.empty() && (c = _take(rest)) >= 0) expected += static_cast<wchar_t>(c);

    PString text(L"former", P_WHOLE_STRING);
    int const code = PUtf8::decode(bytes.data(), size, text);
    _must(code == (c >= 0 ? PERR_OK : PERR_BAD_FORMAT));
    if (c < 0) expected = L"former";
    _must(std::wstring(text.len() != 0 ? text.ptr() : L"", text.len()) == expected);
    return 0;
}
