#include "shell_items/item_id_list.h"

#include "shell_items/id_list_bytes.h"

#include <algorithm>
#include <cstring>
#include <limits>

namespace shell {

namespace {

/// One list of `entries` and, behind them, `records`; null when memory is exhausted.
com::unique_id_list join(std::span<const std::byte> entries,
                         std::span<const PIDLDATA> records) noexcept {
    const std::size_t length = entries.size() + records.size_bytes() + terminator_size;
    com::unique_id_list list(static_cast<ITEMIDLIST*>(::CoTaskMemAlloc(length)));
    if (list) {
        auto* end = reinterpret_cast<std::byte*>(list.get());
        end = std::ranges::copy(entries, end).out;
        end = std::ranges::copy(std::as_bytes(records), end).out;
        std::fill_n(end, terminator_size, std::byte{0});
    }
    return list;
}

com::unique_id_list copy_raw(std::span<const std::byte> entries) {
    com::unique_id_list list = join(entries, {});
    if (!list) {
        throw com::status_exception(E_OUTOFMEMORY);
    }
    return list;
}

void write_bytes(IStream& stream, const void* bytes, std::size_t size) {
    ULONG written = 0;
    com::check(stream.Write(bytes, static_cast<ULONG>(size), &written));
    if (written != size) {
        throw com::status_exception(E_FAIL);
    }
}

void read_bytes(IStream& stream, void* bytes, std::size_t size) {
    ULONG fetched = 0;
    com::check(stream.Read(bytes, static_cast<ULONG>(size), &fetched));
    if (fetched != size) {
        throw com::status_exception(E_FAIL);
    }
}

/// Reads in steps, so that a wrong length costs no more memory than there are bytes.
std::vector<std::byte> read_list_bytes(IStream& stream, std::size_t length) {
    constexpr std::size_t step = 65536;
    std::vector<std::byte> bytes;
    while (bytes.size() < length) {
        const std::size_t begin = bytes.size();
        bytes.resize(begin + std::min(step, length - begin));
        read_bytes(stream, bytes.data() + begin, bytes.size() - begin);
    }
    return bytes;
}

} // namespace

CItemIDList::CItemIDList(const ITEMIDLIST* list, bool raw) {
    auto left = entries_of(list);
    if (raw) {
        head_ = copy_raw(left);
        return;
    }
    while (!left.empty()) {
        const auto entry = left.first(entry_size(left.data()));
        const auto record = read_record(entry);
        if (!record) {
            throw com::status_exception(E_INVALIDARG);
        }
        records_.push_back(*record);
        left = left.subspan(entry.size());
    }
}

CItemIDList::CItemIDList(const CItemIDList& other)
    : head_(other.head_ ? copy_raw(other.head_entries()) : nullptr), records_(other.records_) {}

CItemIDList& CItemIDList::operator=(const CItemIDList& other) {
    return *this = CItemIDList(other);
}

com::unique_id_list CItemIDList::to_list() const noexcept {
    return join(head_entries(), records_);
}

std::wstring CItemIDList::path_string() const {
    std::wstring path;
    for (const PIDLDATA& record : records_) {
        if (&record != records_.data()) {
            path += L'\\';
        }
        path += record.get_name();
    }
    return path;
}

CItemIDList CItemIDList::operator+(const CItemIDList& other) const {
    CItemIDList sum = *this;
    if (!other.has_head()) {
        sum.records_.insert(sum.records_.end(), other.records_.begin(), other.records_.end());
    }
    return sum;
}

bool CItemIDList::operator==(const CItemIDList& other) const noexcept {
    return has_head() == other.has_head() &&
           std::ranges::equal(head_entries(), other.head_entries()) && records_ == other.records_;
}

HRESULT CItemIDList::write(IStream* stream) const noexcept {
    return com::guard([&] {
        IStream& target = com::required(stream);
        const com::unique_id_list list = to_list();
        if (!list) {
            throw com::status_exception(E_OUTOFMEMORY);
        }
        const std::uint8_t raw = has_head();
        const auto length =
            static_cast<std::uint32_t>(entries_of(list.get()).size() + terminator_size);
        write_bytes(target, &raw, sizeof(raw));
        write_bytes(target, &length, sizeof(length));
        write_bytes(target, list.get(), length);
    });
}

HRESULT CItemIDList::read(IStream* stream) noexcept {
    return com::guard([&] {
        IStream& source = com::required(stream);
        std::uint8_t raw = 0;
        std::uint32_t length = 0;
        read_bytes(source, &raw, sizeof(raw));
        read_bytes(source, &length, sizeof(length));
        const std::vector<std::byte> bytes = read_list_bytes(source, length);
        if (!holds_whole_list(bytes)) {
            throw com::status_exception(E_FAIL);
        }
        *this = CItemIDList(reinterpret_cast<const ITEMIDLIST*>(bytes.data()), raw != 0);
    });
}

std::span<const std::byte> CItemIDList::head_entries() const noexcept {
    return entries_of(head_.get());
}

std::optional<PIDLDATA> read_record(std::span<const std::byte> entry) noexcept {
    if (entry.size() != record_size) {
        return std::nullopt;
    }
    PIDLDATA record;
    std::memcpy(&record, entry.data(), record_size);
    return record;
}

HRESULT CPIDLConstructor::copy(ITEMIDLIST** to, const PIDLDATA& from) noexcept {
    *to = join({}, {&from, 1}).release();
    return *to ? S_OK : E_OUTOFMEMORY;
}

} // namespace shell
