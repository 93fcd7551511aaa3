/// An upload over a line that breaks, on a machine that runs out of memory, as far as the retained
/// bytes are concerned: the log under test, beside a caller and a server that are plain byte
/// strings.
#pragma once

#include "failing_memory.h"

#include "vfs_quilldeck/transfer/upload_log.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <new>
#include <optional>
#include <stdexcept>
#include <string>

namespace vfs_quilldeck {

/// `choose(bound)` decides each step by a number below `bound`; what the log does wrong is thrown
/// as `std::logic_error`.
template <class Choose>
class upload_simulation {
public:
    explicit upload_simulation(Choose choose) : choose_(choose) {}

    /// One write, after a restart if the line is broken.
    void step() {
        if (broken_ && !restart()) {
            return;
        }
        write(next_data(), choose_(4) == 0 ? static_cast<int>(choose_(4)) : -1);
        require(log_.accepted() == position(written_), "accepted is what the caller has written");
    }

    /// Ends the upload: what the server has is what the caller wrote.
    void finish() {
        while (broken_ || !owed_.empty()) {
            if (broken_) {
                restart();
            } else {
                // It is the caller's to write again what failed.
                write(std::string(owed_), -1);
            }
        }
        require(server_ == written_, "the server holds what was written");
    }

private:
    // So small that an input goes through all of it in no time.
    static constexpr std::int64_t limit = 1'024;
    static constexpr std::int64_t chunk = 32;

    static void require(bool holds, const char* what) {
        if (!holds) {
            throw std::logic_error(what);
        }
    }

    static std::int64_t position(const std::string& text) {
        return static_cast<std::int64_t>(text.size());
    }

    static upload_log::bytes view(const std::string& text, std::size_t from = 0) {
        return upload_log::bytes(reinterpret_cast<const unsigned char*>(text.data()), text.size())
            .subspan(from);
    }

    static const std::string& noise() {
        static const std::string bytes = [] {
            std::string made(20'000, '\0');
            std::uint32_t value = 1;
            for (char& byte : made) {
                value = value * 1'664'525U + 1'013'904'223U;
                byte = static_cast<char>(value >> 24U);
            }
            return made;
        }();
        return bytes;
    }

    /// Mostly what a failed write left over, as a caller repeats it, whole or in pieces; sometimes
    /// other data.
    std::string next_data() {
        if (!owed_.empty() && choose_(8) != 0) {
            return choose_(2) == 0 ? owed_ : owed_.substr(0, choose_(bound_of(owed_)) + 1);
        }
        static constexpr std::uint32_t sizes[] = {0, 1, 3, 31, 32, 33, 100, 1'500};
        const std::uint32_t size = choose_(sizes[choose_(std::size(sizes))] + 1);
        return noise().substr(choose_(10'000), size);
    }

    static std::uint32_t bound_of(const std::string& text) {
        return static_cast<std::uint32_t>(text.size());
    }

    /// `allowed`: how many allocations of the log succeed, below 0 all do.
    void write(const std::string& data, int allowed) {
        const std::size_t known = std::min(owed_.size(), data.size());
        const bool repeats = owed_.compare(0, known, data, 0, known) == 0;
        std::optional<std::size_t> held;
        bool out_of_memory = false;
        try {
            const support::failing_memory memory(allowed);
            held = log_.offer(view(data));
        } catch (const std::bad_alloc&) {
            out_of_memory = true;
        }
        const auto kept = static_cast<std::size_t>(log_.end() - log_.accepted());
        if (!repeats) {
            require(!held && !out_of_memory, "other bytes than those that failed are refused");
            require(kept == owed_.size(), "a refusal changes nothing");
            return;
        }
        require(kept >= owed_.size() && kept <= std::max(owed_.size(), data.size()),
                "what is counted is held");
        if (kept > owed_.size()) {
            owed_ = data.substr(0, kept);
        }
        if (out_of_memory) {
            return;
        }
        const std::size_t ahead = server_.size() - std::min(written_.size(), server_.size());
        const std::size_t common = std::min(ahead, data.size());
        require(held == common, "what the server holds is not sent again");
        const bool breaks = choose_(6) == 0;
        const std::size_t placed =
            breaks ? common + choose_(bound_of(data) + 1 - static_cast<std::uint32_t>(common))
                   : data.size();
        server_.append(data, common, placed - common);
        if (breaks) {
            break_line();
            return;
        }
        written_ += data;
        owed_.erase(0, data.size());
        log_.accept(data.size());
        // libcurl has taken all of it, or still waits for more.
        if (choose_(3) != 0) {
            log_.confirm(log_.accepted());
            confirmed_ = std::max(confirmed_, log_.accepted());
            forgotten_ = std::max(forgotten_, position(written_) - limit);
        }
        require(log_.confirmed() == confirmed_, "confirmed only moves on");
    }

    /// Any number of the last bytes were still on their way.
    void break_line() {
        broken_ = true;
        static constexpr std::uint32_t losses[] = {0, 1, 32, 300, 20'000};
        const std::uint32_t lost = choose_(losses[choose_(std::size(losses))] + 1);
        server_.resize(server_.size() - std::min<std::size_t>(server_.size(), lost));
    }

    bool restart() {
        const std::int64_t held = position(server_);
        if (!log_.resume_at(held)) {
            require(held < forgotten_, "what is retained can be continued");
            require(log_.confirmed() == confirmed_, "a refusal changes nothing");
            start_over();
            return false;
        }
        require(held > forgotten_ - chunk, "what was let go cannot be continued");
        confirmed_ = held;
        broken_ = false;
        while (server_.size() < written_.size()) {
            const auto piece = log_.replay_from(position(server_));
            require(!piece.empty() && piece.size() <= written_.size() - server_.size(),
                    "a replay ends where the caller is");
            server_.append(piece.begin(), piece.end());
            if (choose_(16) == 0) {
                break_line();
                return false;
            }
        }
        require(log_.replay_from(position(written_)).empty(), "a replay ends");
        return true;
    }

    void start_over() {
        log_.clear();
        server_.clear();
        written_.clear();
        owed_.clear();
        confirmed_ = 0;
        forgotten_ = -chunk;
        broken_ = false;
    }

    Choose choose_;
    upload_log log_{{.history = limit, .chunk = chunk}};
    std::string written_; ///< what the caller was told is written
    std::string owed_;    ///< what is retained of writes that failed
    std::string server_;
    std::int64_t confirmed_ = 0;
    /// What lies below may be gone, what lies a chunk below it is.
    std::int64_t forgotten_ = -chunk;
    bool broken_ = false;
};

} // namespace vfs_quilldeck
