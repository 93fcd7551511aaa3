#include "loaded_module.h"

#include "com/apartment.h"
#include "com/memory.h"

#include <gtest/gtest.h>
#include <oleauto.h>

#include <set>
#include <string>

namespace module {

namespace {

std::wstring name_of(ITypeInfo& info) {
    BSTR name = nullptr;
    com::check(info.GetDocumentation(MEMBERID_NIL, &name, nullptr, nullptr, nullptr));
    return com::unique_bstr(name).get();
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
        const std::wstring class_name = name_of(*entry.Get());
        const ComPtr<ITypeInfo> companion = implemented(*entry.Get());
        EXPECT_EQ(name_of(*companion.Get()), L"I" + class_name);
        EXPECT_EQ(name_of(*implemented(*companion.Get()).Get()),
                  class_name == L"ShellOverlayIcon" ? L"IDispatch" : L"IUnknown");
    }
    EXPECT_EQ(count, 24U);
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
