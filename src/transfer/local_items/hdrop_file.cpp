#include "transfer/local_items/hdrop_file.h"

#include "utils/file_time.h"
#include "utils/unique_handle.h"

#include <io.h>

namespace transfer {

namespace {

constexpr auto open_failed = L"Stream open failed";
constexpr auto close_failed = L"Stream close failed";
constexpr auto seek_failed = L"Seek failed";
constexpr auto read_failed = L"Read failed";
constexpr auto write_failed = L"Write failed";
constexpr auto size_failed = L"Get size failed";

/// The mode of the runtime's streams.
const wchar_t* stream_mode_of(std::int32_t mode) {
    const bool reading = (mode & vfs::modeRead) != 0;
    if ((mode & vfs::modeWrite) == 0) {
        return L"rb";
    }
    if ((mode & vfs::modeOverwrite) != 0) {
        return reading ? L"wb+" : L"wb";
    }
    return reading ? L"ab+" : L"ab";
}

std::uint64_t joined(DWORD high, DWORD low) noexcept {
    return static_cast<std::uint64_t>(high) << 32 | low;
}

struct file_times {
    FILETIME creation;
    FILETIME access;
    FILETIME modification;
};

/// One of the times. `operation` is what failures name.
vfs::time_seconds read_time(const std::wstring& path, FILETIME file_times::* wanted,
                            const std::wstring& operation) {
    const std::wstring name = internal_error + operation;
    const utils::unique_file file(::CreateFileW(path.c_str(), GENERIC_READ,
                                                FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                                OPEN_EXISTING, 0, nullptr));
    if (!file) {
        throw CWrapperException(name + L": Can't open file", {});
    }
    file_times times;
    if (::GetFileTime(file.get(), &times.creation, &times.access, &times.modification) == FALSE) {
        throw CWrapperException(name + L": Can't get file time", {});
    }
    return utils::seconds_of(times.*wanted);
}

} // namespace

vfs::time_seconds CHDROPFile::get_creation_date() const {
    return read_time(path(), &file_times::creation, L"file::get_creation_date()");
}

vfs::time_seconds CHDROPFile::get_access_date() const {
    return read_time(path(), &file_times::access, L"file::get_access_date()");
}

vfs::time_seconds CHDROPFile::get_modification_date() const {
    // Users and support know its failures by the words of the creation date.
    return read_time(path(), &file_times::modification, L"file::get_creation_date()");
}

void CHDROPFile::open(std::int32_t mode, std::int64_t) {
    if (m_stream) {
        throw CWrapperException(open_failed, filled(L"Stream '%1%' already opened, mode=%2%",
                                                    {path(), std::to_wstring(mode)}));
    }
    m_stream.reset(::_wfopen(path().c_str(), stream_mode_of(mode)));
    if (!m_stream) {
        throw CWrapperException(open_failed,
                                filled(L"Stream '%1%' can't be opened by unknown reason, mode=%2%",
                                       {path(), std::to_wstring(mode)}));
    }
    m_mode = mode;
    m_opened = mode == vfs::modeRead ? state_of(m_stream.get()) : std::nullopt;
}

void CHDROPFile::close(vfs::time_seconds) {
    // What could not be written is still there for another attempt.
    if (std::fflush(opened(close_failed)) != 0) {
        throw CWrapperException(
            close_failed, filled(L"Close of '%1%' failed: Stream operation call failed", {path()}));
    }
    abandon();
}

void CHDROPFile::abandon() noexcept {
    m_stream.reset();
    m_mode = 0;
}

bool CHDROPFile::is_bof() {
    opened(L"is_bof() failed");
    return get_pos() == 0;
}

bool CHDROPFile::is_eof() {
    return std::feof(opened(L"is_eof() failed")) != 0;
}

std::int64_t CHDROPFile::get_pos() const {
    return ::_ftelli64(opened(L"get_pos() failed"));
}

void CHDROPFile::seek(std::int64_t offset, std::int32_t origin) {
    const auto fail = [&](const wchar_t* why) {
        throw CWrapperException(seek_failed,
                                filled(L"Seek of stream '%1%' to %2% from %3% failed: ",
                                       {path(), std::to_wstring(offset), origin_name(origin)}) +
                                    why);
    };
    if (!m_stream) {
        fail(L"stream not opened");
    }
    if (::_fseeki64(m_stream.get(), offset, origin) != 0) {
        fail(L"stream operation call failed");
    }
}

std::uint32_t CHDROPFile::read(void* buffer, std::uint32_t length) {
    const auto fail = [this](const wchar_t* why) {
        throw CWrapperException(read_failed, filled(L"Read from '%1%' failed: ", {path()}) + why);
    };
    if (!m_stream) {
        fail(L"Stream is not opened");
    }
    std::FILE* const stream = m_stream.get();
    const auto count = static_cast<std::uint32_t>(std::fread(buffer, 1, length, stream));
    if (std::ferror(stream) != 0) {
        std::clearerr(stream);
        // Bytes that came before the failure are delivered; the next call meets it again.
        if (count == 0) {
            fail(L"Stream operation call failed");
        }
        return count;
    }
    if (m_opened && (count < length || static_cast<std::uint64_t>(get_pos()) > m_opened->size) &&
        has_changed()) {
        fail(L"The file has been changed meanwhile");
    }
    return count;
}

std::uint32_t CHDROPFile::write(const void* buffer, std::uint32_t length) {
    if (!m_stream) {
        throw CWrapperException(write_failed, filled(L"file::write(pdata,len) m_path=%1% len=%2%",
                                                     {path(), std::to_wstring(length)}));
    }
    return static_cast<std::uint32_t>(std::fwrite(buffer, 1, length, m_stream.get()));
}

std::int64_t CHDROPFile::get_size() const {
    unique_stream for_this_call;
    if (!m_stream) {
        for_this_call.reset(::_wfopen(path().c_str(), L"rb"));
        if (!for_this_call) {
            throw CWrapperException(
                size_failed, filled(L"Can't get size: Error opening stream '%1%'", {path()}));
        }
    }
    std::FILE* const stream = m_stream ? m_stream.get() : for_this_call.get();
    const std::int64_t position = ::_ftelli64(stream);
    const bool moved = position >= 0 && ::_fseeki64(stream, 0, SEEK_END) == 0;
    const std::int64_t size = moved ? ::_ftelli64(stream) : -1;
    if (size < 0 || ::_fseeki64(stream, position, SEEK_SET) != 0) {
        throw CWrapperException(
            size_failed,
            filled(L"Can't get size of '%1%': Stream operation call failed", {path()}));
    }
    return size;
}

std::optional<CHDROPFile::state> CHDROPFile::state_of(std::FILE* stream) {
    BY_HANDLE_FILE_INFORMATION found;
    const auto handle = reinterpret_cast<HANDLE>(::_get_osfhandle(::_fileno(stream)));
    if (::GetFileInformationByHandle(handle, &found) == FALSE) {
        return std::nullopt;
    }
    return state{joined(found.nFileSizeHigh, found.nFileSizeLow),
                 utils::steps_of(found.ftLastWriteTime)};
}

bool CHDROPFile::has_changed() const {
    return state_of(m_stream.get()) != m_opened;
}

std::FILE* CHDROPFile::opened(const wchar_t* name) const {
    if (!m_stream) {
        throw CWrapperException(name, filled(L"Stream '%1%' is not opened", {path()}));
    }
    return m_stream.get();
}

} // namespace transfer
