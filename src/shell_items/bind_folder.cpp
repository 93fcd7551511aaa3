#include "shell_items/bind_folder.h"

#include "com/guard.h"
#include "shell_items/seams.h"

namespace shell {

using Microsoft::WRL::ComPtr;

ComPtr<IShellFolder> bind_folder(const CItemIDList& root, const CItemIDList& path) {
    const com::unique_id_list place = root.to_list();
    const com::unique_id_list way = path.to_list();
    if (!place || !way) {
        throw com::status_exception(E_OUTOFMEMORY);
    }
    ComPtr<IPersistFolder> drive;
    com::check(get_seams().folders.create_drive(IID_PPV_ARGS(&drive)));
    com::check(drive->Initialize(place.get()));
    ComPtr<IShellFolder> top;
    com::check(drive.As(&top));
    ComPtr<IShellFolder> folder;
    com::check(top->BindToObject(way.get(), nullptr, IID_PPV_ARGS(&folder)));
    return folder;
}

} // namespace shell
