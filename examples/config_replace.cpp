/// A configuration file that two processes change at the same time, while a third one reads it.
///
/// A PReplacement gives the reader whole files, and keeps the old one where a change fails. It doesn't
/// keep two writers from losing each other's change, so each holds a PFileLock, on another file, while
/// it reads, changes and replaces. usage: config_replace FOLDER
#include <clocale>
#include <cstdio>

#include <portinglayer/portinglayer.h>

namespace {

constexpr unsigned int ENTRIES = 100;
constexpr unsigned int CHANGES = 25;
constexpr unsigned int LIMIT_MILLISECONDS = 30'000;
constexpr int IS_FOLDER = 1;

/// PFile cuts names beyond ASCII, so they are padded for it.
int _open(PFile& file, PLiteral const& name) {
    PString padded;
    int const result = PUtf8::padded(name, padded);
    return result == PERR_OK ? file.popen(padded, PFile::OPEN_READ, PFile::UNLOCKED) : result;
}

/// Reads the file, in which every entry carries the revision. Half a file is PERR_BAD_FORMAT.
int _read(PLiteral const& name, unsigned int& revision) {
    PFile file;
    PString line, key, value;
    int result = _open(file, name);
    for (unsigned int i = 0; i < ENTRIES && result == PERR_OK; ++i) {
        unsigned int number = 0;
        if (file.preadLine(line) != PERR_OK) return PERR_BAD_FORMAT;
        result = PUtils::getKeyValue(line, key, value, L'=');
        if (result == PERR_OK) result = PUtils::strToUint32(value, number);
        if (i > 0 && number != revision) return PERR_BAD_FORMAT;
        revision = number;
    }
    return result;
}

/// Replaces the file: others see the old content or the new, and nothing between. What fails on the
/// way gives the replacement up.
int _replace(PLiteral const& name, unsigned int revision) {
    PReplacement file;
    PString entry;
    int result = file.begin(name);
    for (unsigned int i = 0; i < ENTRIES && result == PERR_OK; ++i) {
        result = PUtils::pformatString(entry, L"entry.%u = %u", i, revision);
        if (result == PERR_OK) result = file.writeLine(entry);
    }
    return result == PERR_OK ? file.commit() : result;
}

/// One change: nobody else changes the file between the reading and the replacing.
int _change(PLiteral const& name, PLiteral const& lockName) {
    PFileLock lock;
    unsigned int revision = 0;
    int result = lock.lock(lockName, LIMIT_MILLISECONDS);
    if (result == PERR_OK) result = _read(name, revision);
    if (result == PERR_OK) result = _replace(name, revision + 1);
    return result;  // the lock goes with its object
}

int _write(PLiteral const& name) {
    PString const lockName(PString(name) += L".lock");
    int result = PERR_OK;
    for (unsigned int i = 0; i < CHANGES && result == PERR_OK; ++i)
        result = _change(name, lockName);
    return result;
}

/// Reads for as long as the writers are at work; they have ended when the last change is there.
int _watch(PLiteral const& name) {
    unsigned int reads = 0, revision = 0;
    long long const start = PTime::getTickCount();
    while (revision < 2 * CHANGES) {
        int const result = _read(name, revision);
        if (result != PERR_OK) return result;
        if (PTime::getTickCountDiff(start, PTime::getTickCount()) > LIMIT_MILLISECONDS) break;
        ++reads;
    }
    std::printf("read %u times, whole each time; revision %u\n", reads, revision);
    return PERR_OK;
}

/// This program once more, as a writer; whatever the folder's name holds is one argument.
int _start(PCommand& writer, PLiteral const& folder) {
    int result = writer.addArgument(folder);
    if (result == PERR_OK) result = writer.addArgument(L"writer");
    return result == PERR_OK ? writer.start() : result;
}

/// Awaits a writer, at most for a while; one that did not start has no ending.
bool _endedWell(PCommand& writer) {
    PEnding ending{};
    int result = writer.wait(ending, LIMIT_MILLISECONDS);
    if (result == PERR_PROCESS_RUNNING) result = writer.end(ending, 0);
    return result == PERR_OK && ending.exitCode == 0;
}

bool _showChanges(PLiteral const& folder, PLiteral const& name) {
    PString self;
    int result = PProcess::getPath(PProcess::getCurrentPID(), self);
    PLiteral const program(self.ptr());  // zeros stand behind a path beyond ASCII
    PCommand first(program), second(program);
    if (result == PERR_OK) result = _replace(name, 0);
    if (result == PERR_OK) result = _start(first, folder);
    if (result == PERR_OK) result = _start(second, folder);
    if (result == PERR_OK) result = _watch(name);
    if (result != PERR_OK) std::fprintf(stderr, "config_replace: %s\n", perrorName(result));

    bool const firstEndedWell = _endedWell(first);
    bool const secondEndedWell = _endedWell(second);
    return result == PERR_OK && firstEndedWell && secondEndedWell;
}

bool _isFolder(PLiteral const& folder) {
    PString padded;
    if (PUtf8::padded(folder, padded) != PERR_OK) return false;
    return PFile::exists(padded) && PFile::check(padded, IS_FOLDER);
}

}  // namespace

int main(int argc, char** argv) {
    PString folder;
    (void)std::setlocale(LC_ALL, "C.UTF-8");  // for the names that are padded
    if (argc < 2 || PUtf8::decode(argv[1], P_WHOLE_STRING, folder) != PERR_OK ||
        !_isFolder(folder)) {
        std::fputs("usage: config_replace FOLDER, which exists, its name in UTF-8\n", stderr);
        return 2;
    }
    PString const name(PString(folder) += L"/settings.conf");
    bool const isGood = argc == 3 ? _write(name) == PERR_OK : _showChanges(folder, name);
    return isGood ? 0 : 1;
}
