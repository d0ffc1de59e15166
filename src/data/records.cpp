#include <utility>

#include <portinglayer/data_streams.h>

#include "data/wire.h"

/// Reads a marker and the 4 bytes behind it; consumes nothing unless both are there.
int PDataReader::getTagged(unsigned char tag, unsigned int& value) {
    if (_left(data, offset) < TAGGED_BYTES) return PERR_DATA_SHORT;
    unsigned char const* const item = data.data() + offset;
    if (item[0] != tag) return PERR_DATA_MARKER;
    value = _load<unsigned int>(item + 1);
    offset += TAGGED_BYTES;
    return PERR_OK;
}

int PDataWriter::appendTagged(unsigned char tag, unsigned int value) {
    unsigned char* const item = _extend(data, TAGGED_BYTES);
    if (item == nullptr) return PERR_NO_MEMORY;
    item[0] = tag;
    _store(item + 1, value);
    return PERR_OK;
}

PDataFormaterUtils::PDataFormaterUtils() = default;

PDataFormaterUtils::~PDataFormaterUtils() = default;

int PDataFormaterUtils::writePAddress(PDataWriter& writer, PAddress const& address) {
    int const result = writer.writeString(address.primary);
    return result == PERR_OK ? writer.writeString(address.secondary) : result;
}

int PDataFormaterUtils::readPAddress(PDataReader& reader, PAddress& address) {
    int const result = reader.readString(address.primary);
    return result == PERR_OK ? reader.readString(address.secondary) : result;
}

int PDataFormaterUtils::writePTargetID(PDataWriter& writer, PTargetID const& target) {
    int const result = writer.writeString(target.name);
    return result == PERR_OK ? writer.appendTagged(NUMBER_TAG, target.id) : result;
}

int PDataFormaterUtils::readPTargetID(PDataReader& reader, PTargetID& target) {
    int const result = reader.readString(target.name);
    return result == PERR_OK ? reader.getTagged(NUMBER_TAG, target.id) : result;
}

int PDataFormaterUtils::writePTargetInfo(PDataWriter& writer, PTargetInfo const& info) {
    int const result = writePTargetID(writer, info.targetId);
    return result == PERR_OK ? writePAddress(writer, info.address) : result;
}

int PDataFormaterUtils::readPTargetInfo(PDataReader& reader, PTargetInfo& info) {
    int const result = readPTargetID(reader, info.targetId);
    return result == PERR_OK ? readPAddress(reader, info.address) : result;
}

int PDataFormaterUtils::writePTargetInfoArray(PDataWriter& writer,
                                              std::vector<PTargetInfo> const& list) {
    int result = writer.appendTagged(NUMBER_TAG, static_cast<unsigned int>(list.size()));
    for (auto info = list.begin(); result == PERR_OK && info != list.end(); ++info)
        result = writePTargetInfo(writer, *info);
    return result;
}

int PDataFormaterUtils::readPTargetInfoArray(PDataReader& reader, std::vector<PTargetInfo>& list) {
    unsigned int count = 0;
    int result = reader.getTagged(NUMBER_TAG, count);
    for (unsigned int i = 0; result == PERR_OK && i < count; ++i) {
        PTargetInfo info;
        result = readPTargetInfo(reader, info);
        if (result != PERR_OK) break;
        try {
            list.push_back(std::move(info));
        } catch (std::bad_alloc const&) {
            result = PERR_NO_MEMORY;
        }
    }
    return result;
}
