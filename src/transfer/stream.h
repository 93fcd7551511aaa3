#pragma once

#include "com/object.h"
#include "com/plain_stream.h"
#include "transfer/istream_impl.h"
#include "ui/prompt.h"
#include "vfs/exceptions.h"
#include "vfs/file.h"

#include <objidl.h>

#include <cstdint>
#include <memory>
#include <string>

namespace transfer {

/// A file of the store as a stream that any program can read or write. It belongs to one thread, as
/// the open file does. Those who read it have no way to tell their user what went wrong, so each
/// failing operation asks the user itself and is made again on demand, unless the reader wants
/// silence.
class CStreamImpl final
    : public com::plain_stream<
          com::object<CStreamImpl, IStreamImpl, com::chain<IStream, ISequentialStream>>> {
public:
    /// `prompt` must outlive the stream.
    explicit CStreamImpl(ui::prompt& prompt) noexcept : m_prompt(prompt) {}

    /// Closes the file, which makes an upload its content, unless a write failed for good.
    ~CStreamImpl() override;

    /// Opens a duplicate of the file for reading.
    HRESULT Init(const std::shared_ptr<vfs::file>& file) noexcept;

    HRESULT STDMETHODCALLTYPE SetSilent() override;
    HRESULT STDMETHODCALLTYPE GetError(LPWSTR lpzsMessage, LPWSTR lpszDescription, int nMessageLen,
                                       int nDescriptionLen) override;

    /// S_FALSE once the end has been met; fewer bytes than asked for are S_OK.
    HRESULT STDMETHODCALLTYPE Read(void* buffer, ULONG count, ULONG* read) override;
    /// Reopens a file that was being read, with its content to be replaced, at the same position. A
    /// file that has no such place keeps its old content, and no later write succeeds. Nothing to
    /// write is S_OK.
    HRESULT STDMETHODCALLTYPE Write(const void* buffer, ULONG count, ULONG* written) override;
    /// Asks nobody: a store that cannot seek would make each look at a stream's size a question.
    HRESULT STDMETHODCALLTYPE Seek(LARGE_INTEGER move, DWORD origin,
                                   ULARGE_INTEGER* position) override;
    /// Copies until the end, a failure, or a target that takes less; the counts tell how far. The
    /// result is S_OK in any case.
    HRESULT STDMETHODCALLTYPE CopyTo(IStream* target, ULARGE_INTEGER count, ULARGE_INTEGER* read,
                                     ULARGE_INTEGER* written) override;
    /// Sets `cbSize` and leaves all else as it is.
    HRESULT STDMETHODCALLTYPE Stat(STATSTG* stat, DWORD flag) override;

private:
    /// Makes the operation until it succeeds, true, or is given up. `text` tells of its failure.
    template <class Operation>
    bool attempt(UINT text, const vfs::file& file, const Operation& operation);
    /// From reading to writing; false when that was given up.
    bool turn_around();
    void keep(const vfs::exception& failure);

    ui::prompt& m_prompt;
    /// Null until it has been opened.
    std::shared_ptr<vfs::file> m_file;
    /// Where writing begins after reading.
    std::int64_t m_write_from = 0;
    /// The file cannot be written from there.
    bool m_misplaced = false;
    /// The last write was given up.
    bool m_write_failed = false;
    bool m_show_errors = true;
    std::wstring m_last_message;
    std::wstring m_last_description;
};

/// A stream over `file`, opened, queried for `iid`; failures of opening it are shown. E_NOINTERFACE
/// for an item that is no `vfs::file`.
HRESULT create_stream(const vfs::item_ptr& file, REFIID iid, void** result) noexcept;

} // namespace transfer
