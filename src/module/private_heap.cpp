#include "module/private_heap.h"

#include <windows.h>

#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <cstring>

namespace {

HANDLE heap = nullptr;

void* or_no_memory(void* block) {
    if (block == nullptr) {
        errno = ENOMEM;
    }
    return block;
}

/// What `ask(size, text)` fills in, in the way of the platform: it answers a length, or the size
/// that it needs where that is not enough. Allocated when there is no buffer.
template <typename Character, typename Ask>
Character* path_from(Character* buffer, std::size_t size, const Ask& ask) {
    const DWORD room = buffer == nullptr ? ask(0, nullptr) : static_cast<DWORD>(size);
    auto* const text =
        buffer == nullptr ? static_cast<Character*>(std::malloc(room * sizeof(Character))) : buffer;
    const DWORD length = text == nullptr ? 0 : ask(room, text);
    if (length != 0 && length < room) {
        return text;
    }
    errno = text == nullptr ? ENOMEM : ERANGE;
    if (text != buffer) {
        std::free(text);
    }
    return nullptr;
}

wchar_t* current_folder(wchar_t* buffer, int size) {
    return path_from(buffer, static_cast<std::size_t>(size),
                     [](DWORD room, wchar_t* text) { return ::GetCurrentDirectoryW(room, text); });
}

char* full_path(char* buffer, const char* path, std::size_t size) {
    return path_from(buffer, size, [path](DWORD room, char* text) {
        return ::GetFullPathNameA(path, room, text, nullptr);
    });
}

} // namespace

namespace module {

bool private_heap::create() noexcept {
    heap = ::HeapCreate(0, 0, 0);
    return heap != nullptr;
}

void private_heap::destroy() noexcept {
    ::HeapDestroy(heap);
    heap = nullptr;
}

} // namespace module

// The linker puts these in the place of the functions that their names tell, in all objects and
// libraries (see CMakeLists.txt). They have to be all functions in use that can give memory for
// `free`; tools/build/check_imports.py refuses a DLL that takes another from the system.
extern "C" {

void* __wrap_malloc(std::size_t size) {
    return or_no_memory(::HeapAlloc(heap, 0, size));
}

void __wrap_free(void* block) {
    if (block != nullptr) {
        ::HeapFree(heap, 0, block);
    }
}

void* __wrap_calloc(std::size_t count, std::size_t size) {
    std::size_t bytes = 0;
    if (__builtin_mul_overflow(count, size, &bytes)) {
        return or_no_memory(nullptr);
    }
    return or_no_memory(::HeapAlloc(heap, HEAP_ZERO_MEMORY, bytes));
}

void* __wrap_realloc(void* block, std::size_t size) {
    if (block == nullptr) {
        return __wrap_malloc(size);
    }
    if (size == 0) {
        __wrap_free(block);
        return nullptr;
    }
    return or_no_memory(::HeapReAlloc(heap, 0, block, size));
}

char* __wrap_strdup(const char* text) {
    const std::size_t size = std::strlen(text) + 1;
    void* copy = __wrap_malloc(size);
    return copy == nullptr ? nullptr : static_cast<char*>(std::memcpy(copy, text, size));
}

char* __wrap__strdup(const char* text) {
    return __wrap_strdup(text);
}

wchar_t* __wrap__wfullpath(wchar_t* buffer, const wchar_t* path, std::size_t size) {
    return path_from(buffer, size, [path](DWORD room, wchar_t* text) {
        return ::GetFullPathNameW(path, room, text, nullptr);
    });
}

// Those whose callers know them to be imported: the linker replaces the pointer.
char* (*__wrap___imp__strdup)(const char*) = &__wrap_strdup;
wchar_t* (*__wrap___imp__wgetcwd)(wchar_t*, int) = &current_folder;
char* (*__wrap___imp__fullpath)(char*, const char*, std::size_t) = &full_path;
}
