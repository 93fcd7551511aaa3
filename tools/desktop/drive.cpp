#include "drive.h"

#include "com/guard.h"
#include "com/memory.h"

#include <wrl/client.h>

#include <shlobj.h>

#include <array>

namespace desktop {

namespace {

using com::check;
using Microsoft::WRL::ComPtr;

// My Computer, and in it the class of the drive.
const std::wstring drive_name =
    L"::{20D04FE0-3AEA-1069-A2D8-08002B30309D}\\::{5FA947B5-650A-4374-8A9A-5EFA4F126834}";

ComPtr<IShellFolder> desktop_folder() {
    ComPtr<IShellFolder> folder;
    check(::SHGetDesktopFolder(&folder));
    return folder;
}

com::unique_id_list parse(IShellFolder& folder, std::wstring name) {
    LPITEMIDLIST list = nullptr;
    check(folder.ParseDisplayName(nullptr, nullptr, name.data(), nullptr, &list, nullptr));
    return com::unique_id_list(list);
}

template <class Interface>
ComPtr<Interface> bind(IShellFolder& folder, const std::wstring& name) {
    const com::unique_id_list list = parse(folder, name);
    ComPtr<Interface> bound;
    check(folder.BindToObject(list.get(), nullptr, IID_PPV_ARGS(&bound)));
    return bound;
}

} // namespace

com::unique_id_list drive_list() {
    return parse(*desktop_folder().Get(), drive_name);
}

ComPtr<IShellFolder> drive_folder(const std::wstring& path) {
    const auto root = bind<IShellFolder>(*desktop_folder().Get(), drive_name);
    return path.empty() ? root : bind<IShellFolder>(*root.Get(), path);
}

std::vector<char> read_from_drive(const std::wstring& path) {
    const std::size_t name = path.rfind(L'\\') + 1;
    const auto folder = drive_folder(name == 0 ? L"" : path.substr(0, name - 1));
    // Listed anew first, as a file manager does: the folder remembers where a file's bytes lay.
    ComPtr<IEnumIDList> items;
    check(folder->EnumObjects(nullptr, SHCONTF_FOLDERS | SHCONTF_NONFOLDERS, &items));
    const auto stream = bind<IStream>(*folder.Get(), path.substr(name));
    std::vector<char> content;
    std::array<char, 16384> buffer{};
    for (;;) {
        ULONG count = 0;
        const HRESULT status = stream->Read(buffer.data(), buffer.size(), &count);
        check(status);
        content.insert(content.end(), buffer.data(), buffer.data() + count);
        if (status == S_FALSE || count == 0) {
            return content;
        }
    }
}

void write_to_drive(const std::wstring& folder, const std::wstring& name,
                    const std::vector<char>& content) {
    ComPtr<IStorage> storage;
    check(drive_folder(folder).As(&storage));
    ComPtr<IStream> stream;
    check(storage->CreateStream(name.c_str(), STGM_CREATE | STGM_WRITE, 0, 0, &stream));
    ULONG written = 0;
    check(stream->Write(content.data(), static_cast<ULONG>(content.size()), &written));
    check(written == content.size() ? S_OK : E_FAIL);
}

} // namespace desktop
