/// The one child program of all tests. Its first argument picks what it does:
///   exit CODE           ends with that code
///   sleep SECONDS       sleeps, then ends with 0
///   spin SECONDS        keeps a processor busy
///   report FILE ...     writes folder, arguments and environment to FILE, a line each
///   ignore FILE         ignores SIGTERM, creates FILE when it does, then sleeps
///   tree DEPTH FILE     starts `tree DEPTH-1 FILE`, appends its id to FILE, sleeps, and appends
///                       its id and "ended" on SIGTERM
///   raise KIND NAME FILE TURNS
///                       opens NAME as a lock or semaphore, appends a byte to FILE.open, then adds
///                       1 to the number in FILE so many times, alone, and sleeps
///   sample MILLISECONDS ends with 0 if this is the pause between two samples of a process
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <fstream>
#include <string>

#include <fcntl.h>
#include <unistd.h>

#include <portinglayer/synchronisation.h>

#include "process/cpu_sampling.h"

namespace {

int endings = -1;
std::string ending;

void _reportEnding(int) {
    (void)!write(endings, ending.data(), ending.size());
    _exit(0);
}

int _spin(int seconds) {
    std::time_t const end = std::time(nullptr) + seconds;
    for (unsigned long volatile turns = 0; std::time(nullptr) < end;) turns = turns + 1;
    return 0;
}

int _report(int argc, char** argv) {
    char folder[4096];
    std::string const partial = std::string(argv[2]) + ".partial";
    {
        std::ofstream out(partial);
        out << "cwd " << getcwd(folder, sizeof folder) << '\n';
        for (int i = 3; i < argc; ++i) out << "arg " << argv[i] << '\n';
        for (char** entry = environ; *entry != nullptr; ++entry) out << "env " << *entry << '\n';
    }
    return std::rename(partial.c_str(), argv[2]);
}

int _ignore(char const* file) {
    (void)std::signal(SIGTERM, SIG_IGN);
    std::ofstream(file) << getpid() << '\n';
    return static_cast<int>(sleep(60));
}

int _tree(int depth, char** argv) {
    ending = std::to_string(getpid()) + " ended\n";
    endings = open(argv[3], O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0600);
    (void)std::signal(SIGTERM, _reportEnding);
    std::ofstream(argv[3], std::ios::app) << getpid() << '\n';
    if (depth > 1 && fork() == 0) {
        std::string const next = std::to_string(depth - 1);
        execl("/proc/self/exe", argv[0], "tree", next.c_str(), argv[3], nullptr);
        _exit(127);
    }
    return static_cast<int>(sleep(60));
}

int _raise(bool isLock, std::string const& narrowName, std::string const& file, int turns) {
    std::wstring const name(narrowName.begin(), narrowName.end());
    PMutex lock(name.c_str());
    PSemaphore semaphore(name.c_str());
    if ((isLock ? lock.init(false) : semaphore.init(0, false)) != PERR_OK) return 1;
    std::ofstream(file + ".open", std::ios::app) << 'x';
    for (; turns > 0; --turns) {
        if ((isLock ? lock.lock() : semaphore.wait()) != PERR_OK) return 2;
        int number = 0;
        std::ifstream(file) >> number;
        std::ofstream(file) << number + 1;
        if ((isLock ? lock.unlock() : semaphore.post()) != PERR_OK) return 3;
    }
    return static_cast<int>(sleep(60));
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 3) return 64;
    std::string const mode = argv[1];
    int const number = std::atoi(argv[2]);
    if (mode == "exit") return number;
    if (mode == "sleep") return static_cast<int>(sleep(static_cast<unsigned>(number)));
    if (mode == "spin") return _spin(number);
    if (mode == "report") return _report(argc, argv);
    if (mode == "ignore") return _ignore(argv[2]);
    if (mode == "sample") return static_cast<int>(_getSampleTime()) == number ? 0 : 1;
    if (mode == "tree" && argc > 3) return _tree(number, argv);
    if (mode == "raise" && argc > 5)
        return _raise(std::strcmp(argv[2], "lock") == 0, argv[3], argv[4], std::atoi(argv[5]));
    return 64;
}
