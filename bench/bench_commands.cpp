/// bench_commands: what a user waits for at a right click and at each change of the selection: the
/// menu of items, and the states of the toolbar's commands.

#include "measure.h"

#include "com/apartment.h"
#include "com/memory.h"
#include "commands/menus.h"
#include "shell/shell_folder.h"
#include "shell_items/seams.h"
#include "transfer/data_object/data_object.h"
#include "transfer/item_commands.h"
#include "utils/module.h"
#include "vfs_quilldeck/session/pc_id.h"
#include "vfs_quilldeck/session/session.h"

#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

namespace {

using Microsoft::WRL::ComPtr;

constexpr int repeats = 15;
constexpr int many = 10'000;
constexpr double most_menu_ms = 5;
constexpr double most_states_ms = 10;
/// How much dearer an item may be among many: caches hold fewer of them.
constexpr double most_growth = 2;

void join_layers() {
    shell::set_seams({
        .dialogs = {
            .show_properties = [](IDataObject&, HWND, shell::properties_page) { return S_OK; },
            .show_sync_manager =
                [](HWND) {
                    return S_OK;
                }},
        .transfer = {.create_data_object = &transfer::create_data_object,
                     .get_selection = &transfer::read_items},
        .commands = {.create_command_provider = &commands::create_command_provider,
                     .create_item_menu = &commands::create_item_menu},
        .local = {.back_up_profile =
                      [](HWND) {
                          return S_OK;
                      }},
    });
}

/// Makes ".qdbench" a kind of music that this program plays.
void register_kind() {
    const auto set = [](const wchar_t* key, const wchar_t* value, const std::wstring& text) {
        RegSetKeyValueW(HKEY_LOCAL_MACHINE, (std::wstring(L"Software\\Classes\\") + key).c_str(),
                        value, REG_SZ, text.c_str(),
                        static_cast<DWORD>(text.size() * sizeof(wchar_t)));
    };
    set(L".qdbench", nullptr, L"qdbench");
    set(L".qdbench", L"PerceivedType", L"audio");
    set(L"qdbench\\shell\\open\\command", nullptr, L"\"" + utils::own_module_path() + L"\" \"%1\"");
    const std::wstring name = utils::own_module_path();
    set((L"Applications\\" + name.substr(name.rfind(L'\\') + 1) + L"\\shell\\open\\command")
            .c_str(),
        nullptr, L"\"" + name + L"\" \"%1\"");
}

com::unique_id_list drive_list() {
    ITEMIDLIST* list = nullptr;
    com::check(SHParseDisplayName(L"::{20D04FE0-3AEA-1069-A2D8-08002B30309D}", nullptr, &list, 0,
                                  nullptr));
    return com::unique_id_list(list);
}

/// The top of the drive, with the lists of items that it could hold.
class drive {
public:
    drive() {
        vfs_quilldeck::ensure_pc_id();
        vfs_quilldeck::login(utils::own_module(), L"demo", L"demo");
        const auto made = com::make<shell::CShellFolderImpl>();
        com::check(made->Initialize(root_.get()));
        com::check(made.As(&folder_));
        for (int number = 0; number < many; ++number) {
            shell::PIDLDATA record;
            record.type = vfs::type_file;
            record.delete_date = shell::no_date;
            record.set_name(L"Song " + std::to_wstring(number) + L".qdbench");
            lists_.push_back(shell::CItemIDList(record).to_list());
            children_.push_back(lists_.back().get());
        }
    }

    void build_menu(int count) {
        ComPtr<IContextMenu> menu;
        com::check(folder_->GetUIObjectOf(nullptr, static_cast<UINT>(count), children_.data(),
                                          __uuidof(IContextMenu), nullptr,
                                          reinterpret_cast<void**>(menu.GetAddressOf())));
        const std::unique_ptr<std::remove_pointer_t<HMENU>, decltype(&DestroyMenu)> popup(
            CreatePopupMenu(), &DestroyMenu);
        com::check(menu->QueryContextMenu(popup.get(), 0, 1, 0x7FFF, CMF_NORMAL));
        if (GetMenuItemCount(popup.get()) != 8) {
            throw std::runtime_error("a menu lost entries");
        }
    }

