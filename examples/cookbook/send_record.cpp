/// Sends a record to another program and reads the one that comes back. Bytes are the same on every
/// machine; a padded text comes through whole where the locale is one of UTF-8.
#include <clocale>
#include <cstdio>
#include <string>
#include <vector>

#include <portinglayer/commands.h>
#include <portinglayer/data_streams.h>
#include <portinglayer/utf8.h>

int main() {
    setlocale(LC_CTYPE, "C.UTF-8");
    PString name;
    std::vector<unsigned char> sent;
    PDataWriter writer(sent);
    writer.appendDword(4711);
    int result = PUtf8::padded(L"Zo\x00eb", name);
    if (result == PERR_OK) result = writer.writeString(name);

    PCommand other(L"cat");  // stands for the program at the other end
    std::string answer, errors;
    PEnding ending{};
    if (result == PERR_OK)
        result = other.run(std::string(sent.begin(), sent.end()), answer, errors, ending, 5'000);

    std::vector<unsigned char> const received(answer.begin(), answer.end());
    PDataReader reader(received);
    unsigned int id = 0;
    if (result == PERR_OK) result = reader.getDword(id);
    if (result == PERR_OK) result = reader.readString(name);
    if (result != PERR_OK) return std::printf("no record: %s\n", perrorName(result)), 1;
    std::printf("record %u of %lu characters\n", id, name.len());
    return 0;
}
