#include "vfs_quilldeck/transfer/upload_log.h"

#include <algorithm>
#include <utility>

namespace vfs_quilldeck {

void upload_log::clear() noexcept {
    chunks_.clear();
    begin_ = 0;
    size_ = 0;
    confirmed_ = 0;
    accepted_ = 0;
}

std::optional<std::size_t> upload_log::offer(bytes data) {
    const auto kept =
        static_cast<std::size_t>(std::min<std::int64_t>(end() - accepted_, std::ssize(data)));
    if (!equals(accepted_, data.first(kept))) {
        return std::nullopt;
    }
    append(data.subspan(kept));
    const std::int64_t ahead = std::max<std::int64_t>(confirmed_ - accepted_, 0);
    return std::min(data.size(), static_cast<std::size_t>(ahead));
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
    while (!data.empty()) {
        if (chunks_.empty() || chunks_.back().size() == bounds_.chunk) {
            add_chunk();
        }
        auto& chunk = chunks_.back();
        const std::size_t size = std::min(data.size(), bounds_.chunk - chunk.size());
        chunk.insert(chunk.end(), data.begin(), data.begin() + static_cast<std::ptrdiff_t>(size));
        size_ += static_cast<std::int64_t>(size);
        data = data.subspan(size);
    }
}

void upload_log::add_chunk() {
    // Memory that has been in use is faster than new memory, which must be mapped first.
    std::vector<unsigned char> fresh = std::exchange(spare_, {});
    fresh.clear();
    fresh.reserve(bounds_.chunk);
    chunks_.push_back(std::move(fresh));
}

void upload_log::trim_history() {
    const std::int64_t keep_from = std::min(confirmed_, accepted_) - bounds_.history;
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
    // Only whole ones leave at the front.
    const auto at = static_cast<std::size_t>(position - begin_);
    return bytes(chunks_[at / bounds_.chunk]).subspan(at % bounds_.chunk);
}

} // namespace vfs_quilldeck
