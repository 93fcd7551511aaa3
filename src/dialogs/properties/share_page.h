#pragma once

#include "dialogs/properties/page.h"

#include <memory>

namespace dialogs {

/// The page "Sharing" of a folder of the user's own, the only item that is selected: with whom it
/// is shared and how. Everything happens at once; Apply finds nothing to do.
std::unique_ptr<CPropertiesPageDlg> create_share_page(IPropertiesDialog& owner);

} // namespace dialogs
