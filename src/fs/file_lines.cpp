#include <cstring>
#include <cwchar>
#include <memory>
#include <new>
#include <utility>

#include <portinglayer/files.h>

#include "text/narrow_text.h"

namespace {

constexpr unsigned long CHUNK_BYTES = 128;
constexpr unsigned long FIRST_CAPACITY = 2 * CHUNK_BYTES;
constexpr int FROM_CURRENT = 1;

/// What one read gives of a line. A failed one gives nothing and ends the line.
struct Piece {
    char bytes[CHUNK_BYTES];
    unsigned long length;  ///< without the line feed
    bool endsLine;
};

/// Reads on to the end of the line or of a chunk, and leaves the position behind what it gives.
int _readPiece(PFile& file, Piece& piece) {
    piece.length = 0;
    piece.endsLine = true;
    int const result = file.pread(piece.bytes, CHUNK_BYTES, piece.length);
    if (result != PERR_OK) return result;

    auto const* const feed = static_cast<char const*>(memchr(piece.bytes, '\n', piece.length));
    piece.endsLine = feed != nullptr;
    if (feed == nullptr) return PERR_OK;
    char const* const end = piece.bytes + piece.length;
    piece.length = static_cast<unsigned long>(feed - piece.bytes);
    if (feed + 1 != end)
        (void)file.pseek(feed + 1 - end, FROM_CURRENT);  // a pipe cannot: its bytes are lost
    return PERR_OK;
}

/// The characters of a line as they are collected: on the stack until they are too many for it.
class CollectedLine {
public:
    bool empty() const { return count == 0; }

    /// Adds bytes by sign extension, without carriage returns. False when no memory is left.
    bool append(Piece const& piece);

    /// The terminated text.
    wchar_t const* text() const { return chars; }

private:
    bool grow();

    wchar_t onStack[FIRST_CAPACITY];
    std::unique_ptr<wchar_t[]> grown;
    wchar_t* chars = onStack;
    unsigned long count = 0;
    unsigned long capacity = FIRST_CAPACITY;
};

bool CollectedLine::append(Piece const& piece) {
    if (capacity - count <= piece.length && !grow()) return false;
    for (char const* byte = piece.bytes; byte != piece.bytes + piece.length; ++byte)
        if (*byte != '\r') chars[count++] = static_cast<signed char>(*byte);
    chars[count] = L'\0';
    return true;
}

/// Doubles the capacity, by a chunk and a terminator at least: a line is copied about once in all.
bool CollectedLine::grow() {
    std::unique_ptr<wchar_t[]> wider(new (std::nothrow) wchar_t[2 * capacity]);
    if (!wider) return false;
    wmemcpy(wider.get(), chars, count);
    grown = std::move(wider);
    chars = grown.get();
    capacity *= 2;
    return true;
}

}  // namespace

int PFile::preadLine(PString& line) {
    CollectedLine collected;
    Piece piece;
    do {
        int const result = _readPiece(*this, piece);
        if (result != PERR_OK && collected.empty()) return result;
        if (!collected.append(piece)) return PERR_NO_MEMORY;
    } while (!piece.endsLine);

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
