/// Reads a file of UTF-8 lines. A line comes with one character for each byte, so it is put back into
/// bytes and decoded as a whole.
#include <cstdio>
#include <string>

#include <portinglayer/files.h>
#include <portinglayer/utf8.h>

static int decoded(PString const& line, PString& text) {
    std::string bytes;
    for (unsigned long i = 0; i < line.len(); ++i) bytes += static_cast<char>(line.ptr()[i]);
    return PUtf8::decode(bytes.data(), bytes.size(), text);
}

int main() {
    PFile file;
    int result = file.popen(L"names.txt", PFile::OPEN_READ, PFile::UNLOCKED);
    if (result != PERR_OK) return std::printf("names.txt: %s\n", perrorName(result)), 1;

    PString line, text;
    for (int number = 1; (result = file.preadLine(line)) == PERR_OK; ++number) {
        int const code = decoded(line, text);
        if (code == PERR_OK) std::printf("line %d has %lu characters\n", number, text.len());
        if (code != PERR_OK) std::printf("line %d: %s\n", number, perrorName(code));
    }
    return result == PERR_END_OF_FILE ? 0 : 1;  // the destructor closes the file
}
