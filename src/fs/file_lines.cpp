#include <cstring>
#include <cwchar>
#include <memory>
#include <new>
#include <utility>

#include <portinglayer/files.h>

#include "text/narrow_text.h"

namespace {

constexpr unsigned long CHUNK_BYTES = 128;
constexpr unsigned long GROWTH = 128;
constexpr unsigned long FIRST_CAPACITY = 5 + GROWTH;
constexpr int FROM_CURRENT = 1;

/// The characters of a line as they are collected: on the stack until they are too many for it.
class CollectedLine {
public:
    bool empty() const { return count == 0; }

    /// Adds bytes by sign extension, without carriage returns. False when no memory is left.
    bool append(char const* from, char const* end);

    /// The terminated text.
    wchar_t const* text();

private:
    bool grow();

    wchar_t first[FIRST_CAPACITY];
    std::unique_ptr<wchar_t[]> grown;
    wchar_t* chars = first;
    unsigned long count = 0;
    unsigned long capacity = FIRST_CAPACITY;
};

bool CollectedLine::append(char const* from, char const* end) {
    for (; from != end; ++from) {
        if (*from == '\r') continue;
        chars[count++] = static_cast<signed char>(*from);
        if (count == capacity && !grow()) return false;
    }
    return true;
}

bool CollectedLine::grow() {
    std::unique_ptr<wchar_t[]> wider(new (std::nothrow) wchar_t[capacity + GROWTH]);
    if (!wider) return false;
    wmemcpy(wider.get(), chars, count);
    grown = std::move(wider);
    chars = grown.get();
    capacity += GROWTH;
    return true;
}

wchar_t const* CollectedLine::text() {
    chars[count] = L'\0';  // there is room: a full buffer grew
    return chars;
}

}  // namespace

int PFile::preadLine(PString& line) {
    CollectedLine collected;
    char chunk[CHUNK_BYTES];
    for (unsigned long got = 0;;) {
        int const result = pread(chunk, CHUNK_BYTES, got);
        if (result != PERR_OK) {
            if (collected.empty()) return result;
            break;
        }
        char const* const end = chunk + got;
        auto const* const feed = static_cast<char const*>(memchr(chunk, '\n', got));
        if (!collected.append(chunk, feed != nullptr ? feed : end)) return PERR_NO_MEMORY;
        if (feed == nullptr) continue;

        if (feed + 1 != end)
            (void)pseek(feed + 1 - end, FROM_CURRENT);  // a pipe cannot: its bytes are lost
        break;
    }
    // Handed over as terminated text: a zero byte in the line cuts it.
    PString text(collected.text(), P_WHOLE_STRING);
    if (text.ptr() == nullptr) return PERR_NO_MEMORY;
    line = std::move(text);
    return PERR_OK;
}

int PFile::pwriteLine(PLiteral const& line) {
    unsigned long done = 0;
    NarrowText const text(line);
    if (text.get() != nullptr) {
        int const result = pwrite(text.get(), strlen(text.get()), done);
        if (result != PERR_OK) return result;
    }
    return pwrite("\n", 1, done);
}
