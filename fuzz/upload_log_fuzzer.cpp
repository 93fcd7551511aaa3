#include "upload_simulation.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    constexpr int most_steps = 50;
    const std::uint8_t* const end = data + size;
    // Two bytes a choice; large bounds are reached in even steps. Out of choices, the line holds.
    const auto choose = [&data, end](std::uint32_t bound) -> std::uint32_t {
        if (end - data < 2) {
            return bound - 1;
        }
        const std::uint64_t choice = std::uint64_t{data[0]} << 8U | data[1];
        data += 2;
        return static_cast<std::uint32_t>(bound <= 65'536 ? choice % bound
                                                          : choice * bound / 65'536);
    };
    vfs_quilldeck::upload_simulation simulation(choose);
    for (int step = 0; step < most_steps && end - data >= 2; ++step) {
        simulation.step();
    }
    simulation.finish();
    return 0;
}
