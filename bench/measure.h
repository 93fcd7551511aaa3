/// How a figure is taken beside that of its peer.
#pragma once

#include <chrono>
#include <functional>
#include <string>
#include <vector>

namespace bench {

/// The wall time of `work` in seconds.
double seconds_of(const std::function<void()>& work);

double median(std::vector<double> values);
double sum(const std::vector<double>& values);

/// The seconds of two ways to do the same work, taken in turns so that both meet the same machine.
struct paired_times {
    std::vector<double> ours;
    std::vector<double> peer;

    /// The median of the pairs' quotients, ours by the peer's.
    double ratio() const;
};

paired_times measure_in_turns(int repeats, const std::function<void()>& ours,
                              const std::function<void()>& peer);

/// One line: what was measured, our figure, the peer's, their quotient beside its bound, and
/// whether it is kept.
void report(const std::string& what, const std::string& ours, const std::string& peer, double ratio,
            const std::string& bound, bool kept);

std::string fixed(double value, int digits);

/// The body of a benchmark's entry point: runs `work`, prints what fails, and gives the exit code.
int run(const std::function<void()>& work);

} // namespace bench
