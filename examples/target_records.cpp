/// Writes a list of target records into a file, reads the file back and shows both: the bytes, and
/// the records made from them. The system is called through the library only.

#include <clocale>
#include <cstdio>
#include <vector>

#include <portinglayer/data_streams.h>
#include <portinglayer/files.h>

using Bytes = std::vector<unsigned char>;

/// A record is a plain structure: an identifier (text and number) and an address (two texts).
static PTargetInfo makeTarget(wchar_t const* name, unsigned int id, wchar_t const* host,
                              wchar_t const* alternative) {
    PTargetInfo target;
    target.targetId.name = name;
    target.targetId.id = id;
    target.address.primary = host;
    target.address.secondary = alternative;
    return target;
}

/// A write may take fewer bytes than it was given, so it is repeated until all are taken.
static int save(PFile& file, Bytes const& data) {
    auto const* const bytes = reinterpret_cast<char const*>(data.data());
    for (unsigned long written = 0, step = 0; written < data.size(); written += step) {
        int const result = file.pwrite(bytes + written, data.size() - written, step);
        if (result != PERR_OK) return result;
    }
    return PERR_OK;
}

/// A read may give fewer bytes than there is room for; the end of the file has its own code.
static int load(PFile& file, Bytes& data) {
    char block[4096];
    int result = file.pseek(0, SEEK_SET);
    while (result == PERR_OK) {
        unsigned long step = 0;
        result = file.pread(block, sizeof block, step);
        data.insert(data.end(), block, block + step);
    }
    return result == PERR_END_OF_FILE ? PERR_OK : result;
}

static void dump(Bytes const& data) {
    for (size_t line = 0; line < data.size(); line += 16) {
        std::printf("%04zx ", line);
        for (size_t i = line; i < data.size() && i < line + 16; ++i) std::printf(" %02x", data[i]);
        std::printf("\n");
    }
}

/// An empty text may have no characters to point at.
static wchar_t const* shown(PString const& text) {
    return text.len() == 0 ? L"-" : text.ptr();
}

static void show(std::vector<PTargetInfo> const& targets) {
    for (PTargetInfo const& target : targets)
        std::printf("%ls #%u at %ls, else %ls\n", shown(target.targetId.name), target.targetId.id,
                    shown(target.address.primary), shown(target.address.secondary));
}

static int failed(char const* what, int result) {
    std::printf("%s: %s\n", what, perrorName(result));
    return 1;
}

/// Encodes, saves, loads and decodes, with `file` open for reading and writing.
static int roundTrip(PFile& file) {
    std::vector<PTargetInfo> const targets{makeTarget(L"gateway", 1, L"10.0.0.1", L"fe80::1"),
                                           makeTarget(L"printer", 258, L"10.0.0.7", L"")};

    // A writer appends to a vector that stays ours.
    Bytes encoded;
    PDataWriter writer(encoded);
    int result = PDataFormaterUtils::writePTargetInfoArray(writer, targets);
    if (result != PERR_OK) return failed("encoding", result);

    result = save(file, encoded);
    if (result != PERR_OK) return failed("saving", result);

    Bytes loaded;
    result = load(file, loaded);
    if (result != PERR_OK) return failed("loading", result);
    dump(loaded);

    // A reader walks over a vector. It trusts nothing: what is cut or damaged gives a code.
    PDataReader reader(loaded);
    std::vector<PTargetInfo> decoded;
    result = PDataFormaterUtils::readPTargetInfoArray(reader, decoded);
    if (result != PERR_OK) return failed("decoding", result);
    show(decoded);
    return 0;
}

int main() {
    setlocale(LC_ALL, "");  // texts are converted in the program's locale; the library sets none

    PString prefix = PSystem::getTempDir();
    prefix += L"target_records-";

    PTempFile file;
    unsigned int const mode = PFile::OPEN_CREATE | PFile::OPEN_READ | PFile::OPEN_WRITE;
    int result = file.popen(prefix, mode, 0);  // 0: locked for this program alone
    if (result != PERR_OK) return failed("temporary file", result);
    PString name;
    result = file.pgetName(name);

    int const exitCode = roundTrip(file);
    (void)file.pclose();  // nothing depends on it any more: the file goes
    if (result == PERR_OK) result = PFile::pdelete(name);
    return result == PERR_OK ? exitCode : failed("removing", result);
}
