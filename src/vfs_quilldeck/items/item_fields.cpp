#include "vfs_quilldeck/items/directory_fields.h"
#include "vfs_quilldeck/items/file_fields.h"
#include "vfs_quilldeck/wire/reply_fields.h"

namespace vfs_quilldeck {

directory_fields read_directory_fields(const reply_node& node) {
    return {
        .id = node.get_child_text(L"ID"),
        .name = node.get_child_text(L"Name"),
        .description = node.get_child_text(L"Description"),
        .link = node.get_child_text(L"Link"),
        .access = get_int(node, L"Access"),
        .is_gallery = get_bool(node, L"IsGallery"),
        .is_mp3 = get_bool(node, L"IsMP3"),
        .home_folder = get_bool(node, L"IsHomeFolder"),
        .renameable = get_bool(node, L"IsRenameable"),
        .deleteable = get_bool(node, L"IsDeleteable"),
        .subfolders = get_bool(node, L"HasSubfolders"),
        .shared = get_bool(node, L"Shared"),
        .creation_date = get_time(node, L"DateCreated"),
        .delete_date = get_time(node, L"DateDeleted"),
    };
}

file_fields read_file_fields(const reply_node& node) {
    return {
        .id = node.get_child_text(L"ID"),
        .name = node.get_child_text(L"Name"),
        .link = node.get_child_text(L"Link"),
        .direct_link = node.get_child_text(L"DirectLink"),
        .location = node.get_child_text(L"Location"),
        .description = node.get_child_text(L"Description"),
        .access = get_int(node, L"Access"),
        .price = get_double(node, L"Price"),
        .size = get_int64(node, L"Size"),
        .access_date = get_time(node, L"DateAccessed"),
        .modification_date = get_time(node, L"DateModified"),
        .delete_date = get_time(node, L"DateDeleted"),
    };
}

} // namespace vfs_quilldeck
