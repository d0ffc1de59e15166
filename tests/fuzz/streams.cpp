#include "streams.h"

#include <algorithm>
#include <clocale>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <stdexcept>

#include <portinglayer/data_streams.h>

static bool operator==(PTargetInfo const& a, PTargetInfo const& b) {
    return a.targetId.name == b.targetId.name && a.targetId.id == b.targetId.id &&
           a.address.primary == b.address.primary && a.address.secondary == b.address.secondary;
}

namespace {

using R = PDataReader;
using W = PDataWriter;
using U = PDataFormaterUtils;

struct Read {
    unsigned long number = 42;
    std::vector<PString> texts{};
    std::vector<PTargetInfo> records{};
    PTargetInfo record{{PLiteral(L"kept"), 42}, {PLiteral(L"kept"), PLiteral(L"kept")}};

    bool operator==(Read const&) const = default;
};

/// Throws the code of what fails.
struct Model {
    Bytes const& data;
    unsigned long at;
    Read read{};
    bool plain = true;  // one byte for each character, nothing skipped: makes the same bytes again

    void need(unsigned long n) const {
        if (at > data.size() || n > data.size() - at) throw int{PERR_DATA_SHORT};
    }
    void marker(unsigned char expected) {
        need(1);
        if (data[at++] != expected) throw int{PERR_DATA_MARKER};
    }
    unsigned long number(unsigned char tag, unsigned long width = 4) {
        need(width + (tag != 0 ? 1 : 0));
        if (tag != 0 && data[at] != tag) throw int{PERR_DATA_MARKER};
        at += tag != 0 ? 1 : 0;
        unsigned long value = 0;
        for (; width > 0; --width) value = value << 8U | data[at++];
        return value;
    }
    PString text() {
        unsigned long const n = number(0x85);
        need(n);
        std::string const bytes(reinterpret_cast<char const*>(data.data()) + at, n);
        at += n;
        std::wstring wide(n, L'\0');
        unsigned long const converted = mbstowcs(wide.data(), bytes.c_str(), n);
        if (n != 0 && (converted == 0 || converted > n)) throw int{PERR_DATA_DECODE};
        plain = plain && converted == n;
        return {wide.c_str(), converted};
    }
    void strings() {
        marker(0x89);
        unsigned long const n = number(0);
        if (n == 0) need(1);
        // One pass more than there are bytes: by then nothing is left to change.
        for (unsigned long left = std::min(n, data.size() + 1); left > 0; --left) try {
                read.texts.push_back(text());
            } catch (int code) {
                plain = false;
                if (code == PERR_DATA_DECODE || left == 1) throw;
            }
    }
    void string(PString& to) {
        marker(0x09);
        to = text();
    }
    void target(PTargetID& to) {
        string(to.name);
        to.id = static_cast<unsigned int>(number(0x07));
    }
    void address(PAddress& to) {
        string(to.primary);
        string(to.secondary);
    }
    void records() {
        for (unsigned long n = number(0x07); n > 0; --n) {
            PTargetInfo record;
            target(record.targetId);
            address(record.address);
            read.records.push_back(record);
        }
    }
    int step(unsigned int operation) try {
        if (operation == 0) strings();
        if (operation == 1) records();
        if (operation == 2 || operation == 4) target(read.record.targetId);
        if (operation == 2 || operation == 3) address(read.record.address);
        if (operation == 5) string(read.record.targetId.name);
        if (operation > 5) read.number = number(0, 2UL << (operation - 6) / 2);
        return PERR_OK;
    } catch (int code) {
        return code;
    }
};

/// What the library reads and, where it reads without failure, writes again.
int _step(R& reader, unsigned int operation, Read& read, Bytes& again) {
    auto const both = [&](auto&& value, auto get, auto put) {
        using T = std::decay_t<decltype(value)>;
        W writer(again);
        int const code = std::invoke(get, reader, value);
        if (code == PERR_OK) (void)std::invoke(put, writer, value);  // the bytes are compared
        if constexpr (std::is_integral_v<T>)
            read.number = static_cast<std::make_unsigned_t<T>>(value);
        return code;
    };
    auto& [target, address] = read.record;
    switch (operation) {
    case 0: return both(read.texts, &R::readStrings, &W::writeStrings);
    case 1: return both(read.records, U::readPTargetInfoArray, U::writePTargetInfoArray);
    case 2: return both(read.record, U::readPTargetInfo, U::writePTargetInfo);
    case 3: return both(address, U::readPAddress, U::writePAddress);
    case 4: return both(target, U::readPTargetID, U::writePTargetID);
    case 5: return both(target.name, &R::readString, &W::writeString);
    case 6: return both(std::int16_t{42}, &R::getShort, &W::appendShort);
    case 7: return both(std::uint16_t{42}, &R::getWord, &W::appendWord);
    case 8: return both(42, &R::getInt, &W::appendInt);
    case 9: return both(42U, &R::getDword, &W::appendDword);
    case 10: return both(42LL, &R::getLong, &W::appendLong);
    default: return both(42ULL, &R::getQword, &W::appendQword);
    }
}

}  // namespace

std::string differenceFromModel(Bytes const& script, Bytes stream) {
    R reader(stream);
    for (unsigned char const operation : script) {
        // Most operations go on where the last one ended, some near the start or near 2^64, and
        // some find a stream that has grown.
        if (operation >= 200) reader.setOffset(operation - 220UL);
        if (operation % 16 == 0) W(stream).appendByte(operation);
        unsigned long const from = reader.getOffset();
        Model model{stream, from};
        Read read;
        Bytes again;
        int const code = model.step(operation % 12);
        if (_step(reader, operation % 12, read, again) != code || read != model.read ||
            reader.getOffset() != model.at ||
            (code == PERR_OK && model.plain &&
             again != Bytes(&stream[from], stream.data() + model.at)))
            return "operation " + std::to_string(operation) + " at " + std::to_string(from);
    }
    return "";
}

/// Byte 0 picks the locale, the next 8 bytes are operations; the stream follows.
extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* input, std::size_t size) {
    if (size < 9) return 0;
    setlocale(LC_CTYPE, input[0] % 2 == 0 ? "C" : "C.UTF-8");
    auto const difference = differenceFromModel({input + 1, input + 9}, {input + 9, input + size});
    if (!difference.empty()) throw std::runtime_error(difference);
    return 0;
}
