/// Two processes add to one number in a file, under a named lock that a third one owns.
///
/// A name is removed by the first process that closes it. So the owner keeps the lock locked until
/// both workers have opened it, which they announce through a named semaphore: no worker can be done,
/// and close, before the other has come. usage: shared_lock FOLDER
#include <clocale>
#include <cstdio>

#include <portinglayer/portinglayer.h>

namespace {

constexpr int WORKERS = 2;
constexpr int ROUNDS = 200;
constexpr unsigned int LIMIT_MILLISECONDS = 30000;

int _load(PLiteral const& name, int& number) {
    PFile file;
    PString line;
    int result = file.popen(name, PFile::OPEN_READ, 1);
    if (result == PERR_OK) result = file.preadLine(line);
    return result == PERR_OK ? PUtils::strToInt32(line, number) : result;
}

int _store(PLiteral const& name, int number) {
    PFile file;
    PString line;
    int result = PUtils::int32ToStr(number, line);
    if (result != PERR_OK) return result;
    result = file.popen(name, PFile::OPEN_WRITE | PFile::OPEN_CREATE | PFile::OPEN_TRUNCATE, 1);
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
    return result == PERR_OK ? 0 : 1;
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

/// Starts both workers, lets them go when both are there, and takes their exit codes.
int _employ(PLiteral const& self, PLiteral const& arguments, PMutex& lock, PSemaphore& ready) {
    PProcess workers[WORKERS] = {{self, arguments}, {self, arguments}};
    int result = lock.lock();
    for (PProcess& worker : workers) {
        if (result == PERR_OK) result = worker.start();
    }
    for (int i = 0; i < WORKERS && result == PERR_OK; ++i) result = _await(ready);
    int const unlocked = lock.unlock();
    if (result == PERR_OK) result = unlocked;
    for (PProcess& worker : workers) {
        int code = -1;
        int const waited = worker.waitExitCode(code);
        if (result == PERR_OK) result = waited;
        std::printf("a worker ended with %d\n", code);
    }
    return result;
}

}  // namespace

int main(int argc, char** argv) {
    (void)std::setlocale(LC_ALL, "");
    if (argc < 2) return 2;
    PString name(argv[1], P_WHOLE_STRING);
    (void)name.cat(PLiteral(L"/number"));
    if (argc == 4)
        return _work(name, PString(argv[2], P_WHOLE_STRING), PString(argv[3], P_WHOLE_STRING));

    // The names are this process's own, and short: at most 13 characters with the slash.
    PString self;
    PString lockName;
    PString readyName;
    unsigned int const own = PProcess::getCurrentPID();
    int result = PProcess::getPath(own, self);
    if (result == PERR_OK) result = PUtils::pformatString(lockName, L"/lock%u", own);
    if (result == PERR_OK) result = PUtils::pformatString(readyName, L"/rdy%u", own);
    PMutex lock(lockName);
    PSemaphore ready(readyName);
    if (result == PERR_OK) result = lock.init(true);
    if (result == PERR_OK) result = ready.init(0, true);
    if (result == PERR_OK) result = _store(name, 0);
    PString arguments(argv[1], P_WHOLE_STRING);
    ((arguments += L" ") += lockName) += L" ";
    arguments += readyName;
    if (result == PERR_OK) result = _employ(self, arguments, lock, ready);
    int number = 0;
    if (result == PERR_OK) result = _load(name, number);
    if (result != PERR_OK) std::fprintf(stderr, "%s\n", perrorName(result));
    std::printf("%d additions\n", number);
    return number == WORKERS * ROUNDS ? 0 : 1;
}
