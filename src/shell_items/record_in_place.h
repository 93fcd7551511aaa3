#pragma once

#include "shell_items/item_id_list.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace shell {

/// The record that an entry of a list holds, read where it lies: a view asks for each cell and each
/// comparison by a list, and the copy would cost more than the answer. Null for an entry that is no
/// record. The list has to outlive it.
class record_in_place {
public:
    explicit record_in_place(std::span<const std::byte> entry) noexcept {
        if (reinterpret_cast<std::uintptr_t>(entry.data()) % alignof(PIDLDATA) != 0) {
            copy_ = read_record(entry);
            record_ = copy_ ? &*copy_ : nullptr;
        } else if (entry.size() == record_size) {
            record_ = reinterpret_cast<const PIDLDATA*>(entry.data());
        }
    }

    record_in_place(const record_in_place&) = delete;
    record_in_place& operator=(const record_in_place&) = delete;

    explicit operator bool() const noexcept { return record_ != nullptr; }

    const PIDLDATA& operator*() const noexcept { return *record_; }

private:
    std::optional<PIDLDATA> copy_; ///< of an entry that is not aligned
    const PIDLDATA* record_ = nullptr;
};

} // namespace shell
