/// What the shell is told of changes.
#pragma once

#include "shell_items/item_id_list.h"

#include <windows.h>

namespace shell {

/// Sends the event `event`, an SHCNE value, for an absolute list, and waits until it is delivered.
/// Nothing is sent when memory is exhausted.
void notify_change(LONG event, const CItemIDList& list) noexcept;
/// The same for an event of two lists, such as a rename.
void notify_change(LONG event, const CItemIDList& list, const CItemIDList& other) noexcept;

/// Lets views of a folder, whose absolute list it is, read it anew when this goes, however that
/// comes about.
class folder_update {
public:
    /// `folder` must outlive this.
    explicit folder_update(const CItemIDList& folder) noexcept : folder_(folder) {}

    folder_update(const folder_update&) = delete;
    folder_update& operator=(const folder_update&) = delete;
    ~folder_update();

private:
    const CItemIDList& folder_;
};

} // namespace shell
