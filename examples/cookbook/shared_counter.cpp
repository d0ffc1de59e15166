/// Adds to a number that processes share. The lock excludes the others and outlives nobody, and the
/// number is replaced whole, so that a process may be killed at any moment.
#include <cstdio>

#include <portinglayer/file_locks.h>
#include <portinglayer/files.h>
#include <portinglayer/replacements.h>

static int add(unsigned int amount, unsigned int& total) {
    PFileLock lock;
    int result = lock.lock(L"counter.lock", 5'000);
    if (result != PERR_OK) return result;

    PFile file;
    PString line(L"0", 1);  // what a missing file stands for
    if (file.popen(L"counter", PFile::OPEN_READ, PFile::UNLOCKED) == PERR_OK)
        result = file.preadLine(line);
    if (result == PERR_OK) result = PUtils::strToUint32(line, total);
    if (result != PERR_OK) return result;
    total += amount;

    PReplacement next;
    result = PUtils::uint32ToStr(total, line);
    if (result == PERR_OK) result = next.begin(L"counter");
    if (result == PERR_OK) result = next.writeLine(line);
    return result == PERR_OK ? next.commit() : result;
}

int main() {
    unsigned int total = 0;
    int result = PERR_OK;
    for (int i = 0; i < 20 && result == PERR_OK; ++i) result = add(1, total);
    std::printf("%u: %s\n", total, perrorName(result));
    return result == PERR_OK ? 0 : 1;
}
