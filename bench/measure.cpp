#include "measure.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

namespace {

double _median(std::vector<double> values) {
    auto const middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

/// Collects the single repetitions instead of printing them.
class Collector : public benchmark::BenchmarkReporter {
public:
    explicit Collector(std::string const& operation) : prefix(operation + "/") {}

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

}  // namespace

std::vector<OperationInfo>& operations() {
    static std::vector<OperationInfo> all;
    return all;
}

std::string& currentFamily() {
    static std::string family;
    return family;
}

Medians measure(OperationInfo const& operation) {
    Collector collector(operation.name);
    benchmark::RunSpecifiedBenchmarks(&collector, "^" + operation.name + "/");
    return collector.medians();
}

double ratio(Medians const& medians, std::string const& way) {
    auto const other = medians.find(way);
    return other == medians.end() ? 0 : medians.at(OURS) / other->second;
}

std::string bestPeer(Medians const& medians) {
    std::string best;
    for (auto const& [way, time] : medians)
        if (way != BARE && way != OURS && (best.empty() || time < medians.at(best))) best = way;
    return best;
}
