#include "shell_items/seams.h"

namespace shell {

namespace {

seams current;

} // namespace

void set_seams(const seams& table) noexcept {
    current = table;
}

const seams& get_seams() noexcept {
    return current;
}

} // namespace shell
