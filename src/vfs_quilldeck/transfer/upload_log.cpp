#include "vfs_quilldeck/transfer/upload_log.h"

#include <algorithm>
#include <utility>

namespace vfs_quilldeck {

namespace {

constexpr std::size_t chunk_size = std::size_t{64} * 1024;

} // namespace

void upload_log::clear() {
    *this = {};
}

std::optional<std::size_t> upload_log::offer(bytes data) {
    const std::int64_t ahead = std::max<std::int64_t>(confirmed_ - accepted_, 0);
    const std::size_t held = std::min(data.size(), static_cast<std::size_t>(ahead));
    if (!equals(accepted_, data.first(held))) {
        return std::nullopt;
    }
    if (held < data.size()) {
        truncate(std::max(confirmed_, accepted_));
        append(data.subspan(held));
    }
    return held;
}

void upload_log::confirm(std::int64_t position) {
    confirmed_ = std::max(confirmed_, position);
    trim_history();
}

bool upload_log::resume_at(std::int64_t held) {
    if (held < begin_ || held > end()) {
        return false;
    }
    confirmed_ = held;
    return true;
}

upload_log::bytes upload_log::replay_from(std::int64_t position) const {
    if (position >= accepted_) {
        return {};
    }
    const bytes piece = piece_at(position);
    return piece.first(std::min(piece.size(), static_cast<std::size_t>(accepted_ - position)));
}

bool upload_log::equals(std::int64_t position, bytes data) const {
    while (!data.empty()) {
        const bytes piece = piece_at(position);
        const std::size_t size = std::min(piece.size(), data.size());
        if (!std::ranges::equal(piece.first(size), data.first(size))) {
            return false;
        }
        data = data.subspan(size);
        position += static_cast<std::int64_t>(size);
    }
    return true;
}

void upload_log::append(bytes data) {
    size_ += static_cast<std::int64_t>(data.size());
    while (!data.empty()) {
        if (chunks_.empty() || chunks_.back().size() == chunk_size) {
            // Memory that has been in use is faster than new memory, which must be mapped first.
            chunks_.push_back(std::exchange(spare_, {}));
            chunks_.back().clear();
            chunks_.back().reserve(chunk_size);
        }
        auto& chunk = chunks_.back();
        const std::size_t size = std::min(data.size(), chunk_size - chunk.size());
        chunk.insert(chunk.end(), data.begin(), data.begin() + static_cast<std::ptrdiff_t>(size));
        data = data.subspan(size);
    }
}

void upload_log::truncate(std::int64_t position) {
    while (end() > position) {
        auto& chunk = chunks_.back();
        const auto surplus = static_cast<std::size_t>(end() - position);
        const std::size_t size = std::min(surplus, chunk.size());
        chunk.resize(chunk.size() - size);
        size_ -= static_cast<std::int64_t>(size);
        if (chunk.empty()) {
            chunks_.pop_back();
        }
    }
}

void upload_log::trim_history() {
    const std::int64_t keep_from = std::min(confirmed_, accepted_) - history_limit;
    while (!chunks_.empty()) {
        const auto size = static_cast<std::int64_t>(chunks_.front().size());
        if (begin_ + size > keep_from) {
            break;
        }
        spare_ = std::move(chunks_.front());
        chunks_.pop_front();
        begin_ += size;
        size_ -= size;
    }
}

upload_log::bytes upload_log::piece_at(std::int64_t position) const {
    // All chunks are full but the last, and only whole ones leave at the front.
    const auto at = static_cast<std::size_t>(position - begin_);
    return bytes(chunks_[at / chunk_size]).subspan(at % chunk_size);
}

} // namespace vfs_quilldeck
