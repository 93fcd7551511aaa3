#include "loaded_module.h"

#include "com/apartment.h"

#include <gtest/gtest.h>

#include <thread>

namespace module {

TEST(class_objects, are_there_for_the_registered_classes_only) {
    const com::apartment apartment;
    const loaded_module extension;
    int mark = 0;
    void* none = &mark;
    EXPECT_EQ(extension.get_class_object(CLSID_ShellDesktop, IID_IClassFactory, &none),
              CLASS_E_CLASSNOTAVAILABLE);
    EXPECT_EQ(none, nullptr);
    // Made by the folder, and by nobody else.
    EXPECT_EQ(extension.get_class_object(com::CLSID_ExtractIconImpl, IID_IClassFactory, &none),
              CLASS_E_CLASSNOTAVAILABLE);
    EXPECT_EQ(extension.get_class_object(com::CLSID_ShellFolderImpl, IID_IStream, &none),
              E_NOINTERFACE);
    EXPECT_EQ(none, nullptr);
    EXPECT_EQ(extension.get_class_object(com::CLSID_ShellFolderImpl, IID_IClassFactory, nullptr),
              E_POINTER);
    EXPECT_EQ(extension.can_unload(), S_OK);

    ComPtr<IClassFactory> factory;
    ASSERT_EQ(extension.get_class_object(com::CLSID_ShellFolderImpl, IID_PPV_ARGS(&factory)), S_OK);
    EXPECT_EQ(extension.can_unload(), S_FALSE);
    ComPtr<IShellFolder> drive;
    none = &mark;
    EXPECT_EQ(factory->CreateInstance(factory.Get(), IID_IUnknown, &none), CLASS_E_NOAGGREGATION);
    EXPECT_EQ(none, nullptr);
    none = &mark;
    EXPECT_EQ(factory->CreateInstance(nullptr, IID_IClassFactory, &none), E_NOINTERFACE);
    EXPECT_EQ(none, nullptr);
    EXPECT_EQ(factory->CreateInstance(nullptr, IID_IUnknown, nullptr), E_POINTER);
    factory->LockServer(TRUE);
    factory.Reset();
    EXPECT_EQ(extension.can_unload(), S_FALSE) << "locked";
    ASSERT_EQ(extension.get_class_object(com::CLSID_ShellFolderImpl, IID_PPV_ARGS(&factory)), S_OK);
    ASSERT_EQ(factory->CreateInstance(nullptr, IID_PPV_ARGS(&drive)), S_OK);
    factory->LockServer(FALSE);
    factory.Reset();
    EXPECT_EQ(extension.can_unload(), S_FALSE);
    drive.Reset();
    // What a data object is brought back by: no registry leads to its class.
    ComPtr<IPersistStream> persisted;
    ASSERT_EQ(extension.get_class_object(com::CLSID_DataObjectImpl, IID_PPV_ARGS(&factory)), S_OK);
    ASSERT_EQ(factory->CreateInstance(nullptr, IID_PPV_ARGS(&persisted)), S_OK);
    factory.Reset();
    persisted.Reset();
    EXPECT_EQ(extension.can_unload(), S_OK);
}

TEST(class_objects, are_found_by_com_in_any_apartment_and_let_the_module_go) {
    const support::registered_extension registration;
    const auto make = [](COINIT kind, const auto& then) {
        // In a thread of its own, as the kind of an apartment is for the thread's life.
        std::thread([&] {
            const com::apartment apartment(kind);
            ComPtr<IUnknown> drive;
            EXPECT_EQ(CoCreateInstance(com::CLSID_ShellFolderImpl, nullptr, CLSCTX_INPROC_SERVER,
                                       IID_PPV_ARGS(&drive)),
                      S_OK);
            CoFreeUnusedLibrariesEx(0, 0);
            EXPECT_TRUE(is_loaded());
            drive.Reset();
            then();
        }).join();
    };
    make(COINIT_APARTMENTTHREADED, [] {
        // Once to ask, once to unload.
        CoFreeUnusedLibrariesEx(0, 0);
        CoFreeUnusedLibrariesEx(0, 0);
        EXPECT_FALSE(is_loaded());
    });
    // Wine 8 keeps a reference on the class object here, and the DLL with it.
    make(COINIT_MULTITHREADED, [] {});
}

} // namespace module
