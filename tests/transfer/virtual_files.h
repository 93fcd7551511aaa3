/// A data object of another program: files that exist nowhere but in it, told by a descriptor block
/// and delivered as streams, each of which may lie and die.
#pragma once

#include "com/clipboard_formats.h"
#include "com/media.h"
#include "com/object.h"
#include "com/plain_stream.h"

#include <shldisp.h>
#include <shlobj.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstring>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace transfer_test {

struct virtual_file {
    std::wstring path;
    std::string content{};
    DWORD flags = FD_ATTRIBUTES;
    DWORD attributes = FILE_ATTRIBUTE_NORMAL;
    /// What the stream tells as its size, if it is not that of the content; below 0 nothing.
    std::optional<std::int64_t> claimed_size{};
    /// The stream fails from here on.
    std::size_t dies_at = std::numeric_limits<std::size_t>::max();
    /// How much one call delivers at most.
    std::size_t piece = std::numeric_limits<std::size_t>::max();
    std::chrono::milliseconds delay{0};
    /// The medium in which the content comes.
    DWORD medium = TYMED_ISTREAM;
};

inline virtual_file virtual_folder(const std::wstring& path) {
    return {.path = path, .content = {}, .attributes = FILE_ATTRIBUTE_DIRECTORY};
}

class virtual_stream final
    : public com::plain_stream<
          com::object<virtual_stream, com::chain<IStream, ISequentialStream>>> {
public:
    /// As OLE wants it, it comes with the position behind its data.
    virtual_stream(const virtual_file& file, std::shared_ptr<std::atomic<int>> reads)
        : file_(file), position_(file.content.size()), reads_(std::move(reads)) {}

    HRESULT STDMETHODCALLTYPE Read(void* buffer, ULONG count, ULONG* read) override {
        std::this_thread::sleep_for(file_.delay);
        const std::size_t end = std::min(file_.content.size(), file_.dies_at);
        const auto given =
            std::min({std::size_t{count}, file_.piece, end - std::min(position_, end)});
        *read = 0;
        if (--*reads_ == 0) {
            return STG_E_READFAULT;
        }
        if (given == 0 && position_ == file_.dies_at) {
            return RPC_E_DISCONNECTED;
        }
        std::memcpy(buffer, file_.content.data() + position_, given);
        position_ += given;
        *read = static_cast<ULONG>(given);
        return given == 0 ? S_FALSE : S_OK;
    }

    HRESULT STDMETHODCALLTYPE Seek(LARGE_INTEGER move, DWORD origin,
                                   ULARGE_INTEGER* position) override {
        const std::size_t from = origin == STREAM_SEEK_SET   ? 0
                                 : origin == STREAM_SEEK_CUR ? position_
                                                             : file_.content.size();
        const auto to = static_cast<std::int64_t>(from) + move.QuadPart;
        if (to < 0) {
            return STG_E_INVALIDFUNCTION;
        }
        position_ = static_cast<std::size_t>(to);
        if (position) {
            position->QuadPart = position_;
        }
        return S_OK;
    }

    HRESULT STDMETHODCALLTYPE Stat(STATSTG* stat, DWORD) override {
        const auto size = file_.claimed_size.value_or(std::ssize(file_.content));
        stat->cbSize.QuadPart = static_cast<ULONGLONG>(size);
        return size < 0 ? STG_E_ACCESSDENIED : S_OK;
    }

    HRESULT STDMETHODCALLTYPE Write(const void*, ULONG, ULONG*) override { return E_NOTIMPL; }

    HRESULT STDMETHODCALLTYPE CopyTo(IStream*, ULARGE_INTEGER, ULARGE_INTEGER*,
                                     ULARGE_INTEGER*) override {
        return E_NOTIMPL;
    }

private:
    const virtual_file file_;
    std::size_t position_;
    const std::shared_ptr<std::atomic<int>> reads_;
};

