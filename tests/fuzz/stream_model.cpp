#include "stream_model.h"

#include <algorithm>
#include <cstdlib>

#include <portinglayer/data_streams.h>

namespace {

using Bytes = std::vector<unsigned char>;
using Texts = std::vector<std::wstring>;

struct Model {
    Bytes const& data;
    unsigned long at = 0;
    Texts read{};

    bool has(unsigned long n) const { return at <= data.size() && n <= data.size() - at; }
    unsigned long take(unsigned long n) {
        unsigned long value = 0;
        for (; n > 0; --n) value = value << 8U | data[at++];
        return value;
    }
    int number(unsigned long n, unsigned char marker, unsigned long& value) {
        if (!has(n)) return PERR_DATA_SHORT;
        if (marker != 0 && data[at] != marker) return PERR_DATA_MARKER;
        if (marker != 0) ++at;
        value = take(marker != 0 ? n - 1 : n);
        return PERR_OK;
    }
    int text() {
        unsigned long n = 0;
        int const code = number(5, 0x85, n);
        if (code != PERR_OK || !has(n)) return code != PERR_OK ? code : PERR_DATA_SHORT;
        std::string bytes;
        while (bytes.size() < n) bytes += static_cast<char>(take(1));
        std::wstring wide(n, L'\0');
        auto const r = static_cast<long>(mbstowcs(wide.data(), bytes.c_str(), n));
        if (n != 0 && r <= 0) return PERR_DATA_DECODE;
        read.emplace_back(wide.c_str());
        return PERR_OK;
    }
    int string() {
        if (!has(1)) return PERR_DATA_SHORT;
        return take(1) == 0x09 ? text() : PERR_DATA_MARKER;
    }
    int strings() {
        unsigned long count = 0;
        if (!has(1)) return PERR_DATA_SHORT;
        if (take(1) != 0x89) return PERR_DATA_MARKER;
        if (number(4, 0, count) != PERR_OK) return PERR_DATA_SHORT;
        int code = count != 0 || has(1) ? PERR_OK : PERR_DATA_SHORT;
        // One pass more than there are bytes: by then nothing is left to change.
        for (count = std::min(count, data.size() + 1); count > 0 && code != PERR_DATA_DECODE;
             --count)
            code = text();
        return code;
    }
    int records() {
        unsigned long count = 0;
        int code = number(5, 0x07, count);
        for (; code == PERR_OK && count > 0; --count) {
            auto const whole = read.size();
            unsigned long id = 0;
            code = string();
            if (code == PERR_OK) code = number(5, 0x07, id);
            read.push_back(std::to_wstring(id));
            for (int i = 0; i < 2 && code == PERR_OK; ++i) code = string();
            if (code != PERR_OK) read.resize(whole);
        }
        return code;
    }
    int step(unsigned char operation) {
        unsigned long value = 42;
        if (operation % 5 == 1) return string();
        if (operation % 5 == 2) return strings();
        if (operation % 5 == 3) return records();
        int const code = number(operation % 5 == 0 ? 8 : 2, 0, value);
        read.push_back(std::to_wstring(value));
        return code;
    }
};

void _add(Texts& read, PString const& text) {
    read.emplace_back(text.len() == 0 ? L"" : text.ptr());
}

int _step(PDataReader& reader, unsigned char operation, Texts& read) {
    unsigned long long qword = 42;
    unsigned short word = 42;
    PString text(L"kept", 4);
    std::vector<PString> texts;
    std::vector<PTargetInfo> infos;
    int code = PERR_OK;
    switch (operation % 5) {
    case 0:
        code = reader.getQword(qword);
        read.push_back(std::to_wstring(qword));
        break;
    case 1:
        code = reader.readString(text);
        if (text != L"kept") _add(read, text);
        break;
    case 2: code = reader.readStrings(texts); break;
    case 3: code = PDataFormaterUtils::readPTargetInfoArray(reader, infos); break;
    default: code = reader.getWord(word); read.push_back(std::to_wstring(word));
    }
    for (PString const& element : texts) _add(read, element);
    for (PTargetInfo const& info : infos) {
        _add(read, info.targetId.name);
        read.push_back(std::to_wstring(info.targetId.id));
        _add(read, info.address.primary);
        _add(read, info.address.secondary);
    }
    return code;
}

/// Plain ASCII is lossless: a string item of it makes the same bytes when it is written back.
bool _writesBack(std::wstring const& text, unsigned char const* item, unsigned long size) {
    auto const ascii = [](wchar_t c) { return c < 128; };
    if (size != text.size() + 6 || !std::all_of(text.begin(), text.end(), ascii)) return true;
    Bytes again;
    return PDataWriter(again).writeString(PString(text.c_str(), text.size())) == PERR_OK &&
           again == Bytes(item, item + size);
}

}  // namespace

std::string differenceFromModel(std::vector<unsigned char> const& script,
                                std::vector<unsigned char> const& data) {
    PDataReader reader(data);
    for (unsigned char const operation : script) {
        // Most operations go on where the last one ended, some near the start or near 2^64.
        if (operation >= 200) reader.setOffset(operation - 220UL);
        Model model{data, reader.getOffset()};
        unsigned long const from = model.at;
        int const code = model.step(operation);
        Texts read;
        if (_step(reader, operation, read) != code || read != model.read ||
            reader.getOffset() != model.at ||
            (operation % 5 == 1 && code == PERR_OK &&
             !_writesBack(read.front(), &data[from], model.at - from)))
            return "operation " + std::to_string(operation) + " at " + std::to_string(from);
    }
    return "";
}
