#include "dropped_files.h"

#include "com/clipboard_formats.h"
#include "com/media.h"
#include "com/memory.h"
#include "com/object.h"

#include <shlobj.h>

#include <array>
#include <fstream>
#include <utility>

namespace desktop {

namespace {

namespace fs = std::filesystem;
using com::check;
using com::registered_formats;
using Microsoft::WRL::ComPtr;

FORMATETC format_of(UINT format, TYMED kind, LONG index = -1) {
    return {static_cast<CLIPFORMAT>(format), nullptr, DVASPECT_CONTENT, index,
            static_cast<DWORD>(kind)};
}

com::medium get(IDataObject& source, FORMATETC format) {
    com::medium taken;
    check(source.GetData(&format, taken.put()));
    check(taken.get().tymed == format.tymed ? S_OK : DV_E_TYMED);
    return taken;
}

void write_to(const fs::path& path, IStream& stream) {
    std::ofstream file(path, std::ios::binary);
    std::array<char, 65'536> piece;
    for (ULONG count = 1; count != 0;) {
        check(stream.Read(piece.data(), piece.size(), &count));
        file.write(piece.data(), static_cast<std::streamsize>(count));
    }
}

class file_target final : public com::object<file_target, IDropTarget> {
public:
    file_target(fs::path folder, std::function<void()> done)
        : folder_(std::move(folder)), done_(std::move(done)) {}

    HRESULT STDMETHODCALLTYPE DragEnter(IDataObject* data, DWORD keys, POINTL point,
                                        DWORD* effect) override {
        takes_ = offers_files(*data);
        return DragOver(keys, point, effect);
    }

    HRESULT STDMETHODCALLTYPE DragOver(DWORD, POINTL, DWORD* effect) override {
        *effect &= takes_ ? DROPEFFECT_COPY : DROPEFFECT_NONE;
        return S_OK;
    }

    HRESULT STDMETHODCALLTYPE DragLeave() override { return S_OK; }

    HRESULT STDMETHODCALLTYPE Drop(IDataObject* data, DWORD keys, POINTL point,
                                   DWORD* effect) override {
        DragOver(keys, point, effect);
        return com::guard([&] {
            take_files(*data, folder_);
            done_();
        });
    }

private:
    const fs::path folder_;
    const std::function<void()> done_;
    bool takes_ = false;
};

class drop_source final : public com::object<drop_source, IDropSource> {
public:
    HRESULT STDMETHODCALLTYPE QueryContinueDrag(BOOL escape, DWORD keys) override {
        if (escape) {
            return DRAGDROP_S_CANCEL;
        }
        return (keys & MK_LBUTTON) != 0 ? S_OK : DRAGDROP_S_DROP;
    }

    HRESULT STDMETHODCALLTYPE GiveFeedback(DWORD) override { return DRAGDROP_S_USEDEFAULTCURSORS; }
};

} // namespace

bool offers_files(IDataObject& source) {
    FORMATETC wanted = format_of(registered_formats.file_group_descriptor, TYMED_HGLOBAL);
    return source.QueryGetData(&wanted) == S_OK;
}

void take_files(IDataObject& source, const fs::path& folder) {
    const com::medium table =
        get(source, format_of(registered_formats.file_group_descriptor, TYMED_HGLOBAL));
    const com::global_lock block(table.get().hGlobal);
    const auto& group = *reinterpret_cast<const FILEGROUPDESCRIPTORW*>(block.bytes().data());
    for (UINT index = 0; index < group.cItems; ++index) {
        const FILEDESCRIPTORW& record = group.fgd[index];
        const fs::path path = folder / record.cFileName;
        if ((record.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0) {
            fs::create_directories(path);
            continue;
        }
        const com::medium content = get(source, format_of(registered_formats.file_contents,
                                                          TYMED_ISTREAM, static_cast<LONG>(index)));
        write_to(path, *content.get().pstm);
    }
}

ComPtr<IDropTarget> make_file_target(fs::path folder, std::function<void()> done) {
    return com::make<file_target>(std::move(folder), std::move(done));
}

ComPtr<IDataObject> local_data(const fs::path& path) {
    LPITEMIDLIST list = nullptr;
    check(::SHParseDisplayName(path.c_str(), nullptr, &list, 0, nullptr));
    const com::unique_id_list owner(list);
    ComPtr<IShellFolder> parent;
    PCUITEMID_CHILD child = nullptr;
    check(::SHBindToParent(list, IID_PPV_ARGS(&parent), &child));
    ComPtr<IDataObject> data;
    check(parent->GetUIObjectOf(nullptr, 1, &child, __uuidof(IDataObject), nullptr,
                                reinterpret_cast<void**>(data.GetAddressOf())));
    return data;
}

ComPtr<IDropSource> make_drop_source() {
    return com::make<drop_source>();
}

} // namespace desktop
