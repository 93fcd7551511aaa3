/// bench_drop [FILES [MEGABYTES [REPEATS]]]: local files dropped on a folder of the drive, through
/// the drop target with its progress dialog, beside a bare loop on the same libcurl that makes the
/// same requests: many small files, a large one, and a tree of folders.

#include "bench_folder.h"
#include "measure.h"
#include "service_url.h"

#include "com/apartment.h"
#include "com/media.h"
#include "com/object.h"
#include "shell_items/shell_folder_interface.h"
#include "transfer/drop_target.h"
#include "vfs_quilldeck/session/pc_id.h"

#include <shlobj.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;
using Microsoft::WRL::ComPtr;

constexpr std::int64_t small_size = 4096;
constexpr int folders = 200;

/// What a drop target needs of a folder of the drive.
class folder_object final : public com::object<folder_object, shell::IShellFolderImpl> {
public:
    explicit folder_object(vfs::item_ptr item) : item_(std::move(item)) {}

    HRESULT STDMETHODCALLTYPE GetObject(HWND, VARIANT* result) override {
        result->vt = VT_BYREF;
        result->byref = &item_;
        return S_OK;
    }

private:
    vfs::item_ptr item_;
};

/// Paths of local files, as the file manager drags them.
class dropped_files final : public com::object<dropped_files, IDataObject> {
public:
    explicit dropped_files(const std::vector<std::wstring>& paths) {
        for (const std::wstring& path : paths) {
            list_ += path + L'\0';
        }
        list_ += L'\0';
    }

    HRESULT STDMETHODCALLTYPE GetData(FORMATETC* format, STGMEDIUM* answer) override {
        *answer = {};
        if (format->cfFormat != CF_HDROP) {
            return DV_E_FORMATETC;
        }
        auto block = com::make_global(sizeof(DROPFILES) + list_.size() * sizeof(wchar_t), GHND);
        {
            const com::global_lock locked(block.get());
            auto& header = *reinterpret_cast<DROPFILES*>(locked.bytes().data());
            header.pFiles = sizeof(header);
            header.fWide = TRUE;
            std::memcpy(&header + 1, list_.data(), list_.size() * sizeof(wchar_t));
        }
        *answer = com::medium(std::move(block)).release();
        return S_OK;
    }

    HRESULT STDMETHODCALLTYPE QueryGetData(FORMATETC* format) override {
        return format->cfFormat == CF_HDROP ? S_OK : DV_E_FORMATETC;
    }

    HRESULT STDMETHODCALLTYPE GetDataHere(FORMATETC*, STGMEDIUM*) override { return E_NOTIMPL; }

    HRESULT STDMETHODCALLTYPE GetCanonicalFormatEtc(FORMATETC*, FORMATETC*) override {
        return E_NOTIMPL;
    }

    HRESULT STDMETHODCALLTYPE SetData(FORMATETC*, STGMEDIUM*, BOOL) override { return E_NOTIMPL; }

    HRESULT STDMETHODCALLTYPE EnumFormatEtc(DWORD, IEnumFORMATETC**) override { return E_NOTIMPL; }

    HRESULT STDMETHODCALLTYPE DAdvise(FORMATETC*, DWORD, IAdviseSink*, DWORD*) override {
        return E_NOTIMPL;
    }

    HRESULT STDMETHODCALLTYPE DUnadvise(DWORD) override { return E_NOTIMPL; }

    HRESULT STDMETHODCALLTYPE EnumDAdvise(IEnumSTATDATA**) override { return E_NOTIMPL; }

private:
    std::wstring list_;
};

/// A local folder to drop from, gone at the end.
class local_files {
public:
    local_files() { fs::create_directories(top_); }

    local_files(const local_files&) = delete;
    local_files& operator=(const local_files&) = delete;

    ~local_files() {
        std::error_code ignored;
        fs::remove_all(top_, ignored);
    }

