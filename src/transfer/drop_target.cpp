#include "transfer/drop_target.h"

#include "com/clipboard_formats.h"
#include "com/guard.h"
#include "com/memory.h"
#include "shell_items/resolve.h"
#include "shell_items/shell_folder_interface.h"
#include "transfer/data_object_interface.h"
#include "transfer/descriptor_items/drive_source.h"
#include "transfer/format_values.h"
#include "ui/message.h"
#include "utils/module.h"
#include "vfs/exceptions.h"
#include "vfs_quilldeck/session/session.h"

#include <algorithm>
#include <array>
#include <exception>
#include <span>
#include <string>
#include <vector>

namespace transfer {

using com::guard;
using Microsoft::WRL::ComPtr;
using shell::CItemIDList;

namespace {

bool is_acceptable(IDataObject& data) noexcept {
    return std::ranges::any_of(
        std::array{UINT{CF_HDROP}, com::registered_formats.file_group_descriptor},
        [&data](UINT format) {
            FORMATETC request = format_of(format);
            return data.QueryGetData(&request) == S_OK;
        });
}

/// What tells the folder at the end of a way from others; empty for the drive itself.
std::wstring folder_id_of(const std::vector<shell::PIDLDATA>& way) {
    return way.empty() ? std::wstring() : way.back().get_id();
}

POINT as_point(POINTL point) noexcept {
    return {point.x, point.y};
}

} // namespace

HRESULT CDropTargetImpl::Init(IUnknown* folder, const CItemIDList& root, const CItemIDList& path,
                              HWND owner, bool helper_wanted) noexcept {
    return guard([&] {
        if (!folder) {
            return E_FAIL;
        }
        m_folder = folder;
        m_root = root;
        m_path = path;
        m_owner = owner;
        if (helper_wanted) {
            // Without it nothing is drawn.
            ::CoCreateInstance(CLSID_DragDropHelper, nullptr, CLSCTX_INPROC_SERVER,
                               IID_PPV_ARGS(&m_helper));
        }
        return S_OK;
    });
}

HRESULT CDropTargetImpl::DragEnter(IDataObject* data, DWORD keys, POINTL point, DWORD* effect) {
    return guard([&] {
        DWORD& chosen = com::required(effect);
        IDataObject& source = com::required(data);
        if (m_helper) {
            POINT place = as_point(point);
            m_helper->DragEnter(m_owner, data, &place, chosen);
        }
        m_data = data;
        m_acceptable = is_acceptable(source);
        chosen = choose_effect(keys, chosen);
    });
}

HRESULT CDropTargetImpl::DragOver(DWORD keys, POINTL point, DWORD* effect) {
    return guard([&] {
        DWORD& chosen = com::required(effect);
        if (m_helper) {
            POINT place = as_point(point);
            m_helper->DragOver(&place, chosen);
        }
        chosen = choose_effect(keys, chosen);
    });
}

HRESULT CDropTargetImpl::DragLeave() {
    if (m_helper) {
        m_helper->DragLeave();
    }
    m_data.Reset();
    m_acceptable = false;
    return S_OK;
}

HRESULT CDropTargetImpl::Drop(IDataObject* data, DWORD keys, POINTL point, DWORD* effect) {
    return guard([&]() -> HRESULT {
        DWORD& told = com::required(effect);
        IDataObject& source = com::required(data);
        if (m_helper) {
            POINT place = as_point(point);
            m_helper->Drop(data, &place, told);
        }
        m_data.Reset();
        const DWORD chosen = choose_effect(keys, told);
        told = DROPEFFECT_NONE;
        if (chosen == DROPEFFECT_NONE) {
            return S_OK;
        }
        if (is_same_folder(source)) {
            return E_FAIL;
        }
        if (!m_directory) {
            m_directory = find_directory();
        }
        const drop_order order{m_owner, chosen, m_root + m_path, m_directory};
        if (wants_async(source)) {
            return start_drop_thread(source, order);
        }
        const drop_outcome outcome = carry_out_drop(source, order);
        told = outcome.effect;
        show(outcome);
        return S_OK;
    });
}

void CDropTargetImpl::show(const drop_outcome& outcome) const noexcept {
    try {
        if (outcome.failure) {
            std::rethrow_exception(outcome.failure);
        }
    } catch (const vfs::exception&) {
        // A source that could not even be looked at.
        ui::show_current_failure(m_owner);
    } catch (...) {
        // A status of the platform, which had its reasons to show nothing.
        return;
    }
}

DWORD CDropTargetImpl::choose_effect(DWORD keys, DWORD allowed) const noexcept {
    if (!m_acceptable) {
        return DROPEFFECT_NONE;
    }
    const DWORD wish = (keys & MK_SHIFT) != 0 ? DROPEFFECT_MOVE : DROPEFFECT_COPY;
    if ((wish & allowed) != 0) {
        return wish;
    }
    const bool only_move = (allowed & (DROPEFFECT_COPY | DROPEFFECT_MOVE)) == DROPEFFECT_MOVE;
    return only_move ? DROPEFFECT_MOVE : DROPEFFECT_COPY;
}

bool CDropTargetImpl::is_same_folder(IDataObject& data) const {
    ComPtr<IDataObjectImpl> ours;
    if (SUCCEEDED(data.QueryInterface(IID_PPV_ARGS(&ours)))) {
        ITEMIDLIST* root = nullptr;
        ITEMIDLIST* path = nullptr;
        com::check(ours->GetPath(&root, &path));
        const com::unique_id_list owned_root(root);
        const com::unique_id_list owned_path(path);
        return CItemIDList(root, true) + CItemIDList(path, false) == m_root + m_path;
    }
    // Through a proxy it does not show itself, but its mark and its lists do.
    return read_value(data, com::registered_formats.quilldeck_data_object) != 0 &&
           folder_id_of(folder_records_of(data)) == folder_id_of(m_path.records());
}

std::shared_ptr<vfs::directory> CDropTargetImpl::find_directory() const {
    vfs::item_ptr item = shell::get_item(*m_folder.Get(), m_owner);
    if (item->get_type() != vfs::type_directory) {
        const auto& records = m_path.records();
        if (records.empty()) {
            throw com::status_exception(E_FAIL);
        }
        item = shell::resolve(vfs_quilldeck::get_client(utils::own_module())->get_root(),
                              std::span(records).first(records.size() - 1));
    }
    auto directory = std::dynamic_pointer_cast<vfs::directory>(item);
    if (!directory) {
        throw com::status_exception(E_FAIL);
    }
    return directory;
}

HRESULT create_drop_target(IUnknown& folder, const CItemIDList& root, const CItemIDList& path,
                           HWND owner, REFIID iid, void** result) noexcept {
    return guard([&] {
        com::cleared(result);
        const auto target = com::make<CDropTargetImpl>();
        com::check(target->Init(&folder, root, path, owner, true));
        return target->QueryInterface(iid, result);
    });
}

} // namespace transfer
