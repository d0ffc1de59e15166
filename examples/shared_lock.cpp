/// Two processes add to one number in a file, under a named lock that a third one owns.
///
/// A name is removed by the first process that closes it. So the owner keeps the lock locked until
/// both workers have opened it, which they announce through a named semaphore: no worker can be done,
/// and close, before the other has come. A worker that is killed within leaves the lock locked; where
/// that may happen take a PFileLock, as config_replace does. usage: shared_lock FOLDER
#include <clocale>
#include <cstdio>

#include <portinglayer/portinglayer.h>

namespace {

constexpr int WORKERS = 2;
constexpr int ROUNDS = 200;
constexpr unsigned int LIMIT_MILLISECONDS = 30'000;
constexpr int IS_FOLDER = 1;

/// The name of the number's file, padded: PFile cuts names beyond ASCII.
bool _findFile(char const* folder, PString& name) {
    PString whole, padded;
    if (PUtf8::decode(folder, P_WHOLE_STRING, whole) != PERR_OK) return false;
    if (PUtf8::padded(whole, padded) != PERR_OK) return false;
    if (!PFile::exists(padded) || !PFile::check(padded, IS_FOLDER)) return false;
    return whole.cat(PLiteral(L"/number")) == PERR_OK && PUtf8::padded(whole, name) == PERR_OK;
}

int _load(PLiteral const& name, int& number) {
    PFile file;
    PString line;
    int result = file.popen(name, PFile::OPEN_READ, PFile::UNLOCKED);
    if (result == PERR_OK) result = file.preadLine(line);
    return result == PERR_OK ? PUtils::strToInt32(line, number) : result;
}

int _store(PLiteral const& name, int number) {
    constexpr unsigned int FLAGS = PFile::OPEN_WRITE | PFile::OPEN_CREATE | PFile::OPEN_TRUNCATE;
    PFile file;
    PString line;
    int result = PUtils::int32ToStr(number, line);
    if (result == PERR_OK) result = file.popen(name, FLAGS, PFile::UNLOCKED);
    return result == PERR_OK ? file.pwriteLine(line) : result;
}

/// Adds one. Without the lock the two processes would lose some of each other's additions.
int _add(PMutex& lock, PLiteral const& name) {
    int result = lock.lock();
    if (result != PERR_OK) return result;
    int number = 0;
    result = _load(name, number);
    if (result == PERR_OK) result = _store(name, number + 1);
    int const unlocked = lock.unlock();
    return result == PERR_OK ? unlocked : result;
}

int _work(PLiteral const& name, PLiteral const& lockName, PLiteral const& readyName) {
    PMutex lock(lockName);
    PSemaphore ready(readyName);
    int result = lock.init(false);  // false: the name must exist
    if (result == PERR_OK) result = ready.init(0, false);
    if (result == PERR_OK) result = ready.post();
    for (int i = 0; i < ROUNDS && result == PERR_OK; ++i) result = _add(lock, name);
    if (result != PERR_OK) std::fprintf(stderr, "worker: %s\n", perrorName(result));
    return result;
}

/// Takes one from the semaphore, but doesn't wait forever for a worker that never came.
int _await(PSemaphore& ready) {
    long long const start = PTime::getTickCount();
    int result = PERR_OK;
    while ((result = ready.trywait()) == PERR_SEMAPHORE_WAIT) {
        if (PTime::getTickCountDiff(start, PTime::getTickCount()) > LIMIT_MILLISECONDS) break;
        PThread::psleep(5);
    }
    return result;
}

/// This program once more, as a worker; whatever the folder's name holds is one argument.
int _start(PCommand& worker, char const* folder, PLiteral const& lockName,
           PLiteral const& readyName) {
    PString text;
    int result = PUtf8::decode(folder, P_WHOLE_STRING, text);
    if (result == PERR_OK) result = worker.addArgument(text);
    if (result == PERR_OK) result = worker.addArgument(lockName);
    if (result == PERR_OK) result = worker.addArgument(readyName);
    return result == PERR_OK ? worker.start() : result;
}

void _showEnding(PCommand& worker) {
    PEnding ending{};
    int result = worker.wait(ending, LIMIT_MILLISECONDS);
    if (result == PERR_PROCESS_RUNNING) result = worker.end(ending, 0);
    if (result == PERR_OK) std::printf("a worker ended with %d\n", ending.exitCode);
}

/// Starts both workers, lets them go when both are there, and awaits them.
int _employ(char const* folder, PLiteral const& lockName, PLiteral const& readyName) {
    PMutex lock(lockName);
    PSemaphore ready(readyName);
    PString self;
    int result = PProcess::getPath(PProcess::getCurrentPID(), self);
    PLiteral const program(self.ptr());  // zeros stand behind a path beyond ASCII
    PCommand workers[WORKERS] = {PCommand(program), PCommand(program)};

    if (result == PERR_OK) result = lock.init(true);
    if (result == PERR_OK) result = ready.init(0, true);
    if (result == PERR_OK) result = lock.lock();
    if (result != PERR_OK) return result;
    for (PCommand& worker : workers)
        if (result == PERR_OK) result = _start(worker, folder, lockName, readyName);
    for (int i = 0; i < WORKERS && result == PERR_OK; ++i) result = _await(ready);
    int const unlocked = lock.unlock();
    for (PCommand& worker : workers) _showEnding(worker);
    return result == PERR_OK ? unlocked : result;
}

}  // namespace

int main(int argc, char** argv) {
    PString name;
    (void)std::setlocale(LC_ALL, "C.UTF-8");  // for the names that are padded
    if (argc < 2 || !_findFile(argv[1], name)) {
        std::fputs("usage: shared_lock FOLDER, which exists, its name in UTF-8\n", stderr);
        return 2;
    }
    if (argc == 4) {
        PString const lockName(argv[2], P_WHOLE_STRING), readyName(argv[3], P_WHOLE_STRING);
        return _work(name, lockName, readyName) == PERR_OK ? 0 : 1;
    }

    // The names are this process's own, and short: at most 13 characters with the slash.
    PString lockName, readyName;
    unsigned int const own = PProcess::getCurrentPID();
    int result = PUtils::pformatString(lockName, L"/lock%u", own);
    if (result == PERR_OK) result = PUtils::pformatString(readyName, L"/rdy%u", own);
    if (result == PERR_OK) result = _store(name, 0);
    if (result == PERR_OK) result = _employ(argv[1], lockName, readyName);
    int number = 0;
    if (result == PERR_OK) result = _load(name, number);
    if (result != PERR_OK) std::fprintf(stderr, "shared_lock: %s\n", perrorName(result));
    std::printf("%d additions\n", number);
    return number == WORKERS * ROUNDS ? 0 : 1;
}
