#include "signed_in.h"

#include "shell_items/id_list_bytes.h"

namespace shell {

namespace {

std::wstring text_of(STRRET& name, const ITEMIDLIST* list) {
    wchar_t* text = nullptr;
    com::check(StrRetToStrW(&name, list, &text));
    return com::task_ptr<wchar_t>(text).get();
}

} // namespace

com::unique_id_list drive_list() {
    ITEMIDLIST* list = nullptr;
    com::check(SHParseDisplayName(L"::{20D04FE0-3AEA-1069-A2D8-08002B30309D}\\"
                                  L"::{5FA947B5-650A-4374-8A9A-5EFA4F126834}",
                                  nullptr, &list, 0, nullptr));
    return com::unique_id_list(list);
}

ComPtr<IShellFolder2> make_drive() {
    const auto drive = com::make<CShellFolderImpl>();
    com::check(drive->Initialize(drive_list().get()));
    ComPtr<IShellFolder2> folder;
    com::check(drive.As(&folder));
    return folder;
}

ComPtr<IShellFolder2> open(IShellFolder& folder, const std::wstring& path) {
    ComPtr<IShellFolder2> opened;
    com::check(folder.BindToObject(parse(folder, path).get(), nullptr, IID_PPV_ARGS(&opened)));
    return opened;
}

std::vector<com::unique_id_list> list(IShellFolder& folder, SHCONTF flags) {
    std::vector<com::unique_id_list> found;
    ComPtr<IEnumIDList> items;
    com::check(folder.EnumObjects(nullptr, flags, &items));
    ITEMIDLIST* item = nullptr;
    while (items && items->Next(1, &item, nullptr) == S_OK) {
        found.emplace_back(item);
    }
    return found;
}

std::wstring name_of(IShellFolder& folder, const ITEMIDLIST* list, SHGDNF flags) {
    STRRET name{};
    com::check(folder.GetDisplayNameOf(list, flags, &name));
    return text_of(name, list);
}

std::wstring cell_of(IShellFolder2& folder, const ITEMIDLIST* list, UINT column) {
    SHELLDETAILS details{};
    const HRESULT status = folder.GetDetailsOf(list, column, &details);
    if (status == E_FAIL) {
        return L"-";
    }
    com::check(status);
    return text_of(details.str, list);
}

SFGAOF attributes_of(IShellFolder& folder, std::vector<const ITEMIDLIST*> items) {
    SFGAOF flags = ~SFGAOF{0};
    com::check(folder.GetAttributesOf(static_cast<UINT>(items.size()), items.data(), &flags));
    return flags;
}

std::string bytes_of(const ITEMIDLIST* list) {
    const auto entries = entries_of(list);
    return {reinterpret_cast<const char*>(entries.data()), entries.size()};
}

vfs::item_ptr item_of(IShellFolder& folder) {
    return get_item(folder, nullptr);
}

std::shared_ptr<vfs::directory> directory_of(IShellFolder& folder) {
    return get_directory(folder, nullptr);
}

} // namespace shell
