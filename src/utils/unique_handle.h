/// Owners of the platform's handles.
#pragma once

#include <windows.h>

#include <utility>

namespace utils {

/// Owns one handle and closes it. `Traits` names the type, the value that means none, and `close`.
template <class Traits>
class unique_resource {
public:
    using pointer = typename Traits::pointer;

    unique_resource() = default;

    explicit unique_resource(pointer value) noexcept : value_(value) {}

    unique_resource(unique_resource&& other) noexcept : value_(other.release()) {}

    unique_resource& operator=(unique_resource&& other) noexcept {
        reset(other.release());
        return *this;
    }

    ~unique_resource() { reset(); }

    pointer get() const noexcept { return value_; }

    explicit operator bool() const noexcept { return value_ != Traits::none(); }

    pointer release() noexcept { return std::exchange(value_, Traits::none()); }

    void reset(pointer value = Traits::none()) noexcept {
        const pointer old = std::exchange(value_, value);
        if (old != Traits::none()) {
            Traits::close(old);
        }
    }

    /// For calls that store a new handle through a pointer; what was held is closed.
    pointer* put() noexcept {
        reset();
        return &value_;
    }

private:
    pointer value_ = Traits::none();
};

/// A kernel object for which the platform answers null on failure.
struct kernel_handle_traits {
    using pointer = HANDLE;

    static pointer none() noexcept { return nullptr; }

    static void close(pointer value) noexcept { ::CloseHandle(value); }
};

using unique_handle = unique_resource<kernel_handle_traits>;

/// An open file, for which the platform answers INVALID_HANDLE_VALUE on failure.
struct file_handle_traits {
    using pointer = HANDLE;

    static pointer none() noexcept { return INVALID_HANDLE_VALUE; }

    static void close(pointer value) noexcept { ::CloseHandle(value); }
};

using unique_file = unique_resource<file_handle_traits>;

/// A view of a file mapping.
struct view_traits {
    using pointer = void*;

    static pointer none() noexcept { return nullptr; }

    static void close(pointer value) noexcept { ::UnmapViewOfFile(value); }
};

using unique_view = unique_resource<view_traits>;

/// An open key of the registry.
struct registry_key_traits {
    using pointer = HKEY;

    static pointer none() noexcept { return nullptr; }

    static void close(pointer value) noexcept { ::RegCloseKey(value); }
};

using unique_registry_key = unique_resource<registry_key_traits>;

/// The same key once more, for reading; null for null, and for one that cannot be opened.
inline unique_registry_key duplicate_key(HKEY key) noexcept {
    unique_registry_key copy;
    if (key) {
        ::RegOpenKeyExW(key, nullptr, 0, KEY_READ, copy.put());
    }
    return copy;
}

} // namespace utils
