/// A configuration file that two processes change at the same time, while a third one reads it.
///
/// Safe writing gives the reader whole files: new content is written beside the old and moved over
/// it in one step. It doesn't keep two writers from losing each other's change, so each holds a lock
/// on another file while it reads, changes and replaces. usage: config_replace FOLDER
#include <clocale>
#include <cstdio>

#include <portinglayer/portinglayer.h>

namespace {

constexpr unsigned int ENTRIES = 100;
constexpr unsigned int CHANGES = 25;
constexpr long long LIMIT_MILLISECONDS = 30000;

/// Reads the file, in which every entry carries the revision. Half a file is PERR_BAD_FORMAT.
int _read(PLiteral const& name, unsigned int& revision) {
    PFile file;
    int result = file.popen(name, PFile::OPEN_READ, 1);  // 1: readers need no lock
    PString line;
    PString key;
    PString value;
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

/// Gives a replacement up: with the new file gone, closing moves nothing over the old one.
void _abandon(PLiteral const& folder) {
    PString pattern;
    (void)PUtils::pformatString(pattern, L"*.talv_temp-%u-*", PProcess::getCurrentPID());
    PDir dir(folder, pattern);
    for ((void)dir.preaddir(); dir == PERR_OK; ++dir) {
        (void)PFile::pdelete((PString(folder) += L"/") += dir.getEntry());
    }
}

/// Replaces the file: others see the old content or the new, and nothing between.
int _replace(PLiteral const& folder, PLiteral const& name, unsigned int revision) {
    PFile file;
    PString entry;
    int result = file.popen(name, PFile::OPEN_SAFE_WRITE, 0);
    for (unsigned int i = 0; i < ENTRIES && result == PERR_OK; ++i) {
        result = PUtils::pformatString(entry, L"entry.%u = %u", i, revision);
        if (result == PERR_OK) result = file.pwriteLine(entry);
    }
    if (result == PERR_OK) result = file.pflush();  // content on the device before it gets the name
    if (result == PERR_OK) return file.pclose();    // moves it over the name
    _abandon(folder);
    return result;
}

/// One change: nobody else changes the file between the reading and the replacing.
int _change(PLiteral const& folder, PLiteral const& name, PLiteral const& lockName) {
    PFile lock;
    int result = PERR_OK;
    while ((result = lock.popen(lockName, PFile::OPEN_WRITE | PFile::OPEN_CREATE, 0)) ==
           PERR_LOCKED) {
        (void)lock.pclose();  // still open, without the lock
        PThread::psleep(1);
    }
    unsigned int revision = 0;
    if (result == PERR_OK) result = _read(name, revision);
    if (result == PERR_OK) result = _replace(folder, name, revision + 1);
    return result;  // the lock goes with its file
}

/// Reads for as long as the writers are at work; they have ended when the last change is there.
int _watch(PLiteral const& name, unsigned int& revision) {
    unsigned int reads = 0;
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

}  // namespace

int main(int argc, char** argv) {
    (void)std::setlocale(LC_ALL, "");
    if (argc < 2) return 2;
    PString const folder(argv[1], P_WHOLE_STRING);
    PString const name(PString(folder) += L"/settings.conf");
    PString const lockName(PString(name) += L".lock");
    int result = PERR_OK;
    if (argc == 3) {  // a writer
        for (unsigned int i = 0; i < CHANGES && result == PERR_OK; ++i)
            result = _change(folder, name, lockName);
        return result == PERR_OK ? 0 : 1;
    }

    PString self;
    PString const arguments(PString(folder) += L" writer");
    result = PProcess::getPath(PProcess::getCurrentPID(), self);
    if (result == PERR_OK) result = _replace(folder, name, 0);
    PProcess first(self, arguments);
    PProcess second(self, arguments);
    if (result == PERR_OK) result = first.start();
    if (result == PERR_OK) result = second.start();
    unsigned int revision = 0;
    if (result == PERR_OK) result = _watch(name, revision);
    if (result != PERR_OK) std::fprintf(stderr, "%s\n", perrorName(result));
    int code = -1;
    if (first.waitExitCode(code) != PERR_OK || code != 0) return 1;
    if (second.waitExitCode(code) != PERR_OK || code != 0) return 1;
    return revision == 2 * CHANGES ? 0 : 1;
}
