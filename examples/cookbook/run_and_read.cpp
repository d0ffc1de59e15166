/// Runs a program and reads what it prints, within ten seconds.
#include <cstdio>
#include <string>

#include <portinglayer/commands.h>

int main() {
    PCommand disk(L"df");
    PEnding ending{};
    std::string output, errors;

    int result = disk.addArgument(L"--output=avail,target");
    if (result == PERR_OK) result = disk.addArgument(L"/");
    if (result == PERR_OK) result = disk.run("", output, errors, ending, 10'000);

    if (result == PERR_PROCESS_RUNNING) std::puts("it took too long");
    if (result != PERR_OK) return std::printf("df: %s\n", perrorName(result)), 1;
    if (ending.exitCode != 0) return std::printf("df says: %s", errors.c_str()), 1;
    std::printf("%s", output.c_str());
    return 0;
}
