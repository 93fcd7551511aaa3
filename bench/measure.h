/// How a figure is taken beside that of its peer.
#pragma once

#include <chrono>
#include <functional>
#include <string>
#include <vector>

namespace bench {

/// A way to take the time of `work` in seconds.
using clock_function = double(const std::function<void()>& work);

/// The wall time.
double seconds_of(const std::function<void()>& work);
/// The time that this thread had a processor: what others on the machine, or a server that is
/// waited for, take does not count. In steps of a hundredth.
double processor_seconds_of(const std::function<void()>& work);

double median(std::vector<double> values);
double least(const std::vector<double>& values);
double sum(const std::vector<double>& values);

/// The seconds of two ways to do the same work, taken in turns so that both meet the same machine.
struct paired_times {
    std::vector<double> ours;
    std::vector<double> peer;

    /// The median of the pairs' quotients, ours by the peer's.
    double ratio() const;
    /// The quotient of the shortest times. Of work that only computes, whatever is above them was
    /// taken by others on the machine.
    double best_ratio() const;
};

paired_times measure_in_turns(int repeats, const std::function<void()>& ours,
                              const std::function<void()>& peer,
                              clock_function* clock = &seconds_of);

/// One line: what was measured, our figure, the peer's, their quotient beside its bound, and
/// whether it is kept.
void report(const std::string& what, const std::string& ours, const std::string& peer, double ratio,
            const std::string& bound, bool kept);

std::string fixed(double value, int digits);

/// The body of a benchmark's entry point: runs `work`, prints what fails, and gives the exit code.
int run(const std::function<void()>& work);

} // namespace bench
