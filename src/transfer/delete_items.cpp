#include "transfer/delete_items.h"

#include "com/worker.h"
#include "resources/string_ids.h"
#include "ui/strings.h"
#include "utils/narrow.h"
#include "vfs/exceptions.h"

#include <exception>
#include <string>
#include <utility>

namespace transfer {

namespace {

constexpr UINT retry_style = MB_ICONSTOP | MB_RETRYCANCEL;

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
    for (const shell::PIDLDATA& record : records) {
        const std::int64_t found = _CountSubitemsAndSelf({*m_folder, nullptr, &record});
        if (found < 0) {
            return;
        }
        m_total += static_cast<std::uint64_t>(found);
    }
    for (const shell::PIDLDATA& record : records) {
        if (FAILED(_DeleteRecursively({*m_folder, nullptr, &record}))) {
            return;
        }
    }
}

std::int64_t CItemsDeletion::_CountSubitemsAndSelf(const subject& counted) {
    for (;;) {
        int answer = IDCANCEL;
        try {
            return count(counted);
        } catch (const vfs::exception& failure) {
            answer = m_prompt.ask(failure.get_name(), failure.get_description(), retry_style);
        } catch (const std::exception& failure) {
            answer = m_prompt.ask(ui::load_string(IDS_DELETE_ERROR),
                                  utils::widen(utils::narrow_message(failure)), retry_style);
        }
        if (answer != IDRETRY) {
            return -1;
        }
    }
}

std::int64_t CItemsDeletion::count(const subject& counted) {
    if (m_progress.has_user_cancelled()) {
        return -1;
    }
    const vfs::item_ptr item = find(counted);
    if (m_progress.has_user_cancelled()) {
        return -1;
    }
    std::int64_t found = 1;
    if (const auto directory = as_directory(item, L"_CountSubitemsAndSelf")) {
        for (const vfs::item_ptr& child : directory->get_items()) {
            const std::int64_t below = _CountSubitemsAndSelf({*directory, child});
            if (below < 0) {
                return below;
            }
            found += below;
        }
    }
    return found;
}

HRESULT CItemsDeletion::_DeleteRecursively(const subject& deleted) {
    for (;;) {
        int answer = IDCANCEL;
        try {
            return delete_once(deleted);
        } catch (const vfs::exception& failure) {
            const std::wstring name =
                deleted.item ? deleted.item->get_name() : deleted.record->get_name();
            answer = m_prompt.ask(IDS_DELETE_ERROR, IDS_DELETE_FAILED,
                                  {name, failure.get_description()}, retry_style);
        } catch (const std::exception& failure) {
            answer = m_prompt.ask(ui::load_string(IDS_DELETE_ERROR),
                                  utils::widen(utils::narrow_message(failure)), retry_style);
        }
        if (answer != IDRETRY) {
            return E_FAIL;
        }
    }
}

HRESULT CItemsDeletion::delete_once(const subject& deleted) {
    if (m_progress.has_user_cancelled()) {
        return E_FAIL;
    }
    const vfs::item_ptr item = find(deleted);
    if (m_progress.has_user_cancelled()) {
        return E_FAIL;
    }
    if (const auto directory = m_permanent ? as_directory(item, L"_DeleteRecursively") : nullptr) {
        for (const vfs::item_ptr& child : directory->get_items()) {
            if (const HRESULT status = _DeleteRecursively({*directory, child}); FAILED(status)) {
                return status;
            }
        }
    }
    if (m_progress.has_user_cancelled()) {
        return E_FAIL;
    }
    m_progress.set_line(1, ui::load_string(IDS_DELETING_ITEM, {item->get_name()}));
    deleted.directory.delete_item(item, !m_permanent);
    ++m_done;
    m_progress.set_progress(m_done, m_total);
    return S_OK;
}

vfs::item_ptr CItemsDeletion::find(const subject& wanted) {
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
