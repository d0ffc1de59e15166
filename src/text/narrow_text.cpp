#include "text/narrow_text.h"

#include "text/allocation.h"
#include "text/multibyte.h"

NarrowText::NarrowText(PLiteral const& text) {
    unsigned long const limit = text.len();
    if (text.ptr() == nullptr || limit == 0) return;

    char* buffer = shortBuffer;
    if (limit >= SHORT_BYTES) {
        longBuffer.reset(_newText<char>(limit, 0, 1));
        buffer = longBuffer.get();
        if (buffer == nullptr) return;
    }
    std::size_t const bytes = _narrow(buffer, text.ptr(), limit);
    if (bytes == 0 || bytes == MULTIBYTE_FAILED) return;
    buffer[bytes] = '\0';
    copy = buffer;
}
