/// Lets one instance of a program run at a time. The lock goes with its holder, however that ends, so
/// that nothing is left to be cleared away.
#include <cstdio>

#include <portinglayer/file_locks.h>

int main() {
    PFileLock instance;
    int const result = instance.lock(L"product.lock", 0);  // 0: tried once, without waiting
    if (result == PERR_LOCKED) return std::puts("it is running already"), 1;
    if (result != PERR_OK) return std::printf("no lock: %s\n", perrorName(result)), 1;

    std::puts("the only one");  // the work of the program; the destructor unlocks
    return 0;
}
