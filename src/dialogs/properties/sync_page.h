#pragma once

#include "dialogs/properties/page.h"

#include <memory>

namespace dialogs {

/// The page that binds the selected items to local ones. It begins in `mode`, a
/// `shell::sync_page_mode`.
std::unique_ptr<CPropertiesPageDlg> create_sync_page(IPropertiesDialog& owner, int mode);

} // namespace dialogs
