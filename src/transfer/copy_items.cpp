#include "transfer/copy_items.h"

#include "resources/string_ids.h"
#include "ui/strings.h"
#include "vfs/exceptions.h"

#include <utility>

namespace transfer {

namespace {

/// The item of that name; null when there is none, or when that cannot be told: the store has the
/// last word when it creates.
vfs::item_ptr find(vfs::directory& directory, const std::wstring& name) {
    try {
        return directory.find_item_by_name(name, false);
    } catch (const vfs::exception&) {
        return nullptr;
    }
}

} // namespace

CItemsCopy::CItemsCopy(copy_order order, IProgressSink& progress, ui::prompt& prompt)
    : m_order(std::move(order)), m_context{.progress = progress,
                                           .prompt = prompt,
                                           .move = m_order.move,
                                           .internal = m_order.internal} {}

HRESULT CItemsCopy::run() {
    IProgressSink& progress = m_context.progress;
    const started_progress shown(progress);
    progress.set_progress(0, 0);
    progress.reset_timer();
    progress.set_title(ui::load_string(m_order.move ? IDS_MOVING : IDS_COPYING));
    progress.set_line(2, ui::load_string(IDS_COPY_TO, {m_order.destination_path}));
    if (const HRESULT status = _DoMeasure(); status != S_OK) {
        return status;
    }
    progress.set_progress(0, m_context.total);
    progress.reset_timer();
    if (!refresh_destination()) {
        return E_FAIL;
    }
    bool refused = show_refusals();
    const HRESULT result = _DoCopyChildren(*m_order.source, m_order.destination);
    if (result == S_OK) {
        // Local folders are listed anew for the copy: they may hold by now what cannot be taken.
        refused = show_refusals() || refused;
        // The view shows what is new. All has arrived already, whatever comes of this.
        refresh_destination();
        return refused ? E_FAIL : S_OK;
    }
    try {
        m_order.destination->get_items();
    } catch (const vfs::exception&) {
        // The user has been told enough.
        return result;
    }
    return result;
}

HRESULT CItemsCopy::_DoMeasure() {
    for (;;) {
        std::wstring description;
        try {
            m_context.single = true;
            m_context.total = 0;
            m_files = 0;
            return measure(*m_order.source);
        } catch (const vfs::exception& failure) {
            description = failure.get_description();
        }
        if (m_context.prompt.ask(IDS_TRANSFER_ERROR, IDS_MEASURE_FAILED, {L"", description},
                                 MB_ICONSTOP | MB_RETRYCANCEL) != IDRETRY) {
            return E_FAIL;
        }
    }
}

HRESULT CItemsCopy::measure(vfs::directory& directory) {
    for (const vfs::item_ptr& child : directory.get_items()) {
        if (m_context.progress.has_user_cancelled()) {
            return E_ABORT;
        }
        if (const auto below = std::dynamic_pointer_cast<vfs::directory>(child)) {
            m_context.single = false;
            if (const HRESULT status = measure(*below); status != S_OK) {
                return status;
            }
        } else if (const auto file = std::dynamic_pointer_cast<vfs::file>(child)) {
            m_context.single = m_context.single && ++m_files == 1;
            m_context.total += static_cast<std::uint64_t>(file->get_size());
        } else {
            return E_FAIL;
        }
    }
    return S_OK;
}

bool CItemsCopy::refresh_destination() {
    for (;;) {
        std::wstring description;
        try {
            m_order.destination->get_items();
            return true;
        } catch (const vfs::exception& failure) {
            description = failure.get_description();
        }
        if (m_context.prompt.ask(IDS_TRANSFER_ERROR, IDS_REFRESH_FAILED,
                                 {m_order.destination->get_name(), description},
                                 MB_ICONSTOP | MB_RETRYCANCEL) != IDRETRY) {
            return false;
        }
    }
}

bool CItemsCopy::show_refusals() {
    const std::wstring refusals = m_order.take_refusals();
    if (refusals.empty()) {
        return false;
    }
    m_context.prompt.ask(ui::load_string(IDS_TRANSFER_ERROR), refusals, MB_ICONSTOP);
    return true;
}

HRESULT CItemsCopy::_DoCopyChildren(vfs::directory& source,
                                    const std::shared_ptr<vfs::directory>& destination) {
    try {
        HRESULT result = S_OK;
        for (const vfs::item_ptr& child : source.get_items()) {
            const HRESULT status = copy_child(child, destination);
            if (status == E_ABORT) {
                return E_ABORT;
            }
            if (status != S_OK) {
                result = E_FAIL;
            }
        }
        return result;
    } catch (const vfs::exception& failure) {
        m_context.prompt.ask(failure.get_name(), failure.get_description(), MB_OK);
        return E_ABORT;
    }
}

HRESULT CItemsCopy::copy_child(const vfs::item_ptr& child,
                               const std::shared_ptr<vfs::directory>& destination) {
    if (const auto file = std::dynamic_pointer_cast<vfs::file>(child)) {
        return CFileCopy(file, destination, m_context).run();
    }
    const auto directory = std::dynamic_pointer_cast<vfs::directory>(child);
    if (!directory || m_context.progress.has_user_cancelled()) {
        return E_ABORT;
    }
    std::shared_ptr<vfs::directory> opened;
    const HRESULT status = open_directory(directory->get_name(), *destination, opened);
    return status == S_OK ? _DoCopyChildren(*directory, opened) : status;
}

HRESULT CItemsCopy::open_directory(const std::wstring& name, vfs::directory& parent,
                                   std::shared_ptr<vfs::directory>& opened) {
    for (;;) {
        // Also before each further try: the name may be taken by now, by somebody else, or by the
        // creation itself when only its answer was lost.
        if (const vfs::item_ptr found = find(parent, name)) {
            return merge_with(name, found, opened);
        }
        try {
            opened = std::dynamic_pointer_cast<vfs::directory>(parent.create_directory(name));
            return opened ? S_OK : E_ABORT;
        } catch (const vfs::exception&) {
            // The text has no room for the reason.
            opened = nullptr;
        }
        switch (m_context.prompt.ask(IDS_CREATING_FOLDER_FAILED, IDS_FOLDER_NOT_CREATED, {name},
                                     m_context.failure_style())) {
        case IDRETRY:
            break;
        case IDABORT:
            return E_ABORT;
        default:
            return E_FAIL;
        }
    }
}

HRESULT CItemsCopy::merge_with(const std::wstring& name, const vfs::item_ptr& found,
                               std::shared_ptr<vfs::directory>& opened) {
    opened = std::dynamic_pointer_cast<vfs::directory>(found);
    if (!opened) {
        m_context.prompt.ask(IDS_CREATING_FOLDER_FAILED, IDS_FOLDER_NOT_CREATED, {name},
                             MB_ICONSTOP);
        return E_ABORT;
    }
    switch (m_context.prompt.ask(IDS_CONFIRM_MERGE, IDS_MERGE_FOLDER, {name},
                                 m_context.question_style())) {
    case IDYES:
        return S_OK;
    case IDCANCEL:
        return E_ABORT;
    default:
        return E_FAIL;
    }
}

} // namespace transfer
