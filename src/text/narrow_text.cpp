#include "text/narrow_text.h"

#include "text/allocation.h"
#include "text/ascii_block.h"
#include "text/multibyte.h"

namespace {

/// Copies a text of plain characters, as nearly all names are, and terminates it. False where the
/// conversion must decide.
bool _copyPlainText(char* out, wchar_t const* s, unsigned long length) {
    unsigned long done = 0;
    for (; length - done >= ASCII_BLOCK; done += ASCII_BLOCK)
        if (!_narrowPlainBlock(out + done, s + done)) return false;
    if (done > 0) {
        done = length - ASCII_BLOCK;  // the last block overlaps the one before
        if (!_narrowPlainBlock(out + done, s + done)) return false;
        done = length;
    }
    for (; done < length; ++done) {
        if (!_isPlain(s[done])) return false;
        out[done] = static_cast<char>(s[done]);
    }
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
