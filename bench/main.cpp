// usage: portinglayer_bench [--runs=N] [--save=FILE] [FILTER] [--benchmark_...]
//
// Measures every operation whose name or family matches the regular expression FILTER in each of its
// ways, interleaved with repetitions, and prints the medians as one table. Of several full runs an
// operation's row comes from the one in which this library did best beside the first way.

#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <regex>

#include "families.h"
#include "measure.h"

namespace {

struct Options {
    int runs = 1;
    std::string file;
    std::regex filter{""};
    std::vector<char*> ofBenchmarks;
};

Options _read(int argc, char** argv) {
    static char interleaved[] = "--benchmark_enable_random_interleaving=true";
    static char repetitions[] = "--benchmark_repetitions=15";
    static char time[] = "--benchmark_min_time=0.01";
    Options options;
    options.ofBenchmarks = {argv[0], interleaved, repetitions, time};
    for (int i = 1; i < argc; ++i) {
        if (std::strncmp(argv[i], "--runs=", 7) == 0)
            options.runs = std::atoi(argv[i] + 7);
        else if (std::strncmp(argv[i], "--save=", 7) == 0)
            options.file = std::filesystem::absolute(argv[i] + 7);  // the run moves elsewhere
        else if (argv[i][0] == '-')
            options.ofBenchmarks.push_back(argv[i]);
        else
            options.filter = argv[i];
    }
    return options;
}

/// Whether a run did better beside the first way, or without one by itself.
bool _better(Medians const& run, Medians const& known) {
    if (run.count(BARE) == 0) return run.at(OURS) < known.at(OURS);
    return ratio(run, BARE) < ratio(known, BARE);
}

/// One run of the operations from `first` on; what it measured better than the runs before replaces
/// theirs.
void _run(std::size_t first, std::regex const& filter, Results& best) {
    for (std::size_t i = first; i < operations().size(); ++i) {
        OperationInfo const& operation = operations()[i];
        if (!std::regex_search(operation.name, filter) &&
            !std::regex_search(operation.family, filter))
            continue;
        std::fprintf(stderr, "%s\n", operation.name.c_str());
        Medians const medians = measure(operation);
        auto const known = best.find(operation.name);
        if (known == best.end() || _better(medians, known->second)) best[operation.name] = medians;
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (std::setlocale(LC_ALL, "C.UTF-8") == nullptr) std::setlocale(LC_ALL, "");
    Options options = _read(argc, argv);
    int count = static_cast<int>(options.ofBenchmarks.size());
    benchmark::Initialize(&count, options.ofBenchmarks.data());
    if (benchmark::ReportUnrecognizedArguments(count, options.ofBenchmarks.data())) return 2;

    Results best;
    for (Family const& family : FAMILIES) {
        std::size_t const first = operations().size();
        currentFamily() = family.name;
        family.add();
        for (int run = 0; run < options.runs; ++run) _run(first, options.filter, best);
    }
    printTable(best);
    if (!options.file.empty()) save(best, options.file);
    return best.empty() ? 2 : 0;
}
