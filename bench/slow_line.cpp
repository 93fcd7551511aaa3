/// slow_line MODE, started by slow_line.py: 900,000 bytes up and down through the contracts, or
/// with `far` small files one after another over a line with 25 ms each way, in round trips of it.
/// `moves` succeeds when they come back as they went; `still-up` and `still-down` when the transfer
/// fails because the line was made to stand still after half of it was written or read.

#include "measure.h"
#include "service_url.h"

#include "vfs/vfs.h"
#include "vfs_quilldeck/session/client.h"
#include "vfs_quilldeck/session/pc_id.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

constexpr std::size_t size = 900'000;
constexpr std::size_t step = 16'384;

using clock_type = std::chrono::steady_clock;

double seconds_since(clock_type::time_point then) {
    return std::chrono::duration<double>(clock_type::now() - then).count();
}

/// Calls `move` for each step's place and length, and tells of the half.
template <class Move>
void in_steps(bool tell, const Move& move) {
    for (std::size_t at = 0; at < size; at += step) {
        if (tell && at <= size / 2 && at + step > size / 2) {
            std::printf("half\n");
            std::fflush(stdout);
        }
        move(at, static_cast<std::uint32_t>(std::min(step, size - at)));
    }
}

void move_both_ways(vfs::directory& folder, const std::wstring& mode) {
    std::mt19937 random(1);
    std::vector<char> data(size);
    std::ranges::generate(data, [&random] { return static_cast<char>(random()); });
    const vfs::item_ptr item = folder.create_and_open_file(
        L"slow " + mode, vfs::modeWrite | vfs::modeOverwrite, std::int64_t{size});
    auto& file = dynamic_cast<vfs::file&>(*item);
    auto began = clock_type::now();
    in_steps(mode == L"still-up",
             [&](std::size_t at, std::uint32_t length) { file.write(data.data() + at, length); });
    file.close(0);
    std::printf("    up in %.1f s\n", seconds_since(began));
    std::vector<char> read(size);
    began = clock_type::now();
    file.open(vfs::modeRead, 0);
    in_steps(mode == L"still-down",
             [&](std::size_t at, std::uint32_t length) { file.read(read.data() + at, length); });
    file.close(0);
    std::printf("    down in %.1f s, %s\n", seconds_since(began),
                read == data ? "equal" : "DIFFERENT");
    if (read != data) {
        throw std::runtime_error("other bytes came back");
    }
}

/// Each of them is a request before and after, and between these a data connection of its own: its
/// port is asked for (EPSV), it is opened, its TLS handshake goes on beside the command, and the
/// bytes are followed by the server's word for them. A download also asks for date and size (MDTM,
/// SIZE), so that after a broken line it never goes on in another version of the file.
void move_small_files(vfs::directory& folder) {
    constexpr int files = 20;
    constexpr std::uint32_t small = 4096;
    constexpr double round_trip = 0.05;
    std::vector<char> data(small, 'q');
    std::vector<std::shared_ptr<vfs::file>> made;
    const auto report = [](const char* way, clock_type::time_point began) {
        const double each = seconds_since(began) / files;
        std::printf("    %s %.0f ms a file, %.1f round trips\n", way, each * 1000,
                    each / round_trip);
    };
    const auto upload = [&](int number) {
        const auto file = std::dynamic_pointer_cast<vfs::file>(
            folder.create_and_open_file(L"small " + std::to_wstring(number),
                                        vfs::modeWrite | vfs::modeOverwrite, std::int64_t{small}));
        file->write(data.data(), small);
        file->close(1);
        made.push_back(file);
    };
    // Both connections are there before the time is taken.
    upload(0);
    auto began = clock_type::now();
    for (int number = 1; number <= files; ++number) {
        upload(number);
    }
    report("up", began);
    made.erase(made.begin());
    began = clock_type::now();
    for (const auto& file : made) {
        file->open(vfs::modeRead, 0);
        if (file->read(data.data(), small) != small) {
            throw std::runtime_error("a part came back");
        }
        file->close(0);
    }
    report("down", began);
}

} // namespace

int wmain(int count, wchar_t** values) {
    const std::wstring mode = count > 1 ? values[1] : L"moves";
    return bench::run([&mode] {
        vfs_quilldeck::ensure_pc_id();
        vfs_quilldeck::client client(L"slow-line", L"slow-line");
        const vfs::item_ptr root = client.get_root();
        const auto began = clock_type::now();
        try {
            auto& folder = dynamic_cast<vfs::directory&>(*root);
            mode == L"far" ? move_small_files(folder) : move_both_ways(folder, mode);
        } catch (const vfs::exception& failure) {
            if (mode == L"moves" || mode == L"far") {
                throw;
            }
            std::printf("    failed after %.0f s: %ls: %ls\n", seconds_since(began),
                        failure.get_name().c_str(), failure.get_description().c_str());
            return;
        }
        if (mode != L"moves" && mode != L"far") {
            throw std::runtime_error("it did not fail");
        }
    });
}
