#include <algorithm>
#include <memory>
#include <utility>

#include <portinglayer/data_streams.h>

#include "data/growth.h"
#include "data/wire.h"
#include "text/adopted_text.h"
#include "text/ascii_block.h"
#include "text/multibyte.h"

namespace {

/// A copy that ends with a zero byte, so that a character cut by the payload's end is not completed
/// from what follows it in the stream. Null without memory.
std::unique_ptr<char[]> _terminated(unsigned char const* payload, std::size_t count) {
    std::unique_ptr<char[]> copy(new (std::nothrow) char[count + 1]);
    if (copy) *std::copy_n(payload, count, copy.get()) = '\0';
    return copy;
}

/// Converts straight into the buffer that `text` keeps, unless fewer characters come out of it.
int _decode(unsigned char const* payload, std::size_t count, PString& text) {
    if (count == 0) return PERR_DATA_DECODE;
    std::unique_ptr<wchar_t[]> wide(new (std::nothrow) wchar_t[count + 1]);
    if (!wide) return PERR_NO_MEMORY;

    std::size_t converted = count;
    if (!_keepsAscii() ||
        !_convertAscii(wide.get(), reinterpret_cast<char const*>(payload), count)) {
        auto const bytes = _terminated(payload, count);
        if (!bytes) return PERR_NO_MEMORY;
        converted = _widen(wide.get(), bytes.get(), count);
        if (converted == 0 || converted == MULTIBYTE_FAILED) return PERR_DATA_DECODE;
    }
    if (converted < count) return text.set(wide.get(), converted);
    wide[count] = L'\0';
    AdoptedText::give(text, std::move(wide), count);
    return PERR_OK;
}

/// Converts into `count` bytes: as many as the text has characters, on purpose. Streams have always
/// carried that length, so longer multibyte forms are cut, and zeros stand behind them.
int _encode(PString const& text, unsigned char* to, std::size_t count) {
    if (count == 0) return PERR_DATA_ENCODE;
    if (_keepsAscii() && _convertAscii(reinterpret_cast<char*>(to), text.ptr(), count))
        return PERR_OK;
    std::size_t const converted = _narrow(reinterpret_cast<char*>(to), text.ptr(), count);
    if (converted == 0 || converted == MULTIBYTE_FAILED) return PERR_DATA_ENCODE;
    std::fill(to + converted, to + count, '\0');  // the C library may leave half a character there
    return PERR_OK;
}

/// Appends markers, the length and the payload of a text in one growth of the stream, or nothing.
template <std::size_t MARKERS>
int _appendText(std::vector<unsigned char>& data, unsigned char const (&markers)[MARKERS],
                PString const& text) {
    auto const count = static_cast<unsigned int>(text.len());
    std::size_t const old = data.size();
    unsigned char* to = _extend(data, MARKERS + sizeof count + count);
    if (to == nullptr) return PERR_NO_MEMORY;

    to = std::copy_n(markers, MARKERS, to);
    _store(to, count);
    int const result = text.len() == 0 ? PERR_OK : _encode(text, to + sizeof count, count);
    if (result != PERR_OK) data.resize(old);
    return result;
}

}  // namespace

int PDataReader::encodeUtf8(std::vector<unsigned char> const& bytes, PString& text) {
    return _decode(bytes.data(), static_cast<unsigned int>(bytes.size()), text);
}

int PDataReader::readString(PString& text) {
    std::size_t const present = _left(data, offset);
    if (present == 0) return PERR_DATA_SHORT;
    unsigned char const* const item = data.data() + offset;
    ++offset;  // the marker stays consumed, also where it is the wrong one
    if (item[0] != STRING_TAG) return PERR_DATA_MARKER;
    if (present < 1 + TAGGED_BYTES) return PERR_DATA_SHORT;
    if (item[1] != TEXT_TAG) return PERR_DATA_MARKER;

    auto const count = _load<unsigned int>(item + 2);
    offset += TAGGED_BYTES;
    if (count > present - 1 - TAGGED_BYTES) return PERR_DATA_SHORT;
    offset += count;
    if (count > 0) return _decode(item + 1 + TAGGED_BYTES, count, text);
    text.clear();
    return PERR_OK;
}

/// Reads one text block and appends it to the list.
int PDataReader::getElement(std::vector<PString>& list) {
    unsigned int count = 0;
    int const result = getTagged(TEXT_TAG, count);
    if (result != PERR_OK) return result;
    if (count > _left(data, offset)) return PERR_DATA_SHORT;

    unsigned char const* const payload = data.data() + offset;
    offset += count;
    PString element;
    int const decoded = count == 0 ? PERR_OK : _decode(payload, count, element);
    if (decoded != PERR_OK) return decoded;
    return _appendRead(list, std::move(element));
}

int PDataReader::readStrings(std::vector<PString>& list) {
    if (_left(data, offset) == 0) return PERR_DATA_SHORT;
    unsigned char const marker = data[offset++];
    if (marker != STRING_LIST_TAG) return PERR_DATA_MARKER;

    unsigned int count = 0;
    if (getDword(count) != PERR_OK) return PERR_DATA_SHORT;
    if (count == 0) return _left(data, offset) > 0 ? PERR_OK : PERR_DATA_SHORT;

    int result = PERR_OK;
    for (unsigned int i = 0; i < count; ++i) {
        unsigned long const before = offset;
        result = getElement(list);
        if (result == PERR_DATA_DECODE || result == PERR_NO_MEMORY) return result;
        // Behind the head of one that is cut short the next is looked for; where not even the head
        // was taken, every further try would meet the same bytes.
        if (offset == before) break;
    }
    return result;
}

int PDataWriter::decodeUtf8(PString const& text, std::vector<unsigned char>& bytes) {
    auto const count = static_cast<unsigned int>(text.len());
    if (count == 0) return PERR_DATA_ENCODE;

    std::size_t const old = bytes.size();
    unsigned char* const start = _extend(bytes, count);
    if (start == nullptr) return PERR_NO_MEMORY;
    int const result = _encode(text, start, count);
    if (result != PERR_OK) bytes.resize(old);
    return result;
}

int PDataWriter::writeString(PString const& text) {
    return _appendText(data, {STRING_TAG, TEXT_TAG}, text);
}

int PDataWriter::writeStrings(std::vector<PString> const& list) {
    int result = appendTagged(STRING_LIST_TAG, static_cast<unsigned int>(list.size()));
    for (auto text = list.begin(); result == PERR_OK && text != list.end(); ++text)
        result = _appendText(data, {TEXT_TAG}, *text);
    return result;
}
