#include <portinglayer/data_streams.h>

#include "data/growth.h"
#include "data/wire.h"

namespace {

/// What callers are told; streams look the same on every machine.
int _endianness;

/// Sets the flag while the library is loaded, before any caller can run.
struct _EndiannessInitHelper {
    _EndiannessInitHelper() { _endianness = 1; }
    ~_EndiannessInitHelper() {}
};

_EndiannessInitHelper const _endiannessInit;

/// Flattened, since a call of the vector for each integer would take twice the time.
template <typename Integer>
[[gnu::flatten]] void _append(std::vector<unsigned char>& data, Integer value) {
    unsigned char bytes[sizeof value];
    _store(bytes, value);
    try {
        data.insert(data.end(), bytes, bytes + sizeof bytes);
    } catch (std::bad_alloc const&) {
        for (unsigned char const byte : bytes) data.push_back(byte);  // what finds room stays
    }
}

}  // namespace

int getEndianness() {
    return _endianness;
}

PDataFormater::PDataFormater() : offset(0) {
}

PDataFormater::~PDataFormater() = default;

void PDataFormater::setOffset(unsigned long value) {
    offset = value;
}

unsigned long PDataFormater::getOffset() {
    return offset;
}

PDataReader::PDataReader(std::vector<unsigned char> const& bytes) : data(bytes) {
}

PDataReader::~PDataReader() = default;

template <typename Integer>
int PDataReader::get(Integer& value) {
    if (_left(data, offset) < sizeof value) return PERR_DATA_SHORT;
    value = _load<Integer>(data.data() + offset);
    offset += sizeof value;
    return PERR_OK;
}

int PDataReader::getShort(short& value) {
    return get(value);
}

int PDataReader::getWord(unsigned short& value) {
    return get(value);
}

int PDataReader::getInt(int& value) {
    return get(value);
}

int PDataReader::getDword(unsigned int& value) {
    return get(value);
}

int PDataReader::getLong(long long& value) {
    return get(value);
}

int PDataReader::getQword(unsigned long long& value) {
    return get(value);
}

/// Reads a marker and the 4 bytes behind it; consumes nothing unless both are there.
int PDataReader::getTagged(unsigned char tag, unsigned int& value) {
    if (_left(data, offset) < TAGGED_BYTES) return PERR_DATA_SHORT;
    if (data[offset] != tag) return PERR_DATA_MARKER;
    value = _load<unsigned int>(data.data() + offset + 1);
    offset += TAGGED_BYTES;
    return PERR_OK;
}

PDataWriter::PDataWriter(std::vector<unsigned char>& bytes) : data(bytes) {
}

PDataWriter::~PDataWriter() = default;

void PDataWriter::appendByte(unsigned char value) {
    data.push_back(value);
}

void PDataWriter::appendShort(short value) {
    _append(data, value);
}

void PDataWriter::appendWord(unsigned short value) {
    _append(data, value);
}

void PDataWriter::appendInt(int value) {
    _append(data, value);
}

void PDataWriter::appendDword(unsigned int value) {
    _append(data, value);
}

void PDataWriter::appendLong(long long value) {
    _append(data, value);
}

void PDataWriter::appendQword(unsigned long long value) {
    _append(data, value);
}

int PDataWriter::appendTagged(unsigned char tag, unsigned int value) {
    unsigned char* const item = _extend(data, TAGGED_BYTES);
    if (item == nullptr) return PERR_NO_MEMORY;
    item[0] = tag;
    _store(item + 1, value);
    return PERR_OK;
}

void PDataWriter::eraseData() {
    data.clear();
}
