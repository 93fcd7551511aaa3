#include "transfer/delete_items.h"

#include "com/worker.h"
#include "resources/string_ids.h"
#include "transfer/repeat.h"
#include "ui/strings.h"
#include "vfs/exceptions.h"

#include <exception>
#include <string>
#include <utility>

namespace transfer {

namespace {

/// Null for what is no directory.
std::shared_ptr<vfs::directory> as_directory(const vfs::item_ptr& item, const wchar_t* where) {
    if (item->get_type() != vfs::type_directory) {
        return nullptr;
    }
    auto directory = std::dynamic_pointer_cast<vfs::directory>(item);
    if (!directory) {
        throw com::worker_exception(std::wstring(L"NULL pointer in CDataObjectImpl::") + where +
                                    L"(...)");
    }
    return directory;
}

} // namespace

CItemsDeletion::CItemsDeletion(std::shared_ptr<vfs::directory> folder, bool permanent,
                               IProgressSink& progress, ui::prompt& prompt)
    : m_folder(std::move(folder)), m_permanent(permanent), m_progress(progress), m_prompt(prompt) {}

void CItemsDeletion::run(const std::vector<shell::PIDLDATA>& records) {
    try {
        for (const shell::PIDLDATA& record : records) {
            m_total += _CountSubitemsAndSelf({*m_folder, nullptr, &record});
        }
        for (const shell::PIDLDATA& record : records) {
            _DeleteRecursively({*m_folder, nullptr, &record});
        }
    } catch (const ended&) {
        return;
    }
}

std::uint64_t CItemsDeletion::_CountSubitemsAndSelf(const subject& counted) {
    return repeat([&] { return count(counted); }, [&] { return is_wanted_again(nullptr); });
}

std::uint64_t CItemsDeletion::count(const subject& counted) {
    const vfs::item_ptr item = find(counted);
    std::uint64_t found = 1;
    if (const auto directory = as_directory(item, L"_CountSubitemsAndSelf")) {
        for (const vfs::item_ptr& child : directory->get_items()) {
            found += _CountSubitemsAndSelf({*directory, child});
        }
    }
    return found;
}

void CItemsDeletion::_DeleteRecursively(const subject& deleted) {
    repeat([&] { delete_once(deleted); }, [&] { return is_wanted_again(&deleted); });
}

void CItemsDeletion::delete_once(const subject& deleted) {
    const vfs::item_ptr item = find(deleted);
    if (const auto directory = m_permanent ? as_directory(item, L"_DeleteRecursively") : nullptr) {
        for (const vfs::item_ptr& child : directory->get_items()) {
            _DeleteRecursively({*directory, child});
        }
    }
    check_cancelled();
    m_progress.set_line(1, ui::load_string(IDS_DELETING_ITEM, {item->get_name()}));
    deleted.directory.delete_item(item, !m_permanent);
    ++m_done;
    m_progress.set_progress(m_done, m_total);
}

bool CItemsDeletion::is_wanted_again(const subject* deleted) {
    bool wanted = false;
    try {
        throw;
    } catch (const vfs::exception& failure) {
        wanted = deleted ? m_prompt.ask(IDS_ERROR, IDS_DELETE_FAILED,
                                        {name_of(*deleted), failure.get_description()},
                                        MB_ICONSTOP | MB_RETRYCANCEL) == IDRETRY
                         : wants_retry(m_prompt);
    } catch (const std::exception&) {
        wanted = wants_retry(m_prompt);
    }
    if (!wanted) {
        throw ended();
    }
    return true;
}

void CItemsDeletion::check_cancelled() {
    if (m_progress.has_user_cancelled()) {
        throw ended();
    }
}

vfs::item_ptr CItemsDeletion::find(const subject& wanted) {
    check_cancelled();
    vfs::item_ptr found = look_up(wanted);
    check_cancelled();
    return found;
}

std::wstring CItemsDeletion::name_of(const subject& named) {
    return named.item ? named.item->get_name() : named.record->get_name();
}

vfs::item_ptr CItemsDeletion::look_up(const subject& wanted) {
    if (wanted.item) {
        return wanted.item;
    }
    vfs::item_ptr found = wanted.directory.find_item_by_name(wanted.record->get_name(), false);
    // Several items of one name may lie in the Trash.
    return found->get_id() == wanted.record->get_id()
               ? found
               : wanted.directory.find_item_by_id(wanted.record->get_id(), false);
}

} // namespace transfer
