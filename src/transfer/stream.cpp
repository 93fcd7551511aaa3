#include "transfer/stream.h"

#include "com/guard.h"
#include "resources/string_ids.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

namespace transfer {

namespace {

/// Callers need not ask for counts and positions.
template <class T>
void set(T* result, T value) noexcept {
    if (result) {
        *result = value;
    }
}

ULARGE_INTEGER large(std::uint64_t value) noexcept {
    ULARGE_INTEGER result;
    result.QuadPart = value;
    return result;
}

/// System-modal boxes have no owner: a stream does not know for whom it is read.
constinit ui::message_prompt boxes(nullptr);

void copy_text(const std::wstring& text, LPWSTR buffer, int length) {
    com::required(buffer);
    if (length > 0) {
        buffer[text.copy(buffer, static_cast<std::size_t>(length) - 1)] = L'\0';
    }
}

} // namespace

CStreamImpl::~CStreamImpl() {
    com::guard([&] {
        if (!m_file) {
            return;
        }
        const std::int32_t mode = m_file->get_open_mode();
        // Who heard that a write failed need not hear again that nothing is kept.
        if (mode != 0 && !(m_write_failed && (mode & vfs::modeWrite) != 0)) {
            attempt(IDS_STREAM_CLOSE_FAILED, *m_file, [&] { m_file->close(vfs::time_unknown); });
        }
        m_file->abandon();
    });
}

HRESULT CStreamImpl::Init(const std::shared_ptr<vfs::file>& file) noexcept {
    return com::guard([&] {
        const std::shared_ptr<vfs::file> own = file->duplicate();
        if (!attempt(IDS_STREAM_OPEN_FAILED, *own, [&] { own->open(vfs::modeRead, 0); })) {
            return E_FAIL;
        }
        m_file = own;
        return S_OK;
    });
}

HRESULT CStreamImpl::SetSilent() {
    m_show_errors = false;
    return S_OK;
}

HRESULT CStreamImpl::GetError(LPWSTR lpzsMessage, LPWSTR lpszDescription, int nMessageLen,
                              int nDescriptionLen) {
    return com::guard([&] {
        copy_text(m_last_message, lpzsMessage, nMessageLen);
        copy_text(m_last_description, lpszDescription, nDescriptionLen);
        return m_last_message.empty() || m_last_description.empty() ? E_FAIL : S_OK;
    });
}

HRESULT CStreamImpl::Read(void* buffer, ULONG count, ULONG* read) {
    return com::guard([&] {
        set(read, ULONG{0});
        if (!buffer) {
            return E_POINTER;
        }
        if (!m_file) {
            return E_FAIL;
        }
        bool at_end = false;
        ULONG delivered = 0;
        if (!attempt(IDS_STREAM_READ_FAILED, *m_file, [&] {
                at_end = m_file->is_eof();
                if (!at_end) {
                    delivered = m_file->read(buffer, count);
                }
            })) {
            return E_FAIL;
        }
        set(read, delivered);
        return at_end ? S_FALSE : S_OK;
    });
}

HRESULT CStreamImpl::Write(const void* buffer, ULONG count, ULONG* written) {
    return com::guard([&] {
        set(written, ULONG{0});
        if (!buffer) {
            return E_POINTER;
        }
        if (!m_file) {
            return E_FAIL;
        }
        if (count == 0) {
            return S_OK;
        }
        m_write_failed = true;
        const bool writing = (m_file->get_open_mode() & vfs::modeWrite) != 0;
        if (!writing && !turn_around()) {
            return E_FAIL;
        }
        ULONG taken = 0;
        if (!attempt(IDS_STREAM_WRITE_FAILED, *m_file,
                     [&] { taken = m_file->write(buffer, count); })) {
            return E_FAIL;
        }
        m_write_failed = false;
        set(written, taken);
        return S_OK;
    });
}

bool CStreamImpl::turn_around() {
    // Each step is tried again by itself: the file that was closed cannot be closed again.
    const auto step = [this](const auto& operation) {
        return attempt(IDS_STREAM_WRITE_FAILED, *m_file, operation);
    };
    if (m_file->get_open_mode() != 0) {
        m_write_from = m_file->get_pos();
        if (!step([&] { m_file->close(vfs::time_unknown); })) {
            return false;
        }
    }
    if (!m_misplaced && !step([&] { m_file->open(vfs::modeWrite | vfs::modeOverwrite, 0); })) {
        return false;
    }
    if (!step([&] { m_file->seek(m_write_from, vfs::seek_beginning); })) {
        // What would be written is not what belongs at the beginning.
        m_misplaced = true;
        m_file->abandon();
        return false;
    }
    return true;
}

HRESULT CStreamImpl::Seek(LARGE_INTEGER move, DWORD origin, ULARGE_INTEGER* position) {
    return com::guard([&] {
        set(position, large(0));
        if (!m_file) {
            return E_FAIL;
        }
        try {
            m_file->seek(move.QuadPart, static_cast<std::int32_t>(origin));
            set(position, large(static_cast<std::uint64_t>(m_file->get_pos())));
            return S_OK;
        } catch (const vfs::exception& failure) {
            keep(failure);
            return E_FAIL;
        }
    });
}

HRESULT CStreamImpl::CopyTo(IStream* target, ULARGE_INTEGER count, ULARGE_INTEGER* read,
                            ULARGE_INTEGER* written) {
    if (!target) {
        return S_OK;
    }
    std::uint64_t total_read = 0;
    std::uint64_t total_written = 0;
    std::array<std::byte, 4096> buffer;
    while (total_read < count.QuadPart) {
        const auto wanted =
            static_cast<ULONG>(std::min<std::uint64_t>(buffer.size(), count.QuadPart - total_read));
        ULONG delivered = 0;
        // A file may notice its end by a read that brings nothing.
        if (Read(buffer.data(), wanted, &delivered) != S_OK || delivered == 0) {
            break;
        }
        total_read += delivered;
        ULONG taken = 0;
        const HRESULT status = target->Write(buffer.data(), delivered, &taken);
        total_written += taken;
        if (FAILED(status) || taken < delivered) {
            break;
        }
    }
    set(read, large(total_read));
    set(written, large(total_written));
    return S_OK;
}

HRESULT CStreamImpl::Stat(STATSTG* stat, DWORD) {
    return com::guard([&] {
        ULARGE_INTEGER& size = com::required(stat).cbSize;
        if (!m_file) {
            return E_FAIL;
        }
        return attempt(IDS_STREAM_SEEK_FAILED, *m_file,
                       [&] { size = large(static_cast<std::uint64_t>(m_file->get_size())); })
                   ? S_OK
                   : E_FAIL;
    });
}

template <class Operation>
bool CStreamImpl::attempt(UINT text, const vfs::file& file, const Operation& operation) {
    for (;;) {
        std::wstring description;
        try {
            operation();
            return true;
        } catch (const vfs::exception& failure) {
            if (!m_show_errors) {
                keep(failure);
                return false;
            }
            description = failure.get_description();
        }
        if (m_prompt.ask(IDS_STREAM_ERROR, text, {file.get_name(), description},
                         MB_SYSTEMMODAL | MB_ICONSTOP | MB_RETRYCANCEL) != IDRETRY) {
            return false;
        }
    }
}

void CStreamImpl::keep(const vfs::exception& failure) {
    m_last_message = failure.get_name();
    m_last_description = failure.get_description();
}

HRESULT create_stream(const vfs::item_ptr& file, REFIID iid, void** result) noexcept {
    return com::guard([&] {
        com::cleared(result);
        const auto content = std::dynamic_pointer_cast<vfs::file>(file);
        if (!content) {
            return E_NOINTERFACE;
        }
        const auto stream = com::make<CStreamImpl>(boxes);
        com::check(stream->Init(content));
        return stream->QueryInterface(iid, result);
    });
}

} // namespace transfer
