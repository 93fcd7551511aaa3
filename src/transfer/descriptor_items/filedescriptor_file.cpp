#include "transfer/descriptor_items/filedescriptor_file.h"

#include "com/clipboard_formats.h"
#include "transfer/format_values.h"

#include <array>
#include <cstddef>
#include <limits>
#include <utility>

namespace transfer {

namespace {

constexpr auto open_failed = L"Stream open failed";
constexpr auto size_failed = L"Get size failed";

/// What one of this program's own streams kept of its last failure; empty when there is nothing.
std::wstring description_of_failure(IStreamImpl* stream) {
    std::array<wchar_t, 80> name{};
    std::array<wchar_t, 1024> description{};
    const bool known =
        stream != nullptr &&
        stream->GetError(name.data(), description.data(), static_cast<int>(name.size()),
                         static_cast<int>(description.size())) == S_OK;
    return known ? std::wstring(description.data()) : std::wstring();
}

} // namespace

CFILEDESCRIPTORFile::CFILEDESCRIPTORFile(IDataObject* pDataObj, descriptor_group_ptr pFGD,
                                         std::size_t nIndex)
    : m_data(pDataObj), m_group(std::move(pFGD)), m_index(nIndex) {
    const auto fail = [](const wchar_t* why) {
        throw CWrapperException(
            internal_error,
            std::wstring(L"CFILEDESCRIPTORFile::CFILEDESCRIPTORFile( pDataObj, pFGD, nIndex ) : ") +
                why);
    };
    if (!m_data) {
        fail(L"pDataObj is NULL");
    }
    if (!m_group) {
        fail(L"pFGD is NULL");
    }
    if (m_index >= m_group->table.count()) {
        fail(L"nIndex is out of range");
    }
}

void CFILEDESCRIPTORFile::copy(const vfs::item_ptr& destination, bool move) {
    const auto original = m_group->drive.find_file(path());
    if (!original) {
        throw CWrapperException(
            internal_error,
            L"Invalid argument in CFILEDESCRIPTORFile::copy( vfs::item_ptr, bool )");
    }
    original->copy(destination, move);
}

void CFILEDESCRIPTORFile::open(std::int32_t mode, std::int64_t) {
    const auto fail = [&](const wchar_t* format) {
        throw CWrapperException(open_failed, filled(format, {path(), std::to_wstring(mode)}));
    };
    if (m_open) {
        fail(L"Stream '%1%' already opened, mode=%2%");
    }
    auto found = request_contents();
    if (!found) {
        fail(L"Stream '%1%' can't be opened, mode=%2%");
    }
    if (!found->stream) {
        fail(L"Stream '%1%' can't be opened by unknown reason, mode=%2%");
    }
    // By OLE's rules a stream comes with the position behind its data. One that cannot be
    // positioned is read from where it is.
    static_cast<void>(found->stream->Seek({}, STREAM_SEEK_SET, nullptr));
    found->mode = mode;
    found->size = size_of(*found->stream.Get());
    m_open = std::move(found);
}

void CFILEDESCRIPTORFile::close(vfs::time_seconds) {
    if (!m_open) {
        throw CWrapperException(L"Stream close failed",
                                filled(L"Stream '%1%' is not opened", {path()}));
    }
    m_open.reset();
}

void CFILEDESCRIPTORFile::seek(std::int64_t offset, std::int32_t origin) {
    const auto fail = [&](const wchar_t* why) {
        throw CWrapperException(L"Seek failed",
                                filled(L"Seek of stream '%1%' to %2% from %3% failed: ",
                                       {path(), std::to_wstring(offset), origin_name(origin)}) +
                                    why);
    };
    if (!m_open) {
        fail(L"stream not opened");
    }
    LARGE_INTEGER move;
    move.QuadPart = offset;
    ULARGE_INTEGER position{};
    if (FAILED(m_open->stream->Seek(move, static_cast<DWORD>(origin), &position))) {
        fail(L"stream operation call failed");
    }
    m_open->position = static_cast<std::int64_t>(position.QuadPart);
}

std::uint32_t CFILEDESCRIPTORFile::read(void* buffer, std::uint32_t length) {
    if (!m_open) {
        throw CWrapperException(L"Read failed",
                                filled(L"Read from '%1%' failed: Stream is not opened", {path()}));
    }
    std::uint32_t delivered = 0;
    while (delivered < length) {
        const ULONG wanted = length - delivered;
        ULONG count = 0;
        const HRESULT status =
            m_open->stream->Read(static_cast<std::byte*>(buffer) + delivered, wanted, &count);
        if (FAILED(status) || count > wanted) {
            if (delivered == 0) {
                fail_to_read(length);
            }
            // Bytes that came before the failure are delivered; the next call meets it again.
            break;
        }
        delivered += count;
        if (status != S_OK || count == 0) {
            break;
        }
    }
    m_open->position += delivered;
    if (delivered == 0 && length != 0 && m_open->position < m_open->size.value_or(0)) {
        fail_to_read(length);
    }
    return delivered;
}

std::int64_t CFILEDESCRIPTORFile::get_size() const {
    std::optional<std::int64_t> size;
    if (m_open) {
        size = size_of(*m_open->stream.Get());
    } else if (m_group->drive.is_ours()) {
        // To ask the stream would open the file on the store, before any byte of it is wanted.
        const auto original = m_group->drive.find_file(path());
        if (original) {
            size = original->get_size();
        }
    } else {
        const auto found = request_contents();
        if (!found || !found->stream) {
            throw CWrapperException(
                size_failed, filled(L"Can't get size: Error opening stream '%1%'", {path()}));
        }
        size = size_of(*found->stream.Get());
    }
    if (!size) {
        throw CWrapperException(
            size_failed,
            filled(L"Can't get size of '%1%': Stream operation call failed", {path()}));
    }
    return *size;
}

std::unique_ptr<CFILEDESCRIPTORFile::contents> CFILEDESCRIPTORFile::request_contents() const {
    auto found = std::make_unique<contents>();
    FORMATETC format =
        format_of(com::registered_formats.file_contents, TYMED_ISTREAM, static_cast<LONG>(m_index));
    if (FAILED(m_data->GetData(&format, found->medium.put()))) {
        return nullptr;
    }
    if (found->medium.get().tymed == TYMED_ISTREAM) {
        found->stream = found->medium.get().pstm;
    }
    if (found->stream && SUCCEEDED(found->stream.As(&found->own))) {
        // Whoever reads this file shows its failures.
        found->own->SetSilent();
    }
    return found;
}

std::optional<std::int64_t> CFILEDESCRIPTORFile::size_of(IStream& stream) {
    STATSTG found{};
    if (FAILED(stream.Stat(&found, STATFLAG_NONAME)) ||
        found.cbSize.QuadPart > std::numeric_limits<std::int64_t>::max()) {
        return std::nullopt;
    }
    return static_cast<std::int64_t>(found.cbSize.QuadPart);
}

void CFILEDESCRIPTORFile::fail_to_read(std::uint32_t length) const {
    std::wstring text = filled(L"Read of %1% bytes from '%2%' failed: Stream operation call failed",
                               {std::to_wstring(length), path()});
    const std::wstring description = description_of_failure(m_open->own.Get());
    if (!description.empty()) {
        text += L": " + description;
    }
    throw CWrapperException(L"Read failed", text);
}

} // namespace transfer
