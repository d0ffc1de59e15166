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
    unsigned long number = 42;
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
        return {wide.c_str(), converted};
    }
    void string(PString& to) {
        marker(0x09);
        to = text();
    }
    void strings() {
        marker(0x89);
        unsigned long const n = number(0);
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
        to.targetId.id = static_cast<unsigned int>(number(0x07));
        string(to.address.primary);
        string(to.address.secondary);
    }
    void records() {
        for (unsigned long n = number(0x07); n > 0; --n) {
            PTargetInfo next;
            record(next);
            read.records.push_back(next);
        }
    }
    int step(unsigned int operation) try {
        if (operation == 0) strings();
        if (operation == 1) records();
        if (operation == 2) record(read.records[0]);
        if (operation > 2) read.number = number(0, 2UL << (operation - 3) / 2);
        return PERR_OK;
    } catch (int code) {
        return code;
    }
};

constexpr char const* OPERATIONS[] = {"readStrings",     "readPTargetInfoArray",
                                      "readPTargetInfo", "getShort",
                                      "getWord",         "getInt",
                                      "getDword",        "getLong",
                                      "getQword"};

int _step(PDataReader& reader, unsigned int operation, Read& read) {
    auto const integer = [&](auto value, auto get) {
        int const code = (reader.*get)(value);
        read.number = static_cast<std::make_unsigned_t<decltype(value)>>(value);
        return code;
    };
    switch (operation) {
    case 0: return reader.readStrings(read.texts);
    case 1: return PDataFormaterUtils::readPTargetInfoArray(reader, read.records);
    case 2: return PDataFormaterUtils::readPTargetInfo(reader, read.records[0]);
    case 3: return integer(std::int16_t{42}, &PDataReader::getShort);
    case 4: return integer(std::uint16_t{42}, &PDataReader::getWord);
    case 5: return integer(42, &PDataReader::getInt);
    case 6: return integer(42U, &PDataReader::getDword);
    case 7: return integer(42LL, &PDataReader::getLong);
    default: return integer(42ULL, &PDataReader::getQword);
    }
}

/// The bytes of a text as a stream carries them, made in the plainest way; none where it is refused.
Bytes _plainBytes(std::wstring const& text) {
    std::string made(text.size() + 8, '\0');
    std::size_t const converted = wcstombs(made.data(), text.c_str(), text.size());
    if (converted == 0 || converted > text.size()) return {};
    made.resize(converted);
    made.resize(text.size());
    return {made.begin(), made.end()};
}

/// Writes a text made of bytes: of ASCII, and of what takes one to four bytes or none.
void _checkWriting(Bytes const& from) {
    static wchar_t const others[] = L"\u00a2\u00e9\u3042\u20ac\U0001f600\xd800";
    std::wstring text;
    for (unsigned char const byte : from)
        text += byte < 0xC0 ? static_cast<wchar_t>(byte % 0x80) : others[byte % 6];
    Bytes bytes;
    int const code = PDataWriter(bytes).decodeUtf8({text.data(), text.size()}, bytes);
    if (bytes != _plainBytes(text) || code != (bytes.empty() ? PERR_DATA_ENCODE : PERR_OK))
        throw std::runtime_error("another result of writing");
}

}  // namespace

/// Byte 0 picks the locale, the next 8 bytes are operations and a text to write; the stream follows.
extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* input, std::size_t size) {
    if (size < 9) return 0;
    char const* const locales[] = {"C", "C.UTF-8", "SHIFT_JIS"};  // the last is not everywhere
    setlocale(LC_CTYPE, locales[input[0] % 3]);
    Bytes const operations(input + 1, input + 9);
    _checkWriting(operations);
    Bytes stream(input + 9, input + size);
    PDataReader reader(stream);
    for (unsigned char const operation : operations) {
        // Some start near the beginning or near 2^64, some find a stream that has grown.
        if (operation >= 200) reader.setOffset(operation - 220UL);
        if (operation % 16 == 0) PDataWriter(stream).appendByte(operation);
        Model model{stream, reader.getOffset()};
        std::string const where =
            OPERATIONS[operation % 9] + std::string(" at ") + std::to_string(model.at);
        Read read;
        if (_step(reader, operation % 9, read) != model.step(operation % 9) || read != model.read ||
            reader.getOffset() != model.at)
            throw std::runtime_error("another result of " + where);
    }
    return 0;
}
