#pragma once

#include <cstddef>
#include <memory>
#include <memory_resource>
#include <vector>

namespace serializer {

/// Memory that is taken piece by piece and given back all at once, when the arena goes. For one
/// thread at a time.
///
/// The chunks are all of one size, which heaps keep for the next arena. Those of
/// `std::pmr::monotonic_buffer_resource` grow until they come fresh from the system, and then the
/// page faults cost more than the reading of a settings file.
class arena final : public std::pmr::memory_resource {
public:
    arena() = default;
    arena(const arena&) = delete;
    arena& operator=(const arena&) = delete;

private:
    void* do_allocate(std::size_t size, std::size_t alignment) override;
    void do_deallocate(void* place, std::size_t size, std::size_t alignment) override;
    bool do_is_equal(const memory_resource& other) const noexcept override;

    /// The beginning of a new chunk.
    std::byte* add_chunk(std::size_t size);

    std::vector<std::unique_ptr<std::byte[]>> chunks_;
    /// What is left of the last chunk of the usual size.
    std::byte* free_ = nullptr;
    std::size_t left_ = 0;
};

} // namespace serializer
