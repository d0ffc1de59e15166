#include <cstring>
#include <memory>
#include <utility>

#include <portinglayer/data_streams.h>

#include "data/wire.h"
#include "text/adopted_text.h"
#include "text/multibyte.h"

namespace {

constexpr std::size_t SHORT_PAYLOAD = 256;  // bytes that are copied to the stack

/// A copy of a payload that ends with a zero byte, so that a character cut by the payload's end is
/// not completed from what follows it in the stream.
class TerminatedPayload {
public:
    TerminatedPayload(unsigned char const* payload, std::size_t count) {
        if (count >= SHORT_PAYLOAD) longCopy.reset(new (std::nothrow) char[count + 1]);
        copy = count >= SHORT_PAYLOAD ? longCopy.get() : shortCopy;
        if (copy == nullptr) return;
        memcpy(copy, payload, count);
        copy[count] = '\0';
    }
    TerminatedPayload(TerminatedPayload const&) = delete;
    TerminatedPayload& operator=(TerminatedPayload const&) = delete;

    char const* get() const { return copy; }  ///< null without memory for it

private:
    char* copy;
    std::unique_ptr<char[]> longCopy;
    char shortCopy[SHORT_PAYLOAD];
};

/// Converts straight into the buffer that `text` keeps, unless fewer characters come out of it.
int _decode(unsigned char const* payload, std::size_t count, PString& text) {
    if (count == 0) return PERR_DATA_DECODE;
    TerminatedPayload const bytes(payload, count);
    std::unique_ptr<wchar_t[]> wide(new (std::nothrow) wchar_t[count + 1]);
    if (bytes.get() == nullptr || !wide) return PERR_NO_MEMORY;

    std::size_t const converted = _widen(wide.get(), bytes.get(), count);
    if (converted == 0 || converted == MULTIBYTE_FAILED) return PERR_DATA_DECODE;
    wide[converted] = L'\0';
    if (converted < count) return text.set(wide.get(), converted);
    AdoptedText::give(text, std::move(wide), converted);
    return PERR_OK;
}

/// Converts into `count` zero bytes: as many as the text has characters, on purpose. Streams have
/// always carried that length, so longer multibyte forms are cut.
int _encode(PString const& text, unsigned char* to, std::size_t count) {
    if (count == 0) return PERR_DATA_ENCODE;
    std::size_t const converted = _narrow(reinterpret_cast<char*>(to), text.ptr(), count);
    return converted == 0 || converted == MULTIBYTE_FAILED ? PERR_DATA_ENCODE : PERR_OK;
}

/// The number of characters as a stream counts them.
unsigned int _wireLength(PString const& text) {
    return static_cast<unsigned int>(text.len());
}

/// Appends a text block behind `lead` bytes for the caller to fill, in one growth of the stream.
/// Null, with the stream as it was, on failure; `result` then tells which.
unsigned char* _appendBlock(std::vector<unsigned char>& data, std::size_t lead, PString const& text,
                            int& result) {
    unsigned int const count = _wireLength(text);
    std::size_t const old = data.size();
    unsigned char* const start = _extend(data, lead + TAGGED_BYTES + count);
    if (start == nullptr) {
        result = PERR_NO_MEMORY;
        return nullptr;
    }
    unsigned char* const block = start + lead;
    result = text.len() == 0 ? PERR_OK : _encode(text, block + TAGGED_BYTES, count);
    if (result != PERR_OK) {
        data.resize(old);
        return nullptr;
    }
    block[0] = TEXT_TAG;
    _store(block + 1, count);
    return start;
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
    try {
        list.push_back(std::move(element));
    } catch (std::bad_alloc const&) {
        return PERR_NO_MEMORY;
    }
    return PERR_OK;
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
        if (offset == before) break;  // every further try would meet the same bytes
    }
    return result;
}

int PDataWriter::decodeUtf8(PString const& text, std::vector<unsigned char>& bytes) {
    unsigned int const count = _wireLength(text);
    if (count == 0) return PERR_DATA_ENCODE;

    std::size_t const old = bytes.size();
    unsigned char* const start = _extend(bytes, count);
    if (start == nullptr) return PERR_NO_MEMORY;
    int const result = _encode(text, start, count);
    if (result != PERR_OK) bytes.resize(old);
    return result;
}

int PDataWriter::writeString(PString const& text) {
    int result = PERR_OK;
    unsigned char* const item = _appendBlock(data, 1, text, result);
    if (item != nullptr) item[0] = STRING_TAG;
    return result;
}

int PDataWriter::writeStrings(std::vector<PString> const& list) {
    int result = appendTagged(STRING_LIST_TAG, static_cast<unsigned int>(list.size()));
    for (auto text = list.begin(); result == PERR_OK && text != list.end(); ++text)
        (void)_appendBlock(data, 0, *text, result);  // the code tells enough
    return result;
}