class virtual_files final
    : public com::object<virtual_files, IDataObject, IDataObjectAsyncCapability> {
public:
    std::vector<virtual_file> files;
    /// Further formats, whole, and their bytes.
    std::vector<std::pair<UINT, std::string>> blocks;
    /// The n-th read of all streams together fails; 0 for none.
    std::shared_ptr<std::atomic<int>> reads_until_failure = std::make_shared<std::atomic<int>>();
    /// The requests for "FileContents".
    int openings = 0;
    /// What it was told of the end, in order: the formats and their values.
    std::vector<std::pair<UINT, DWORD>> told{};
    /// Whether it wants to be read by another thread, and what came of that: the operations that
    /// began and ended, and how the last one ended.
    bool async = false;
    int begun = 0;
    int ended = 0;
    std::pair<HRESULT, DWORD> end{};

    /// The descriptor block. A path of the full length stands there without a terminator.
    com::unique_global descriptors() const {
        const std::size_t offset = offsetof(FILEGROUPDESCRIPTORW, fgd);
        auto block = com::make_global(offset + files.size() * sizeof(FILEDESCRIPTORW), GHND);
        const com::global_lock locked(block.get());
        auto& group = *reinterpret_cast<FILEGROUPDESCRIPTORW*>(locked.bytes().data());
        group.cItems = static_cast<UINT>(files.size());
        for (std::size_t i = 0; i < files.size(); ++i) {
            FILEDESCRIPTORW& record = (&group.fgd[0])[i];
            record.dwFlags = files[i].flags;
            record.dwFileAttributes = files[i].attributes;
            files[i].path.copy(record.cFileName, std::size(record.cFileName));
        }
        return block;
    }

    HRESULT STDMETHODCALLTYPE GetData(FORMATETC* format, STGMEDIUM* answer) override {
        *answer = {};
        const auto give = [&](com::medium made) {
            *answer = made.release();
            return S_OK;
        };
        if (!files.empty() && format->cfFormat == com::registered_formats.file_group_descriptor) {
            return give(com::medium(descriptors()));
        }
        for (const auto& [known, bytes] : blocks) {
            if (format->cfFormat == known) {
                auto block = com::make_global(bytes.size(), GHND);
                std::memcpy(com::global_lock(block.get()).bytes().data(), bytes.data(),
                            bytes.size());
                return give(com::medium(std::move(block)));
            }
        }
        if (format->cfFormat != com::registered_formats.file_contents) {
            return DV_E_FORMATETC;
        }
        ++openings;
        const virtual_file& file = files.at(static_cast<std::size_t>(format->lindex));
        switch (file.medium) {
        case TYMED_ISTREAM:
            answer->tymed = TYMED_ISTREAM;
            answer->pstm = com::make<virtual_stream>(file, reads_until_failure).Detach();
            return S_OK;
        case TYMED_HGLOBAL:
            return give(com::medium(com::make_global(1, GHND)));
        default:
            return DV_E_TYMED;
        }
    }

    HRESULT STDMETHODCALLTYPE GetDataHere(FORMATETC*, STGMEDIUM*) override { return E_NOTIMPL; }

    HRESULT STDMETHODCALLTYPE QueryGetData(FORMATETC* format) override {
        const bool virtual_one = format->cfFormat == com::registered_formats.file_group_descriptor;
        return (virtual_one && !files.empty()) ||
                       std::ranges::any_of(
                           blocks, [&](const auto& each) { return each.first == format->cfFormat; })
                   ? S_OK
                   : DV_E_FORMATETC;
    }

    HRESULT STDMETHODCALLTYPE GetCanonicalFormatEtc(FORMATETC*, FORMATETC*) override {
        return E_NOTIMPL;
    }

    HRESULT STDMETHODCALLTYPE SetData(FORMATETC* format, STGMEDIUM* medium, BOOL release) override {
        DWORD value = 0;
        std::memcpy(&value, com::global_lock(medium->hGlobal).bytes().data(), sizeof value);
        told.emplace_back(format->cfFormat, value);
        if (release) {
            ReleaseStgMedium(medium);
        }
        return S_OK;
    }

    HRESULT STDMETHODCALLTYPE SetAsyncMode(BOOL wanted) override {
        async = wanted;
        return S_OK;
    }

    HRESULT STDMETHODCALLTYPE GetAsyncMode(BOOL* wanted) override {
        *wanted = async;
        return S_OK;
    }

    HRESULT STDMETHODCALLTYPE StartOperation(IBindCtx*) override {
        ++begun;
        return S_OK;
    }

    HRESULT STDMETHODCALLTYPE InOperation(BOOL* runs) override {
        *runs = begun != ended;
        return S_OK;
    }

    HRESULT STDMETHODCALLTYPE EndOperation(HRESULT status, IBindCtx*, DWORD effects) override {
        end = {status, effects};
        ++ended;
        return S_OK;
    }

    HRESULT STDMETHODCALLTYPE EnumFormatEtc(DWORD, IEnumFORMATETC** result) override {
        std::vector<FORMATETC> formats;
        const auto add = [&formats](UINT format, DWORD medium) {
            formats.push_back(
                {static_cast<CLIPFORMAT>(format), nullptr, DVASPECT_CONTENT, -1, medium});
        };
        if (!files.empty()) {
            add(com::registered_formats.file_group_descriptor, TYMED_HGLOBAL);
            add(com::registered_formats.file_contents, TYMED_ISTREAM);
        }
        for (const auto& [format, bytes] : blocks) {
            add(format, TYMED_HGLOBAL);
        }
        return SHCreateStdEnumFmtEtc(static_cast<UINT>(formats.size()), formats.data(), result);
    }

    HRESULT STDMETHODCALLTYPE DAdvise(FORMATETC*, DWORD, IAdviseSink*, DWORD*) override {
        return E_NOTIMPL;
    }

    HRESULT STDMETHODCALLTYPE DUnadvise(DWORD) override { return E_NOTIMPL; }

    HRESULT STDMETHODCALLTYPE EnumDAdvise(IEnumSTATDATA**) override { return E_NOTIMPL; }
};

/// A block of the format `CF_HDROP` with these paths.
inline com::unique_global dropped_paths(const std::vector<std::wstring>& paths) {
    std::wstring list;
    for (const std::wstring& path : paths) {
        list += path + L'\0';
    }
    list += L'\0';
    auto block = com::make_global(sizeof(DROPFILES) + list.size() * sizeof(wchar_t), GHND);
    const com::global_lock locked(block.get());
    auto& header = *reinterpret_cast<DROPFILES*>(locked.bytes().data());
    header.pFiles = sizeof header;
    header.fWide = TRUE;
    std::memcpy(&header + 1, list.data(), list.size() * sizeof(wchar_t));
    return block;
}

} // namespace transfer_test
