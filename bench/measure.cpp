#include "measure.h"

#include "vfs/exceptions.h"

#include <windows.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <exception>
#include <iomanip>
#include <numeric>
#include <sstream>

namespace bench {

double seconds_of(const std::function<void()>& work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

double processor_seconds_of(const std::function<void()>& work) {
    const auto used = [] {
        std::array<FILETIME, 4> times{};
        GetThreadTimes(GetCurrentThread(), &times[0], &times[1], &times[2], &times[3]);
        const auto units = [](const FILETIME& time) {
            return static_cast<double>(time.dwHighDateTime) * 4294967296.0 + time.dwLowDateTime;
        };
        return (units(times[2]) + units(times[3])) * 1e-7;
    };
    const double start = used();
    work();
    return used() - start;
}

double median(std::vector<double> values) {
    std::ranges::sort(values);
    const std::size_t middle = values.size() / 2;
    return values.size() % 2 == 1 ? values[middle] : (values[middle - 1] + values[middle]) / 2;
}

double least(const std::vector<double>& values) {
    return *std::ranges::min_element(values);
}

double sum(const std::vector<double>& values) {
    return std::accumulate(values.begin(), values.end(), 0.0);
}

double paired_times::ratio() const {
    std::vector<double> quotients;
    for (std::size_t i = 0; i < ours.size(); ++i) {
        quotients.push_back(ours[i] / peer[i]);
    }
    return median(quotients);
}

double paired_times::best_ratio() const {
    return least(ours) / least(peer);
}

paired_times measure_in_turns(int repeats, const std::function<void()>& ours,
                              const std::function<void()>& peer, clock_function* clock) {
    paired_times times;
    // Connections, caches and buffers of both are there before anything is measured.
    ours();
    peer();
    for (int i = 0; i < repeats; ++i) {
        times.ours.push_back(clock(ours));
        times.peer.push_back(clock(peer));
    }
    return times;
}

void report(const std::string& what, const std::string& ours, const std::string& peer, double ratio,
            const std::string& bound, bool kept) {
    std::printf("%-44s %24s   peer %24s   ratio %s (%s) %s\n", what.c_str(), ours.c_str(),
                peer.c_str(), fixed(ratio, 3).c_str(), bound.c_str(), kept ? "kept" : "MISSED");
    std::fflush(stdout);
}

std::string fixed(double value, int digits) {
    std::ostringstream text;
    text << std::fixed << std::setprecision(digits) << value;
    return text.str();
}

int run(const std::function<void()>& work) {
    try {
        work();
        return 0;
    } catch (const vfs::exception& failure) {
        std::printf("%ls: %ls\n", failure.get_name().c_str(), failure.get_description().c_str());
    } catch (const std::exception& failure) {
        std::printf("%s\n", failure.what());
    }
    return 1;
}

} // namespace bench
