#include "outgoing.h"

#include "com/class_factory.h"
#include "shell_items/seams.h"
#include "transfer/data_object/data_object.h"
#include "transfer/stream.h"

namespace transfer {

void join_layers() {
    shell::set_seams({
        .transfer = {.create_stream = &create_stream, .create_data_object = &create_data_object},
        .folders = {.create_drive = &com::create<shell::CShellFolderImpl>},
    });
}

namespace {

std::wstring new_name() {
    static int number = 0;
    return L"Out " + std::to_wstring(::GetCurrentProcessId()) + L" " + std::to_wstring(++number);
}

std::shared_ptr<vfs::directory> as_directory(const vfs::item_ptr& item) {
    return std::dynamic_pointer_cast<vfs::directory>(item);
}

} // namespace

outgoing::outgoing() : name(new_name()) {
    join_layers();
    const auto drive = shell::make_drive();
    folder = as_directory(shell::directory_of(*drive.Get())->create_directory(name));
    const auto tree = as_directory(folder->create_directory(L"tree"));
    store(*tree, L"a", small);
    tree->create_directory(L"empty");
    store(*as_directory(tree->create_directory(L"sub")), L"b", large);
    store(*folder, L"file", large);
    place = shell::open(*drive.Get(), name);
    folder = shell::directory_of(*place.Get());
    // The store tells directories before files.
    all_told = told_of(L"tree") + told_of(L"tree\\empty") + told_of(L"tree\\sub") +
               told_of(L"tree\\sub\\b", large.data(), large.size()) +
               told_of(L"tree\\a", small.data(), small.size()) +
               told_of(L"file", large.data(), large.size());
    control.reset();
}

outgoing::~outgoing() {
    control.reset();
    place.Reset();
    const auto drive = shell::make_drive();
    shell::directory_of(*drive.Get())->delete_item(name, false);
}

void outgoing::store(vfs::directory& where, const std::wstring& file_name, const content& data) {
    const auto file = std::dynamic_pointer_cast<vfs::file>(where.create_and_open_file(
        file_name, vfs::modeWrite | vfs::modeOverwrite, static_cast<std::int64_t>(data.size())));
    transfer_test::write_all(*file, data, transfer_test::steps_of({100'000}));
    file->close(1);
}

ComPtr<IDataObject> outgoing::make(const std::vector<std::wstring>& names, HWND owner) {
    std::vector<com::unique_id_list> lists;
    std::vector<PCUITEMID_CHILD> items;
    for (const std::wstring& each : names) {
        lists.push_back(shell::parse(*place.Get(), each));
        items.push_back(lists.back().get());
    }
    ComPtr<IDataObject> made;
    void* result = nullptr;
    com::check(place->GetUIObjectOf(owner, static_cast<UINT>(items.size()), items.data(),
                                    __uuidof(IDataObject), nullptr, &result));
    *made.GetAddressOf() = static_cast<IDataObject*>(result);
    return made;
}

shell::CItemIDList outgoing::path_of(const std::wstring& child) {
    return {shell::parse(*place.Get(), child).get(), false};
}

std::string outgoing::asked() {
    std::string actions;
    for (const auto& request : control.log()) {
        actions += (actions.empty() ? "" : " ") + request.value_of("action");
    }
    control.reset();
    return actions;
}

HRESULT outgoing::get(IDataObject& source, const FORMATETC& format) {
    com::medium taken;
    FORMATETC request = format;
    return source.GetData(&request, taken.put());
}

com::medium outgoing::get_block(IDataObject& source, UINT format) {
    com::medium taken;
    FORMATETC request = format_of(format);
    com::check(source.GetData(&request, taken.put()));
    return taken;
}

} // namespace transfer
