#include "module/registration.h"

#include "com/guard.h"
#include "module/object_map.h"
#include "module/quilldeck_module.h"
#include "resources/resource_ids.h"
#include "utils/module.h"

#include <oleauto.h>

#include <string>

namespace module {

namespace {

/// Gives the thread another locale for its life, by which resources are chosen.
class thread_locale {
public:
    explicit thread_locale(LCID locale) noexcept : before_(::GetThreadLocale()) {
        ::SetThreadLocale(locale);
    }

    thread_locale(const thread_locale&) = delete;
    thread_locale& operator=(const thread_locale&) = delete;

    ~thread_locale() { ::SetThreadLocale(before_); }

private:
    LCID before_;
};

/// Each script has an interpreter of its own, so that none sees the values of another.
template <class Update>
void run_scripts(Update&& update) {
    com::registrar scripts;
    the_module.AddCommonRGSReplacements(scripts);
    update(scripts);
}

/// The attributes of a type library for as long as they are needed.
class library_attributes {
public:
    explicit library_attributes(ITypeLib& library) : library_(library) {
        com::check(library_.GetLibAttr(&attributes_));
    }

    library_attributes(const library_attributes&) = delete;
    library_attributes& operator=(const library_attributes&) = delete;

    ~library_attributes() { library_.ReleaseTLibAttr(attributes_); }

    const TLIBATTR* operator->() const noexcept { return attributes_; }

private:
    ITypeLib& library_;
    TLIBATTR* attributes_ = nullptr;
};

void update_type_library(com::registration direction) {
    std::wstring path = utils::own_module_path();
    Microsoft::WRL::ComPtr<ITypeLib> library;
    com::check(::LoadTypeLibEx(path.c_str(), REGKIND_NONE, &library));
    if (direction == com::registration::add) {
        std::wstring folder = path.substr(0, path.find_last_of(L'\\'));
        com::check(::RegisterTypeLib(library.Get(), path.data(), folder.data()));
        return;
    }
    const library_attributes attributes(*library.Get());
    com::check(::UnRegisterTypeLib(attributes->guid, attributes->wMajorVerNum,
                                   attributes->wMinorVerNum, attributes->lcid,
                                   attributes->syskind));
}

} // namespace

HRESULT update_registry(com::registration direction) noexcept {
    return com::guard([&] {
        const thread_locale neutral(LOCALE_SYSTEM_DEFAULT);
        run_scripts([&](com::registrar& scripts) { scripts.run(IDR_APPLICATION, direction); });
        for (const object_map_entry& entry : object_map()) {
            if (entry.update) {
                run_scripts([&](com::registrar& scripts) { entry.update(scripts, direction); });
            }
        }
        update_type_library(direction);
    });
}

} // namespace module
