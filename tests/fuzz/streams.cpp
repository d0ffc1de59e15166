#include <algorithm>
#include <clocale>
#include <cstdint>
#include <cstdlib>
#include <stdexcept>

#include <portinglayer/data_streams.h>

static bool operator==(PTargetInfo const& a, PTargetInfo const& b) {
    return a.targetId.name == b.targetId.name && a.targetId.id == b.targetId.id &&
           a.address.primary == b.address.primary && a.address.secondary == b.address.secondary;
}

namespace {

using Bytes = std::vector<unsigned char>;

struct Read {
    std::vector<PString> texts{PLiteral(L"kept")};
    std::vector<PTargetInfo> records{{{texts[0], 42}, {texts[0], texts[0]}}};

    bool operator==(Read const&) const = default;
};

/// The format read in the plainest way. Throws the code of what fails.
struct Model {
    Bytes const& data;
    unsigned long at;
    Read read{};

    void need(unsigned long n) const {
        if (at > data.size() || n > data.size() - at) throw int{PERR_DATA_SHORT};
    }
    void marker(unsigned char expected) {
        need(1);
        if (data[at++] != expected) throw int{PERR_DATA_MARKER};
    }
    unsigned long number() {
        need(4);
        unsigned long value = 0;
        for (int i = 0; i < 4; ++i) value = value << 8U | data[at++];
        return value;
    }
    unsigned long tagged(unsigned char tag) {
        need(5);
        if (data[at] != tag) throw int{PERR_DATA_MARKER};
        ++at;
        return number();
    }
    PString text() {
        unsigned long const n = tagged(0x85);
        need(n);
        std::string const bytes(reinterpret_cast<char const*>(data.data()) + at, n);
        at += n;
        std::wstring wide(n, L'\0');
        unsigned long const converted = mbstowcs(wide.data(), bytes.c_str(), n);
        if (n != 0 && (converted == 0 || converted > n)) throw int{PERR_DATA_DECODE};
        return {wide.c_str(), converted};
    }
    void string(PString& to) {
        marker(0x09);
        to = text();
    }
    void strings() {
        marker(0x89);
        unsigned long const n = number();
        if (n == 0) need(1);
        // One pass more than there are bytes: by then nothing is left to change.
        for (unsigned long left = std::min(n, data.size() + 1); left > 0; --left) try {
                read.texts.push_back(text());
            } catch (int code) {
                if (code == PERR_DATA_DECODE || left == 1) throw;
            }
    }
    void record(PTargetInfo& to) {
        string(to.targetId.name);
        to.targetId.id = static_cast<unsigned int>(tagged(0x07));
        string(to.address.primary);
        string(to.address.secondary);
    }
    void records() {
        for (unsigned long n = tagged(0x07); n > 0; --n) {
            PTargetInfo next;
            record(next);
            read.records.push_back(next);
        }
    }
    int step(unsigned int operation) try {
        if (operation == 0) strings();
        if (operation == 1) records();
        if (operation == 2) record(read.records[0]);
        return PERR_OK;
    } catch (int code) {
        return code;
    }
};

int _step(PDataReader& reader, unsigned int operation, Read& read) {
    if (operation == 0) return reader.readStrings(read.texts);
    if (operation == 1) return PDataFormaterUtils::readPTargetInfoArray(reader, read.records);
    return PDataFormaterUtils::readPTargetInfo(reader, read.records[0]);
}

std::string _told(unsigned int operation, int code, unsigned long offset) {
    char const* const names[] = {"readStrings", "readPTargetInfoArray", "readPTargetInfo"};
    return names[operation] + std::string(" gives ") + perrorName(code) + " and stops at byte " +
           std::to_string(offset);
}

}  // namespace

/// Byte 0 picks the locale, the next 8 bytes are operations; the stream follows.
extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* input, std::size_t size) {
    if (size < 9) return 0;
    char const* const locales[] = {"C", "C.UTF-8", "SHIFT_JIS"};  // the last is not everywhere
    setlocale(LC_CTYPE, locales[input[0] % 3]);
    Bytes const stream(input + 9, input + size);
    PDataReader reader(stream);
    for (std::size_t i = 1; i < 9; ++i) {
        // Some start near the beginning or near 2^64.
        if (input[i] >= 200) reader.setOffset(input[i] - 220UL);
        Model model{stream, reader.getOffset()};
        unsigned int const operation = input[i] % 3;
        Read read;
        int const code = _step(reader, operation, read);
        int const expected = model.step(operation);
        if (code != expected || read != model.read || reader.getOffset() != model.at)
            throw std::runtime_error(_told(operation, code, reader.getOffset()) +
                                     ", expected: " + _told(operation, expected, model.at));
    }
    return 0;
}
