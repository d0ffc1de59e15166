#include "text/narrow_text.h"

#include "text/allocation.h"
#include "text/multibyte.h"

namespace {

constexpr unsigned long BLOCK = 8;  // characters looked at together

/// Whether every codeset has the character at its byte in ASCII; a few exchange the backslash and
/// what follows the last brace.
bool _isPlain(wchar_t c) {
    return static_cast<unsigned int>(c) - L' ' <= L'}' - L' ' && c != L'\\';
}

/// Copies `count` characters; false when one of them is not plain.
bool _copyPlain(char* out, wchar_t const* s, unsigned long count) {
    unsigned int plain = 1;
    for (unsigned long i = 0; i < count; ++i) {
        plain &= static_cast<unsigned int>(_isPlain(s[i]));
        out[i] = static_cast<char>(s[i]);
    }
    return plain != 0;
}

/// Copies a text of plain characters, as nearly all names are, and terminates it. False where the
/// conversion must decide.
bool _copyPlainText(char* out, wchar_t const* s, unsigned long length) {
    unsigned long done = 0;
    for (; length - done >= BLOCK; done += BLOCK)
        if (!_copyPlain(out + done, s + done, BLOCK)) return false;
    if (!_copyPlain(out + done, s + done, length - done)) return false;
    out[length] = '\0';
    return true;
}

}  // namespace

NarrowText::NarrowText(PLiteral const& text) {
    unsigned long const limit = text.len();
    if (text.ptr() == nullptr || limit == 0) return;

    char* buffer = shortBuffer;
    if (limit >= SHORT_BYTES) {
        longBuffer.reset(_newText<char>(limit, 0, 1));
        buffer = longBuffer.get();
        if (buffer == nullptr) return;
    }
    if (!_copyPlainText(buffer, text.ptr(), limit)) {
        std::size_t const bytes = _narrow(buffer, text.ptr(), limit);
        if (bytes == 0 || bytes == MULTIBYTE_FAILED) return;
        buffer[bytes] = '\0';
    }
    copy = buffer;
}
