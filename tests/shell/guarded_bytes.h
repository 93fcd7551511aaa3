#pragma once

#include <shtypes.h>
#include <windows.h>

#include <cstddef>
#include <memory>
#include <string>

/// Bytes behind which no memory is: a read past their end ends the program.
class guarded_bytes {
public:
    explicit guarded_bytes(const std::string& bytes)
        : m_pages(static_cast<char*>(VirtualAlloc(nullptr, 2 * page, MEM_COMMIT, PAGE_READWRITE))),
          m_begin(m_pages.get() + page - bytes.size()) {
        DWORD old = 0;
        VirtualProtect(m_pages.get() + page, page, PAGE_NOACCESS, &old);
        bytes.copy(m_begin, bytes.size());
    }

    const ITEMIDLIST* as_list() const { return reinterpret_cast<const ITEMIDLIST*>(m_begin); }

private:
    struct free_pages {
        void operator()(char* pages) const { VirtualFree(pages, 0, MEM_RELEASE); }
    };

    static constexpr std::size_t page = 4096;
    std::unique_ptr<char, free_pages> m_pages;
    char* m_begin;
};
