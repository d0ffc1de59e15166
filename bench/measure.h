/// @file
/// Running the ways of an operation beside each other, and what comes of it: a table to be read and a
/// file to be drawn from.
#ifndef PORTINGLAYER_BENCH_MEASURE_H
#define PORTINGLAYER_BENCH_MEASURE_H

#include <map>
#include <string>

#include "operation.h"

using Medians = std::map<std::string, double>;   ///< nanoseconds by way
using Results = std::map<std::string, Medians>;  ///< by operation

/// Repeats the ways of an operation in random order and gives the median of each. Ends the program
/// when one of them gives a wrong result.
Medians measure(OperationInfo const& operation);

/// This library's time to another way's; 0 where that was not measured.
double ratio(Medians const& medians, std::string const& way);

/// The peer, neither the first way nor this library, that did best; empty without one.
std::string bestPeer(Medians const& medians);

/// Prints one row for each operation, with a mark where it misses a limit.
void printTable(Results const& results);

/// Writes one line for each way: family, operation, limits to bare and to the best peer, way,
/// nanoseconds, parted by tabs. plot.py reads it.
void save(Results const& results, std::string const& file);

#endif
