#include "loaded_module.h"

#include "com/apartment.h"
#include "com/memory.h"

#include <gtest/gtest.h>
#include <oleauto.h>
#include <shellapi.h>

#include <set>
#include <string>
#include <utility>

namespace module {

namespace {

/// The identifier and the name of a description.
std::pair<GUID, std::wstring> identity(ITypeInfo& info) {
    TYPEATTR* attributes = nullptr;
    com::check(info.GetTypeAttr(&attributes));
    const GUID id = attributes->guid;
    info.ReleaseTypeAttr(attributes);
    BSTR name = nullptr;
    com::check(info.GetDocumentation(MEMBERID_NIL, &name, nullptr, nullptr, nullptr));
    return {id, com::unique_bstr(name).get()};
}

ComPtr<ITypeInfo> implemented(ITypeInfo& info) {
    HREFTYPE reference = 0;
    com::check(info.GetRefTypeOfImplType(0, &reference));
    ComPtr<ITypeInfo> found;
    com::check(info.GetRefTypeInfo(reference, &found));
    return found;
}

} // namespace

TEST(resources, type_library_names_each_class_and_its_interface) {
    const com::apartment apartment;
    ComPtr<ITypeLib> library;
    ASSERT_EQ(LoadTypeLibEx(support::extension_path().c_str(), REGKIND_NONE, &library), S_OK);
    BSTR name = nullptr;
    ASSERT_EQ(library->GetDocumentation(-1, &name, nullptr, nullptr, nullptr), S_OK);
    EXPECT_EQ(std::wstring(com::unique_bstr(name).get()), L"QuilldeckLib");

    std::size_t count = 0;
    for (UINT index = 0; index < library->GetTypeInfoCount(); ++index) {
        TYPEKIND kind{};
        library->GetTypeInfoType(index, &kind);
        if (kind != TKIND_COCLASS) {
            continue;
        }
        ++count;
        ComPtr<ITypeInfo> entry;
        ASSERT_EQ(library->GetTypeInfo(index, &entry), S_OK);
        const auto [id, class_name] = identity(*entry.Get());
        const ComPtr<ITypeInfo> companion = implemented(*entry.Get());
        EXPECT_EQ(identity(*companion.Get()).second, L"I" + class_name);
        EXPECT_EQ(identity(*implemented(*companion.Get()).Get()).first,
                  id == com::CLSID_ShellOverlayIcon ? IID_IDispatch : IID_IUnknown);
    }
    EXPECT_EQ(count, 24U);
}

TEST(resources, the_first_icon_is_the_drive_s) {
    HICON large = nullptr;
    HICON small_one = nullptr;
    EXPECT_EQ(ExtractIconExW(support::extension_path().c_str(), 0, &large, &small_one, 1), 2U);
    EXPECT_NE(large, nullptr);
    EXPECT_NE(small_one, nullptr);
    DestroyIcon(large);
    DestroyIcon(small_one);
}

TEST(resources, nothing_is_allocated_from_the_host_s_c_library) {
    const loaded_module extension;
    const auto* const base = reinterpret_cast<const char*>(extension.handle());
    const auto& dos = *reinterpret_cast<const IMAGE_DOS_HEADER*>(base);
    const auto& headers = *reinterpret_cast<const IMAGE_NT_HEADERS*>(base + dos.e_lfanew);
    const auto* library = reinterpret_cast<const IMAGE_IMPORT_DESCRIPTOR*>(
        base + headers.OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT].VirtualAddress);
    std::set<std::string> imported;
    for (; library->Name != 0; ++library) {
        const auto* thunk =
            reinterpret_cast<const IMAGE_THUNK_DATA*>(base + library->OriginalFirstThunk);
        for (; thunk->u1.AddressOfData != 0; ++thunk) {
            if (!IMAGE_SNAP_BY_ORDINAL(thunk->u1.Ordinal)) {
                imported.insert(
                    reinterpret_cast<const IMAGE_IMPORT_BY_NAME*>(base + thunk->u1.AddressOfData)
                        ->Name);
            }
        }
    }
    EXPECT_EQ(imported.count("HeapAlloc"), 1U);
    for (const char* name :
         {"malloc", "calloc", "realloc", "free", "_recalloc", "_expand", "_msize", "_strdup",
          "_wcsdup", "_getcwd", "_wgetcwd", "_tempnam", "_wtempnam"}) {
        EXPECT_EQ(imported.count(name), 0U) << name;
    }
}

} // namespace module
