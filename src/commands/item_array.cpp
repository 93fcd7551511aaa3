#include "commands/item_array.h"

#include "com/guard.h"
#include "com/memory.h"
#include "shell_items/item_id_list.h"

#include <shlobj.h>

#include <bit>
#include <span>
#include <vector>

namespace commands {

namespace {

using Microsoft::WRL::ComPtr;
using get_id_list = HRESULT(WINAPI*)(IUnknown*, PIDLIST_ABSOLUTE*);

com::unique_id_list list_of(IShellItemArray& items, DWORD index) {
    // Not there before Windows Vista.
    static const auto get = std::bit_cast<get_id_list>(
        GetProcAddress(GetModuleHandleW(L"Shell32.dll"), "SHGetIDListFromObject"));
    if (!get) {
        throw com::status_exception(E_FAIL);
    }
    ComPtr<IShellItem> item;
    com::check(items.GetItemAt(index, &item));
    ITEMIDLIST* list = nullptr;
    com::check(get(item.Get(), &list));
    return com::unique_id_list(list);
}

} // namespace

DWORD count_of(IShellItemArray* items) {
    DWORD count = 0;
    if (items) {
        com::check(items->GetCount(&count));
    }
    return count;
}

std::optional<shell::PIDLDATA> record_of(IShellItemArray& items, DWORD index) {
    const com::unique_id_list list = list_of(items, index);
    const ITEMIDLIST* last = ILFindLastID(list.get());
    return shell::read_record({reinterpret_cast<const std::byte*>(last), last->mkid.cb});
}

std::optional<shell::PIDLDATA> single_record(IShellItemArray* items) {
    return count_of(items) == 1 ? record_of(*items, 0) : std::nullopt;
}

ComPtr<IDataObject> data_object_of(IShellItemArray& items, IShellFolder& folder) {
    ComPtr<IDataObject> object;
    const HRESULT bound = items.BindToHandler(nullptr, BHID_DataObject, IID_PPV_ARGS(&object));
    if (bound != E_NOTIMPL) {
        com::check(bound);
        return object;
    }
    std::vector<com::unique_id_list> owners;
    std::vector<PCUITEMID_CHILD> children;
    for (DWORD index = 0; index < count_of(&items); ++index) {
        owners.push_back(list_of(items, index));
        children.push_back(ILFindLastID(owners.back().get()));
    }
    com::check(folder.GetUIObjectOf(nullptr, static_cast<UINT>(children.size()), children.data(),
                                    IID_IDataObject, nullptr, &object));
    return object;
}

} // namespace commands
