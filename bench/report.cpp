#include "measure.h"

#include <cstdio>
#include <cstdlib>
#include <fstream>

namespace {

std::string _time(double nanoseconds) {
    char const* const units[] = {"ns", "us", "ms", "s"};
    std::size_t unit = 0;
    for (; nanoseconds >= 1000 && unit < 3; ++unit) nanoseconds /= 1000;
    char text[32];
    std::snprintf(text, sizeof text, "%.3g %s", nanoseconds, units[unit]);
    return text;
}

/// Nothing for what was not measured or asked for.
std::string _number(double value) {
    char text[32] = "";
    if (value > 0) std::snprintf(text, sizeof text, "%.2f", value);
    return text;
}

std::string _marked(double value, double limit) {
    return _number(value) + (limit > 0 && value > limit ? " !" : "");
}

/// The same operation at a sixteenth of the size with which its name ends; null without one.
Medians const* _smaller(Results const& results, std::string const& name) {
    std::size_t const space = name.rfind(' ');
    if (space == std::string::npos) return nullptr;
    unsigned long const size = std::strtoul(name.c_str() + space, nullptr, 10);
    auto const found = results.find(name.substr(0, space + 1) + std::to_string(size / 16));
    return size % 16 != 0 || found == results.end() ? nullptr : &found->second;
}

/// How many times as long this library, and the first way, take for 16 times as much.
std::string _growth(Results const& results, OperationInfo const& operation) {
    Medians const* const smaller = _smaller(results, operation.name);
    if (smaller == nullptr) return "";
    Medians const& medians = results.at(operation.name);
    std::string const ours = _marked(medians.at(OURS) / smaller->at(OURS), operation.limits.growth);
    if (medians.count(BARE) == 0 || smaller->count(BARE) == 0) return ours;
    return ours + " (bare " + _number(medians.at(BARE) / smaller->at(BARE)) + ")";
}

std::string _limits(Limits const& limits) {
    std::string text = _number(limits.toBare);
    auto const add = [&](std::string const& more) { text += (text.empty() ? "" : ", ") + more; };
    if (limits.toPeer > 0) add("peer " + _number(limits.toPeer));
    if (limits.nanoseconds > 0) add(_time(limits.nanoseconds));
    if (limits.growth > 0) add("growth " + _number(limits.growth));
    return text;
}

std::string _peers(OperationInfo const& operation, Medians const& medians) {
    std::string peers;
    for (std::string const& way : operation.ways)
        if (way != BARE && way != OURS)
            peers += (peers.empty() ? "" : ", ") + way + " " + _time(medians.at(way));
    return peers;
}

void _printRow(OperationInfo const& operation, Results const& results) {
    Medians const& medians = results.at(operation.name);
    Limits const& limits = operation.limits;
    double const ours = medians.at(OURS);
    bool const late = limits.nanoseconds > 0 && ours > limits.nanoseconds;
    std::string const bare =
        medians.count(BARE) == 0 ? "" : operation.first + ": " + _time(medians.at(BARE));
    std::string const cells[] = {
        operation.name,
        bare,
        _peers(operation, medians),
        _time(ours) + (late ? " !" : ""),
        _marked(ratio(medians, BARE), limits.toBare),
        _marked(ratio(medians, bestPeer(medians)), limits.toPeer),
        _limits(limits),
        _growth(results, operation),
    };
    for (std::string const& cell : cells) std::printf("| %s ", cell.c_str());
    std::printf("|\n");
}

}  // namespace

void printTable(Results const& results) {
    std::printf("| operation | bare or standard library | peers | this library | to bare | to best "
                "peer | limit | for 16 times the size |\n|---|---|---|---|---|---|---|---|\n");
    for (OperationInfo const& operation : operations())
        if (results.count(operation.name) != 0) _printRow(operation, results);
}

void save(Results const& results, std::string const& file) {
    std::ofstream out(file);
    out << "family\toperation\tlimit to bare\tlimit to peer\tway\tnanoseconds\n";
    for (OperationInfo const& operation : operations()) {
        auto const medians = results.find(operation.name);
        if (medians == results.end()) continue;
        // A limit in time stands in a picture as one to the first way.
        Limits const& limits = operation.limits;
        auto const bare = medians->second.find(BARE);
        double const toBare = limits.nanoseconds > 0 && bare != medians->second.end()
                                  ? limits.nanoseconds / bare->second
                                  : limits.toBare;
        for (auto const& [way, time] : medians->second)
            out << operation.family << '\t' << operation.name << '\t' << toBare << '\t'
                << limits.toPeer << '\t' << way << '\t' << time << '\n';
    }
}
