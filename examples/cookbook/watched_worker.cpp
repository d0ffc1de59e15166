/// Keeps a worker running: starts it again when it fails or hangs, with growing pauses, until it ends
/// well or has failed too often.
#include <cstdio>

#include <portinglayer/commands.h>
#include <portinglayer/threads.h>

/// The worker's ending; one that runs longer than five seconds is ended with all it has started.
static int attempt(PCommand& worker, PEnding& ending) {
    int result = worker.start();
    if (result == PERR_OK) result = worker.wait(ending, 5'000);
    if (result == PERR_PROCESS_RUNNING) result = worker.end(ending, 1'000);
    return result;
}

int main() {
    PCommand worker(L"sh");
    int result = worker.addArgument(L"-c");
    if (result == PERR_OK)
        result = worker.addArgument(L"test -e ready || { touch ready; exit 3; }");

    for (unsigned int pause = 100; result == PERR_OK && pause <= 1'600; pause *= 2) {
        PEnding ending{};
        result = attempt(worker, ending);
        if (result == PERR_OK && ending.exitCode == 0) return std::puts("the work is done"), 0;
        std::printf("exit code %d, signal %d: again\n", ending.exitCode, ending.signal);
        PThread::psleep(pause);
    }
    std::printf("given up: %s\n", result == PERR_OK ? "it failed too often" : perrorName(result));
    return 1;
}
