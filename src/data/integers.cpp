#include <portinglayer/data_streams.h>

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

/// Stays out of what is flattened below: few appends come here.
[[gnu::noinline]] void _appendGrowing(std::vector<unsigned char>& data, unsigned char byte) {
    data.push_back(byte);
}

/// Flattened: appending where room is left must not cost the vector's call for making room.
template <typename Integer>
[[gnu::flatten]] void _append(std::vector<unsigned char>& data, Integer value) {
    unsigned char bytes[sizeof value];
    _store(bytes, value);
    if (data.capacity() - data.size() >= sizeof bytes)
        data.insert(data.end(), bytes, bytes + sizeof bytes);
    else  // what finds room stays when there is no memory for the rest
        for (unsigned char const byte : bytes) _appendGrowing(data, byte);
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

void PDataWriter::eraseData() {
    data.clear();
}
