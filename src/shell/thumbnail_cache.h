/// The thumbnails of remote items on this user's disk: a folder of plain files, each named by an
/// item's id and holding the picture as the store sent it. Any number of processes share it.
///
/// A file is written beside its place and renamed into it, so that a path leads to a whole picture
/// or to none, whenever a writer ends. Nobody ever deletes from the cache.
#pragma once

#include "utils/unique_handle.h"
#include "vfs/records.h"

#include <string>

namespace shell {

/// The path of an item's thumbnail. Makes the folder. Throws the failure's words as a wide string,
/// as all functions here do.
std::wstring get_thumbnail_path(const std::wstring& id);

/// Whether the file is there and was written at or after the second in which the item was modified;
/// a modification date that is not known is before any.
bool is_thumbnail_fresh(const std::wstring& path, vfs::time_seconds modified);

/// A thumbnail on its way to its place. Others find it there after `commit`, or never.
class CThumbnailWriter {
public:
    /// Opens the neighbour of `path`, which has one name for all: what a writer left that was
    /// killed is overwritten by the next one, and a second writer at the same time fails here.
    explicit CThumbnailWriter(const std::wstring& path);
    CThumbnailWriter(const CThumbnailWriter&) = delete;
    CThumbnailWriter& operator=(const CThumbnailWriter&) = delete;
    /// Removes what was not committed.
    ~CThumbnailWriter();

    void write(const vfs::byte_buffer& bytes);
    void commit();

private:
    std::wstring m_path;
    std::wstring m_neighbour;
    utils::unique_file m_file;
    bool m_committed = false;
};

/// Puts the picture in its place, whole or not at all.
void store_thumbnail(const std::wstring& path, const vfs::byte_buffer& bytes);

} // namespace shell
