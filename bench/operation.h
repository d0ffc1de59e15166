/// @file
/// One operation, done in several ways that are measured beside each other.
///
///     Operation op("search forward 64", 1.05, expected);
///     op.way(BARE, [=] { return text.find(needle); });
///     op.way(OURS, [=] { ...; return pos; });
///
/// Each way is checked before it is measured: what it gives must equal what is expected.
#ifndef PORTINGLAYER_BENCH_OPERATION_H
#define PORTINGLAYER_BENCH_OPERATION_H

#include <benchmark/benchmark.h>

#include <functional>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

/// The names of the first way, to which the limit relates, and of this library's.
constexpr char const* BARE = "bare";
constexpr char const* OURS = "this library";

constexpr double NO_LIMIT = 0;

/// CPU: what the measuring thread used; WALL: also what it waited for, such as a child.
enum class Clock { CPU, WALL };

struct OperationInfo {
    std::string name;   ///< ends with its size where it is measured at several
    double limit;       ///< of this library's median to that of the first way
    std::string first;  ///< what the first way is
    std::vector<std::string> ways;
};

/// All operations in the order of their making.
std::vector<OperationInfo>& operations();

template <typename Expected>
class Operation {
public:
    Operation(std::string const& name, double limit, Expected expected, std::string first = BARE)
        : expectedResult(std::move(expected)), index(operations().size()) {
        operations().push_back({name, limit, std::move(first), {}});
    }

    Operation& clock(Clock value) {
        used = value;
        return *this;
    }
    Operation& threads(int count) {
        threadCount = count;
        return *this;
    }
    /// Runs `action`, not measured, each time before one of the ways is.
    Operation& setup(std::function<void()> action) {
        prepareAll = std::move(action);
        return *this;
    }

    /// A way whose body gives the result, seen through `view` where it has another form.
    template <typename Body>
    Operation& way(char const* name, Body body) {
        return add(name, Nothing{}, body, body);
    }
    template <typename Body, typename View>
    Operation& way(char const* name, Body body, View view) {
        return add(name, Nothing{}, body, [body, view]() mutable { return view(body()); });
    }
    /// A way that uses up what `before` prepares, outside the measured time, each time.
    template <typename Before, typename Body>
    Operation& prepared(char const* name, Before before, Body body) {
        auto check = [before, body]() mutable {
            before();
            return body();
        };
        return add(name, before, body, check);
    }

private:
    struct Nothing {
        void operator()() const {}
    };

    template <typename Before, typename Body, typename Check>
    Operation& add(char const* name, Before before, Body body, Check check) {
        OperationInfo& info = operations()[index];
        info.ways.emplace_back(name);
        auto const run = [=, prepare = prepareAll,
                          expected = expectedResult](benchmark::State& state) mutable {
            if (prepare) prepare();
            if (state.thread_index() == 0 && !(check() == expected))
                return state.SkipWithError("gives a wrong result");
            measure(state, before, body);
        };
        auto* const added = benchmark::RegisterBenchmark((info.name + "/" + name).c_str(), run);
        added->Threads(threadCount);
        if (used == Clock::WALL) added->UseRealTime();
        return *this;
    }

    template <typename Before, typename Body>
    static void measure(benchmark::State& state, Before& before, Body& body) {
        for (auto _ : state) {
            if constexpr (!std::is_same_v<Before, Nothing>) {
                state.PauseTiming();
                before();
                state.ResumeTiming();
            }
            if constexpr (std::is_void_v<decltype(body())>) {
                body();
                benchmark::ClobberMemory();
            } else {
                benchmark::DoNotOptimize(body());
            }
        }
    }

    Expected expectedResult;
    std::size_t index;
    Clock used = Clock::CPU;
    int threadCount = 1;
    std::function<void()> prepareAll;
};

/// The groups; each adds its operations.
void addText();
void addPointers();
void addStreams();
void addSync();
void addFiles();
void addProcesses();
void addCommands();
void addProcessFacts();

#endif