    ComPtr<IShellItemArray> select(int count) {
        std::vector<com::unique_id_list> owners;
        std::vector<const ITEMIDLIST*> absolute;
        for (int number = 0; number < count; ++number) {
            owners.emplace_back(
                ILCombine(root_.get(), children_[static_cast<std::size_t>(number)]));
            absolute.push_back(owners.back().get());
        }
        ComPtr<IShellItemArray> items;
        com::check(
            SHCreateShellItemArrayFromIDLists(static_cast<UINT>(count), absolute.data(), &items));
        return items;
    }

    /// The commands of the toolbar, which know no selection yet.
    std::vector<ComPtr<IExplorerCommand>> commands() {
        ComPtr<IExplorerCommandProvider> provider;
        com::check(folder_->CreateViewObject(nullptr, IID_PPV_ARGS(&provider)));
        ComPtr<IEnumExplorerCommand> all;
        com::check(provider->GetCommands(nullptr, IID_PPV_ARGS(&all)));
        return next_of(*all.Get());
    }

    /// What stands below "Open" for one item.
    std::vector<ComPtr<IExplorerCommand>> commands_below() {
        const auto open = commands().front();
        EXPCMDSTATE state = ECS_HIDDEN;
        com::check(open->GetState(select(1).Get(), FALSE, &state));
        ComPtr<IEnumExplorerCommand> below;
        com::check(open->EnumSubCommands(&below));
        return next_of(*below.Get());
    }

private:
    static std::vector<ComPtr<IExplorerCommand>> next_of(IEnumExplorerCommand& all) {
        std::vector<ComPtr<IExplorerCommand>> found;
        ComPtr<IExplorerCommand> each;
        while (all.Next(1, each.ReleaseAndGetAddressOf(), nullptr) == S_OK) {
            found.push_back(each);
        }
        return found;
    }

    const com::unique_id_list root_ = drive_list();
    ComPtr<IShellFolder2> folder_;
    std::vector<com::unique_id_list> lists_;
    std::vector<PCUITEMID_CHILD> children_;
};

std::string text(double seconds) {
    return bench::fixed(seconds * 1e3, 3) + " ms";
}

/// The median of some runs, each of `times` repetitions.
double seconds_of(int times, const std::function<void()>& work) {
    work();
    std::vector<double> taken;
    for (int run = 0; run < repeats; ++run) {
        taken.push_back(bench::seconds_of([&] {
                            for (int i = 0; i < times; ++i) {
                                work();
                            }
                        }) /
                        times);
    }
    return bench::median(taken);
}

bool report(const std::string& what, double seconds, double most_ms) {
    const bool kept = seconds * 1e3 <= most_ms;
    bench::report(what, text(seconds), "none", seconds * 1e3 / most_ms,
                  "at most " + bench::fixed(most_ms, 0) + " ms", kept);
    return kept;
}

bool measure_menu(drive& place) {
    const double one = seconds_of(100, [&] { place.build_menu(1); });
    const double hundred = seconds_of(20, [&] { place.build_menu(100); });
    const double all = seconds_of(1, [&] { place.build_menu(many); });
    bool kept = report("item menu, 1 item", one, most_menu_ms);
    kept = report("item menu, 100 items", hundred, most_menu_ms) && kept;
    const double growth = all / (hundred * many / 100);
    bench::report("item menu, 10000 items, peer 100 times 100", text(all), text(hundred * 100),
                  growth, "at most " + bench::fixed(most_growth, 0), growth <= most_growth);
    return growth <= most_growth && kept;
}

bool measure_states(drive& place) {
    const auto below = place.commands_below();
    const auto items = place.select(1000);
    const double seconds = seconds_of(5, [&] {
        auto all = place.commands();
        all.insert(all.end(), below.begin(), below.end() - 1);
        if (all.size() != 8) {
            throw std::runtime_error("a command is missing");
        }
        for (const auto& command : all) {
            EXPCMDSTATE state = ECS_DISABLED;
            com::check(command->GetState(items.Get(), FALSE, &state));
            if (command.Get() == all.front().Get() && state != ECS_ENABLED) {
                throw std::runtime_error("the items cannot be opened");
            }
        }
    });
    return report("GetState of 8 commands, 1000 items", seconds, most_states_ms);
}

} // namespace

int wmain() {
    bool kept = true;
    const int failed = bench::run([&] {
        try {
            const com::apartment apartment;
            join_layers();
            register_kind();
            drive place;
            kept = measure_menu(place);
            kept = measure_states(place) && kept;
        } catch (const com::status_exception& failure) {
            throw std::runtime_error("status " + std::to_string(failure.status()));
        }
    });
    return failed != 0 || !kept ? 1 : 0;
}
