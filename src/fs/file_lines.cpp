#include <algorithm>
#include <cstring>
#include <memory>
#include <new>
#include <utility>

#include <portinglayer/files.h>

#include "text/adopted_text.h"
#include "text/allocation.h"
#include "text/narrow_text.h"

namespace {

constexpr unsigned long CHUNK_BYTES = 128;
constexpr unsigned long FIRST_CAPACITY = 4 * CHUNK_BYTES;
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

/// The bytes of a line as they are collected: on the stack until they are too many for it.
class CollectedLine {
public:
    bool empty() const { return count == 0; }

    /// Adds a piece without carriage returns, and a terminator. False when no memory is left.
    bool append(Piece const& piece);

    /// Makes `line` of the bytes by sign extension. A zero byte cuts it.
    int giveTo(PString& line) const;

private:
    bool grow();

    char onStack[FIRST_CAPACITY];
    std::unique_ptr<char[]> grown;
    char* bytes = onStack;
    unsigned long count = 0;
    unsigned long capacity = FIRST_CAPACITY;
};

bool CollectedLine::append(Piece const& piece) {
    if (capacity - count <= piece.length && !grow()) return false;
    char const* const end = piece.bytes + piece.length;
    char* const added = std::remove_copy(piece.bytes, end, bytes + count, '\r');
    *added = '\0';
    count = static_cast<unsigned long>(added - bytes);
    return true;
}

/// Doubles the capacity, which adds more than a piece and copies each byte about once in all.
bool CollectedLine::grow() {
    std::unique_ptr<char[]> wider(new (std::nothrow) char[2 * capacity]);
    if (!wider) return false;
    memcpy(wider.get(), bytes, count);
    grown = std::move(wider);
    bytes = grown.get();
    capacity *= 2;
    return true;
}

int CollectedLine::giveTo(PString& line) const {
    unsigned long const length = strlen(bytes);
    std::unique_ptr<wchar_t[]> text(_newText<wchar_t>(length, 0, 1));
    if (!text) return PERR_NO_MEMORY;
    std::copy_n(reinterpret_cast<signed char const*>(bytes), length + 1, text.get());
    AdoptedText::give(line, std::move(text), length);
    return PERR_OK;
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
    return collected.giveTo(line);
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
