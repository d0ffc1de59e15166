#include <utility>

#include <portinglayer/data_streams.h>

#include "data/growth.h"
#include "data/wire.h"

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
    for (; result == PERR_OK && count > 0; --count) {
        PTargetInfo info;
        result = readPTargetInfo(reader, info);
        if (result == PERR_OK) result = _appendRead(list, std::move(info));
    }
    return result;
}
