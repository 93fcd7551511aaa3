/// What the tests of bindings share: a user of their own, and the bytes of the user's file.
#pragma once

#include "syncer/binding.h"
#include "syncer/binding_manager.h"
#include "utils/filesystem.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace syncer {

/// A new user, whose files go with this object.
class test_user {
public:
    test_user() { std::filesystem::remove_all(directory()); }

    test_user(const test_user&) = delete;
    test_user& operator=(const test_user&) = delete;

    ~test_user() { std::filesystem::remove_all(directory()); }

    std::wstring name() const { return L"\u00FCser of a test"; }

    /// The user's file, in a directory that is there.
    std::filesystem::path file() const { return binding_manager::get_bindings_path(name()); }

    std::filesystem::path directory() const {
        return std::filesystem::path(utils::filesystem::get_special_directory(0)) / "Quilldeck" /
               name();
    }

    void write(const std::string& text) const { std::ofstream(file(), std::ios::binary) << text; }

    std::string bytes() const {
        std::ifstream in(file(), std::ios::binary);
        return {std::istreambuf_iterator<char>(in), {}};
    }
};

/// A permanent backup of a file in this local directory.
inline binding backup_of(const std::filesystem::path& local, const std::wstring& filename) {
    return {L"Quilldeck/My Documents", local,   filename, binding_mode::user,
            binding_type::permanent,   L"none", 0,        backup_rule};
}

} // namespace syncer
