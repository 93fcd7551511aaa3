#pragma once

#include <shtypes.h>
#include <windows.h>

#include <cstddef>
#include <cstring>
#include <string>

/// Bytes behind which no memory is: a read past their end ends the program.
class guarded_bytes {
public:
    explicit guarded_bytes(const std::string& bytes) {
        constexpr std::size_t page = 4096;
        const std::size_t size = (bytes.size() + page - 1) / page * page;
        m_pages = static_cast<char*>(
            VirtualAlloc(nullptr, size + page, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE));
        DWORD old = 0;
        VirtualProtect(m_pages + size, page, PAGE_NOACCESS, &old);
        m_begin = m_pages + size - bytes.size();
        std::memcpy(m_begin, bytes.data(), bytes.size());
    }

    guarded_bytes(const guarded_bytes&) = delete;
    guarded_bytes& operator=(const guarded_bytes&) = delete;

    ~guarded_bytes() { VirtualFree(m_pages, 0, MEM_RELEASE); }

    const ITEMIDLIST* as_list() const { return reinterpret_cast<const ITEMIDLIST*>(m_begin); }

private:
    char* m_pages;
    char* m_begin;
};
