// Reading lines: many short ones, and one that is long.

#include "operation.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstring>
#include <fstream>

#include <portinglayer/files.h>

#include "bare_lines.h"
#include "scratch.h"

namespace {

/// The number of characters in all lines of a file.
std::size_t _readBare(Name const& name) {
    int const fd = open(name.c(), O_RDONLY | O_CLOEXEC);
    std::size_t characters = 0;
    for (std::wstring line; bareLine(fd, line);) characters += line.size();
    close(fd);
    return characters;
}

std::size_t _readStandard(Name const& name) {
    std::ifstream file(name.narrow);
    std::size_t characters = 0;
    for (std::string line; std::getline(file, line);) characters += line.size();
    return characters;
}

std::size_t _readOurs(Name const& name) {
    PFile file;
    (void)file.popen(name.ours, PFile::OPEN_READ, PFile::UNLOCKED);
    std::size_t characters = 0;
    for (PString line; file.preadLine(line) == PERR_OK;) characters += line.len();
    return characters;
}

void _addReading(std::string const& title, unsigned long lines, unsigned long length,
                 Limits const& limits) {
    auto const name = std::make_shared<Name>("lines" + std::to_string(length));
    std::string content;
    for (unsigned long i = 0; i < lines; ++i) content += std::string(length, 'x') + "\n";
    makeFile(name->narrow, content);

    Operation op(title, limits, lines * length, "read, lseek");
    op.way(BARE, [=] { return _readBare(*name); });
    op.way("std::getline", [=] { return _readStandard(*name); });
    WITH_QT(op.way("Qt", [=] {
        QFile file(name->qt);
        (void)file.open(QIODevice::ReadOnly);
        QTextStream stream(&file);
        qsizetype characters = 0;
        for (QString line; stream.readLineInto(&line);) characters += line.size();
        return characters;
    }));
    WITH_APR(op.way("APR", [=, line = std::vector<char>(length + 2)]() mutable {
        AprPool const pool;
        apr_file_t* file = nullptr;
        auto const flags = APR_FOPEN_READ | APR_FOPEN_BUFFERED;
        apr_file_open(&file, name->c(), flags, APR_OS_DEFAULT, pool.pool);
        std::size_t characters = 0;
        while (apr_file_gets(line.data(), static_cast<int>(line.size()), file) == APR_SUCCESS)
            characters += strlen(line.data()) - 1;
        apr_file_close(file);
        return characters;
    }));
    op.way(OURS, [=] { return _readOurs(*name); });
}

}  // namespace

void addLines() {
    _addReading("read 10000 lines", 10000, 45, {.toBare = 1.15});
    _addReading("read a line of 8192", 1, 8192, {});
    _addReading("read a line of 131072", 1, 131072, {.growth = 24});
    _addReading("read a line of 2097152", 1, 2097152, {.growth = 24});
}
