#pragma once

#include "com/memory.h"
#include "shell_items/item_record.h"

#include <objidl.h>
#include <shtypes.h>

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace shell {

/// A path of items: an owned raw list that is never looked into, in practice the absolute list from
/// the desktop to the namespace root, and behind it records of ours. Either may be missing. A
/// value.
class CItemIDList {
public:
    CItemIDList() = default;
    /// With `raw` a copy of the list as `head`, otherwise one record for each entry. Null is an
    /// empty list. Throws a status, E_INVALIDARG for an entry that is no record of ours.
    CItemIDList(const ITEMIDLIST* list, bool raw);

    explicit CItemIDList(const PIDLDATA& record) : records_{record} {}

    CItemIDList(const CItemIDList& other);
    CItemIDList(CItemIDList&&) noexcept = default;
    CItemIDList& operator=(const CItemIDList& other);
    CItemIDList& operator=(CItemIDList&&) noexcept = default;
    ~CItemIDList() = default;

    /// Both parts as one list, which ends in three zero bytes; null when memory is exhausted.
    com::unique_id_list to_list() const noexcept;

    /// The number of records; `head` does not count.
    std::size_t count() const noexcept { return records_.size(); }

    bool has_head() const noexcept { return head_ != nullptr; }

    const std::vector<PIDLDATA>& records() const noexcept { return records_; }

    /// There must be a record.
    const PIDLDATA& last() const { return records_.back(); }

    PIDLDATA& last() { return records_.back(); }

    void append(const PIDLDATA& record) { records_.push_back(record); }

    /// The names, parted by single backslashes.
    std::wstring path_string() const;

    /// This path with the records of `other` behind it. An `other` with a head is dropped.
    CItemIDList operator+(const CItemIDList& other) const;
    /// The bytes of the heads and the records are equal.
    bool operator==(const CItemIDList& other) const noexcept;

    /// One byte that tells whether there is a head, the list's length as 32 bits, the list.
    HRESULT write(IStream* stream) const noexcept;
    /// Takes the place of what was here; on a failure nothing changes. E_FAIL for fewer bytes than
    /// were promised, or for bytes that are no list.
    HRESULT read(IStream* stream) noexcept;

private:
    std::span<const std::byte> head_entries() const noexcept;

    com::unique_id_list head_;
    std::vector<PIDLDATA> records_;
};

/// The record that `entry` of a raw list is; nothing if it is none of ours.
std::optional<PIDLDATA> read_record(std::span<const std::byte> entry) noexcept;

/// How an enumerator makes the lists that it delivers.
struct CPIDLConstructor {
    static HRESULT copy(ITEMIDLIST** to, const PIDLDATA& from) noexcept;

    static void destroy(ITEMIDLIST* list) noexcept { ::CoTaskMemFree(list); }
};

} // namespace shell
