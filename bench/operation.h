/// @file
/// One operation, done in several ways that are measured beside each other.
///
///     Operation op("search forward 64", 1.05, position, "std::wstring::find");
///     op.way(BARE, [=] { return text.find(sought); });
///     WITH_QT(op.way("Qt", [=] { return qt.indexOf(qtSought); }));
///     op.way(OURS, [=] { ...; return pos; });
///
/// Each way is checked before it is measured: what it gives must equal what is expected, where that
/// is a string as bytes or as wide characters (`bytesOf`, `wideOf`). A family of operations is a file of its own; see families.h.
#ifndef PORTINGLAYER_BENCH_OPERATION_H
#define PORTINGLAYER_BENCH_OPERATION_H

#include <benchmark/benchmark.h>

#include <functional>
#include <memory>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "forms.h"

/// The names of the first way, to which ratios relate, and of this library's.
constexpr char const* BARE = "bare";
constexpr char const* OURS = "this library";

constexpr double NO_LIMIT = 0;

/// CPU: what the measuring thread used; WALL: also what it waited for, such as a child.
enum class Clock { CPU, WALL };

/// What this library's median may be at most; 0 stands for any.
struct Limits {
    double toBare = 0;
    double toPeer = 0;       ///< to the best peer's
    double nanoseconds = 0;  ///< for itself
    double growth = 0;       ///< to that of the same operation at a sixteenth of the size
};

struct OperationInfo {
    std::string family;
    std::string name;   ///< ends with its size where it is measured at several
    std::string first;  ///< what the first way is
    Limits limits;
    std::vector<std::string> ways;
};

/// All operations in the order of their making, and the family that the next ones belong to.
std::vector<OperationInfo>& operations();
std::string& currentFamily();

template <typename Expected>
class Operation {
public:
    Operation(std::string const& name, Limits const& limits, Expected expected, std::string first)
        : expectedResult(std::move(expected)), index(operations().size()) {
        operations().push_back({currentFamily(), name, std::move(first), limits, {}});
    }
    /// With a limit to the first way.
    Operation(std::string const& name, double limit, Expected expected, std::string first)
        : Operation(name, Limits{.toBare = limit}, std::move(expected), std::move(first)) {}

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

    /// A way whose body gives the result.
    template <typename Body>
    void way(char const* name, Body body) {
        add(name, Nothing{}, body, body);
    }
    /// A way that gives something else, which `view` turns into the result.
    template <typename Body, typename View>
    void way(char const* name, Body body, View view) {
        add(name, Nothing{}, body, [body, view]() mutable { return view(body()); });
    }
    /// A way that uses up what `before` prepares, outside the measured time, each time.
    template <typename Before, typename Body>
    void prepared(char const* name, Before before, Body body) {
        auto const check = [before, body]() mutable {
            before();
            return body();
        };
        add(name, before, body, check);
    }

private:
    struct Nothing {
        void operator()() const {}
    };

    template <typename Check>
    static bool isRight(Check& check, Expected const& expected) {
        if constexpr (std::is_same_v<Expected, std::string>)
            return bytesOf(check()) == expected;
        else if constexpr (std::is_same_v<Expected, std::wstring>)
            return wideOf(check()) == expected;
        else
            return static_cast<Expected>(check()) == expected;
    }

    template <typename Before, typename Body, typename Check>
    void add(char const* name, Before before, Body body, Check check) {
        OperationInfo& info = operations()[index];
        info.ways.emplace_back(name);
        auto const run = [=, prepare = prepareAll,
                          expected = expectedResult](benchmark::State& state) mutable {
            if (prepare) prepare();
            if (state.thread_index() == 0 && !isRight(check, expected))
                return state.SkipWithError("gives a wrong result");
            measure(state, before, body);
        };
        auto* const added = benchmark::RegisterBenchmark((info.name + "/" + name).c_str(), run);
        added->Threads(threadCount);
        if (used == Clock::WALL) added->UseRealTime();
    }

    template <typename Before, typename Body>
    static void measure(benchmark::State& state, Before& before, Body& body) {
        for (auto _ : state) {
            if constexpr (!std::is_same_v<Before, Nothing>) {
                state.PauseTiming();
                before();
                state.ResumeTiming();
            }
            benchmark::DoNotOptimize(body());
        }
    }

    Expected expectedResult;
    std::size_t index;
    Clock used = Clock::CPU;
    int threadCount = 1;
    std::function<void()> prepareAll;
};

#endif
