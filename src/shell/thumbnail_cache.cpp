#include "shell/thumbnail_cache.h"

#include "utils/exceptions.h"
#include "utils/file_name.h"
#include "utils/file_time.h"
#include "utils/filesystem.h"

#include <windows.h>

#include <cstdint>

namespace shell {

namespace {

/// How a failure is told inside this cache; its users turn all of them into a status code.
void require(bool success, const wchar_t* failure) {
    if (!success) {
        throw std::wstring(failure);
    }
}

std::wstring get_application_folder() {
    try {
        return utils::filesystem::get_special_directory(0);
    } catch (const utils::system_error_exception&) {
        throw std::wstring(L"Can't retrieve application folder");
    }
}

} // namespace

std::wstring get_thumbnail_path(const std::wstring& id) {
    // An id comes from the network: it must not lead out of the folder.
    require(utils::is_file_name(id), L"Thumbnail file name is wrong");
    std::wstring path = get_application_folder();
    for (const wchar_t* name : {L"\\Quilldeck", L"\\Thumbnails"}) {
        path += name;
        require(::CreateDirectoryW(path.c_str(), nullptr) ||
                    ::GetLastError() == ERROR_ALREADY_EXISTS,
                L"Can't create Quilldeck folder");
    }
    return path + L"\\" + id;
}

bool is_thumbnail_fresh(const std::wstring& path, vfs::time_seconds modified) {
    if (::GetFileAttributesW(path.c_str()) == INVALID_FILE_ATTRIBUTES) {
        return false;
    }
    const utils::unique_file file(::CreateFileW(path.c_str(), GENERIC_READ, 0, nullptr,
                                                OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    require(static_cast<bool>(file), L"Can't open thumbnail file");
    FILETIME written;
    require(::GetFileTime(file.get(), nullptr, nullptr, &written),
            L"Can't get thumbnail file modification time");
    return utils::seconds_of(written) >= modified;
}

CThumbnailWriter::CThumbnailWriter(const std::wstring& path)
    : m_path(path), m_neighbour(path + L".part"),
      // Deleting is shared, so that the file can be renamed while nobody else can write to it.
      m_file(::CreateFileW(m_neighbour.c_str(), GENERIC_WRITE, FILE_SHARE_DELETE, nullptr,
                           CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr)) {
    require(static_cast<bool>(m_file), L"Can't open thumbnail file for writing");
}

CThumbnailWriter::~CThumbnailWriter() {
    if (!m_committed) {
        ::DeleteFileW(m_neighbour.c_str());
    }
}

void CThumbnailWriter::write(const vfs::byte_buffer& bytes) {
    DWORD written = 0;
    require(::WriteFile(m_file.get(), bytes.data(), static_cast<DWORD>(bytes.size()), &written,
                        nullptr) &&
                written == bytes.size(),
            L"Can't write thumbnail file");
}

void CThumbnailWriter::commit() {
    // The bytes go to the disk before the name does: a machine that stops between the two would
    // leave the name on a file of zeros.
    require(::FlushFileBuffers(m_file.get()) &&
                ::MoveFileExW(m_neighbour.c_str(), m_path.c_str(), MOVEFILE_REPLACE_EXISTING),
            L"Can't write thumbnail file");
    m_committed = true;
}

void store_thumbnail(const std::wstring& path, const vfs::byte_buffer& bytes) {
    CThumbnailWriter writer(path);
    writer.write(bytes);
    writer.commit();
}

} // namespace shell