    std::wstring put(const std::wstring& name, std::int64_t size) const {
        const std::string data(static_cast<std::size_t>(size), 'q');
        std::ofstream(top_ / name, std::ios::binary)
            .write(data.data(), static_cast<std::streamsize>(data.size()));
        return (top_ / name).native();
    }

    std::wstring make_folder(const std::wstring& name) const {
        fs::create_directories(top_ / name);
        return (top_ / name).native();
    }

private:
    const fs::path top_ = fs::temp_directory_path() / L"quilldeck bench";
};

void drop(const vfs::item_ptr& folder, const std::vector<std::wstring>& paths) {
    const auto data = com::make<dropped_files>(paths);
    const auto target = com::make<transfer::CDropTargetImpl>();
    const auto object = com::make<folder_object>(folder);
    com::check(target->Init(object.Get(), {}, {}, nullptr, false));
    DWORD effect = DROPEFFECT_COPY;
    com::check(target->DragEnter(data.Get(), 0, {}, &effect));
    com::check(target->Drop(data.Get(), 0, {}, &effect));
    if (effect != DROPEFFECT_COPY) {
        throw std::runtime_error("a drop did not arrive");
    }
}

/// One drop of all beside the loop over all, each in a folder of its own.
template <class Drop, class Bare>
void measure(const std::string& what, int repeats, double bound, bench::bench_folder& folder,
             const Drop& ours, const Bare& bare) {
    const auto times = bench::measure_in_turns(
        repeats,
        [&] {
            ours();
            folder.clear();
        },
        [&] {
            bare();
            folder.clear();
        });
    const auto shown = [](const std::vector<double>& seconds) {
        return bench::fixed(bench::median(seconds), 2) + " s";
    };
    bench::report(what, shown(times.ours), shown(times.peer), times.ratio(),
                  "at most " + bench::fixed(bound, 2), times.ratio() <= bound);
}

void measure_drops(int files, std::int64_t megabytes, int repeats) {
    const com::apartment apartment;
    const vfs_quilldeck::client client(L"demo", L"demo");
    bench::bench_folder folder(client);
    const local_files local;

    std::vector<std::wstring> many;
    for (int number = 0; number < files; ++number) {
        many.push_back(local.put(L"file " + std::to_wstring(number), small_size));
    }
    measure(
        std::to_string(files) + " files of 4 KiB dropped", repeats, 1.15, folder,
        [&] { drop(folder.item(), many); },
        [&] {
            folder.list_bare();
            for (int number = 0; number < files; ++number) {
                folder.upload_bare(L"file " + std::to_wstring(number), small_size);
            }
            folder.list_bare();
        });

    const std::int64_t large = megabytes << 20U;
    const std::wstring path = local.put(L"large", large);
    measure(
        std::to_string(megabytes) + " MB dropped", repeats, 1 / 0.95, folder,
        [&] { drop(folder.item(), {path}); }, [&] { folder.upload_bare(L"large", large); });

    std::vector<std::wstring> tree;
    for (int number = 0; number < folders; ++number) {
        tree.push_back(local.make_folder(L"folder " + std::to_wstring(number)));
    }
    measure(
        std::to_string(folders) + " folders dropped", repeats, 1.15, folder,
        [&] { drop(folder.item(), tree); },
        [&] {
            folder.list_bare();
            for (int number = 0; number < folders; ++number) {
                folder.make_folder_bare(L"folder " + std::to_wstring(number));
            }
            folder.list_bare();
        });
}

} // namespace

int wmain(int count, wchar_t** values) {
    const std::vector<std::wstring> arguments(values + 1, values + count);
    const int files = arguments.empty() ? 1000 : std::stoi(arguments[0]);
    const std::int64_t megabytes = arguments.size() > 1 ? std::stoll(arguments[1]) : 256;
    const int repeats = arguments.size() > 2 ? std::stoi(arguments[2]) : 3;
    return bench::run([&] {
        vfs_quilldeck::ensure_pc_id();
        measure_drops(files, megabytes, repeats);
    });
}
