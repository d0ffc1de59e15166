// usage: portinglayer_bench [--runs=N] [FILTER] [--benchmark_...]
//
// Measures every operation whose name matches the regular expression FILTER in each of its ways,
// interleaved with repetitions, and prints the medians as one table. Of several full runs an
// operation's row comes from the one in which this library did best beside the first way.

#include <algorithm>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <regex>

#include "operation.h"

namespace {

using Medians = std::map<std::string, double>;  // nanoseconds by way

double _median(std::vector<double> values) {
    auto const middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

/// Collects the single repetitions instead of printing them.
class Collector : public benchmark::BenchmarkReporter {
public:
    explicit Collector(std::string operation) : prefix(std::move(operation) + "/") {}

    bool ReportContext(Context const& /*context*/) override { return true; }

    void ReportRuns(std::vector<Run> const& runs) override {
        for (Run const& run : runs) {
            std::string const& name = run.run_name.function_name;
            if (run.error_occurred) {
                std::fprintf(stderr, "%s: %s\n", name.c_str(), run.error_message.c_str());
                std::exit(1);
            }
            bool const wall = !run.run_name.time_type.empty();
            if (run.run_type == Run::RT_Iteration)
                times[name.substr(prefix.size())].push_back(wall ? run.GetAdjustedRealTime()
                                                                 : run.GetAdjustedCPUTime());
        }
    }

    Medians medians() const {
        Medians result;
        for (auto const& [way, values] : times) result[way] = _median(values);
        return result;
    }

private:
    std::string prefix;
    std::map<std::string, std::vector<double>> times;
};

Medians _measure(OperationInfo const& operation) {
    Collector collector(operation.name);
    benchmark::RunSpecifiedBenchmarks(&collector, "^" + operation.name + "/");
    return collector.medians();
}

double _ratio(Medians const& medians) {
    return medians.at(OURS) / medians.at(BARE);
}

std::string _time(double nanoseconds) {
    char const* const units[] = {"ns", "us", "ms", "s"};
    std::size_t unit = 0;
    for (; nanoseconds >= 1000 && unit < 3; ++unit) nanoseconds /= 1000;
    char text[32];
    std::snprintf(text, sizeof text, "%.3g %s", nanoseconds, units[unit]);
    return text;
}

std::string _number(double value) {
    char text[32];
    std::snprintf(text, sizeof text, "%.2f", value);
    return text;
}

/// "search 4096" and 4096 of the same operation at another size; 0 without a size.
std::pair<std::string, unsigned long> _sized(std::string const& name) {
    std::size_t const space = name.rfind(' ');
    if (space == std::string::npos) return {name, 0};
    return {name.substr(0, space), std::strtoul(name.c_str() + space, nullptr, 10)};
}

/// How many times as long this library, and the first way, take for 16 times as much; empty for the
/// smallest size.
std::string _growth(std::map<std::string, Medians> const& all, std::string const& name) {
    auto const [base, size] = _sized(name);
    auto const smaller = all.find(base + " " + std::to_string(size / 16));
    if (size % 16 != 0 || smaller == all.end()) return "";
    auto const growth = [&](char const* way) {
        return _number(all.at(name).at(way) / smaller->second.at(way));
    };
    return growth(OURS) + " (bare " + growth(BARE) + ")";
}

void _printRow(OperationInfo const& operation, Medians const& medians, std::string const& growth) {
    std::string peers;
    double best = 0;
    for (std::string const& way : operation.ways) {
        if (way == BARE || way == OURS) continue;
        double const time = medians.at(way);
        peers += (peers.empty() ? "" : ", ") + way + " " + _time(time);
        if (best <= 0 || time < best) best = time;
    }
    double const ratio = _ratio(medians);
    bool const missed = operation.limit > 0 && ratio > operation.limit;
    std::printf("| %s | %s: %s | %s | %s | %s%s | %s | %s | %s |\n", operation.name.c_str(),
                operation.first.c_str(), _time(medians.at(BARE)).c_str(), peers.c_str(),
                _time(medians.at(OURS)).c_str(), _number(ratio).c_str(), missed ? " !" : "",
                best > 0 ? _number(medians.at(OURS) / best).c_str() : "",
                operation.limit > 0 ? _number(operation.limit).c_str() : "", growth.c_str());
}

void _printTable(std::map<std::string, Medians> const& all) {
    std::printf("| operation | bare or standard library | peers | this library | to bare | to best "
                "peer | limit | for 16 times the size |\n|---|---|---|---|---|---|---|---|\n");
    for (OperationInfo const& operation : operations()) {
        auto const medians = all.find(operation.name);
        if (medians != all.end())
            _printRow(operation, medians->second, _growth(all, operation.name));
    }
}

/// One run of the operations from `first` on; what it measured better than the runs before replaces
/// theirs.
void _run(std::size_t first, std::regex const& filter, std::map<std::string, Medians>& best) {
    for (std::size_t i = first; i < operations().size(); ++i) {
        OperationInfo const& operation = operations()[i];
        if (!std::regex_search(operation.name, filter)) continue;
        std::fprintf(stderr, "%s\n", operation.name.c_str());
        Medians const medians = _measure(operation);
        auto const known = best.find(operation.name);
        if (known == best.end() || _ratio(medians) < _ratio(known->second))
            best[operation.name] = medians;
    }
}

}  // namespace

std::vector<OperationInfo>& operations() {
    static std::vector<OperationInfo> all;
    return all;
}

int main(int argc, char** argv) {
    if (std::setlocale(LC_ALL, "C.UTF-8") == nullptr) std::setlocale(LC_ALL, "");
    std::vector<char*> flags{argv[0]};
    char interleaved[] = "--benchmark_enable_random_interleaving=true";
    char repetitions[] = "--benchmark_repetitions=15";
    char time[] = "--benchmark_min_time=0.01";
    flags.insert(flags.end(), {interleaved, repetitions, time});

    int runs = 1;
    std::string filter;
    for (int i = 1; i < argc; ++i) {
        if (std::strncmp(argv[i], "--runs=", 7) == 0)
            runs = std::atoi(argv[i] + 7);
        else if (argv[i][0] == '-')
            flags.push_back(argv[i]);
        else
            filter = argv[i];
    }
    int count = static_cast<int>(flags.size());
    benchmark::Initialize(&count, flags.data());
    if (benchmark::ReportUnrecognizedArguments(count, flags.data())) return 2;

    // Processes come first: a parent is as large as the groups before have made it.
    std::map<std::string, Medians> best;
    for (auto const add : {addProcesses, addCommands, addProcessFacts, addText, addPointers,
                           addStreams, addSync, addFiles}) {
        std::size_t const first = operations().size();
        add();
        for (int run = 0; run < runs; ++run) _run(first, std::regex(filter), best);
    }
    _printTable(best);
    return best.empty() ? 2 : 0;
}
