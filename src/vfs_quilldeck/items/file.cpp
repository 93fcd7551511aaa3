#include "vfs_quilldeck/items/file.h"

#include "vfs_quilldeck/items/directory.h"
#include "vfs_quilldeck/wire/exceptions.h"
#include "vfs_quilldeck/wire/text_encoding.h"

#include <boost/format.hpp>

#include <ctime>
#include <mutex>
#include <utility>

namespace vfs_quilldeck {

namespace {

/// The stream's mode for a mask of `open_mode`; combinations that a remote file does not offer are
/// left to the stream to refuse.
int stream_mode_of(std::int32_t mode) {
    constexpr std::int32_t overwrite = vfs::modeWrite | vfs::modeOverwrite;
    if (mode == vfs::modeRead) {
        return transfer_stream::reading;
    }
    return (mode & overwrite) == overwrite && (mode & vfs::modeRead) == 0 ? transfer_stream::writing
                                                                          : transfer_stream::closed;
}

} // namespace

file::file(item_link link, file_fields fields, std::wstring temp_location, std::int32_t open_mode)
    : open_mode_(open_mode), link_(std::move(link)),
      stream_(link_.get_client().get_transfer_account()), fields_(std::move(fields)),
      temp_location_(std::move(temp_location)), price_(fields_.price), size_(fields_.size),
      modification_date_(fields_.modification_date), description_(fields_.description) {
    if (open_mode == 0) {
        return;
    }
    if (open_mode != (vfs::modeWrite | vfs::modeOverwrite)) {
        throw exception(L"Internal error",
                        L"Wrong file open mode: only modeWrite|modeOverwrite is supported");
    }
    stream_.open(wide_to_utf8(temp_location_), transfer_stream::writing);
}

std::wstring file::get_path() {
    return link_.request(L"get_file_path", id_param()).get_child_text(L"Path");
}

std::wstring file::get_description() const {
    const std::lock_guard guard(field_lock_);
    return description_;
}

void file::set_description(const std::wstring& description) {
    link_.request(L"set_file_description",
                  {{L"file_id", fields_.id}, {L"description", description}});
    const std::lock_guard guard(field_lock_);
    description_ = description;
}

vfs::byte_buffer file::get_thumbnail() {
    return link_.get_client().get_thumbnail(get_thumbnail_user_id(), fields_.id);
}

void file::set_access(std::int32_t access) {
    link_.request(L"set_file_access",
                  {{L"file_id", fields_.id}, {L"access", std::to_wstring(access)}});
}

void file::restore() {
    link_.request(L"restore_file_from_trash", id_param());
}

void file::copy(const vfs::item_ptr& destination, bool move) {
    const auto target = std::dynamic_pointer_cast<directory>(destination);
    if (!target) {
        throw exception(L"Copy file failed", L"Wrong type of destination item");
    }
    request_params source = link_.get_route(L"src_");
    append(source,
           {{L"src_file_id", fields_.id}, {L"move", move ? L"1" : L"0"}, {L"is_pro", L"0"}});
    request_params params = target->get_copy_target_params();
    params.emplace_back(L"action", L"copy_file");
    append(params, source);
    link_.get_client().operations_request(std::move(params));
}

void file::set_price(double price) {
    link_.request(L"set_file_price",
                  {{L"file_id", fields_.id}, {L"price", (boost::wformat(L"%1%") % price).str()}});
    price_ = price;
}

void file::set_modification_date(vfs::time_seconds time) {
    link_.request(L"set_file_date",
                  {{L"file_id", fields_.id}, {L"file_datetime", std::to_wstring(time)}});
}

bool file::is_bof() {
    throw exception(L"Internal error", L"file::is_bof(): Operation not implemented");
}

void file::open(std::int32_t mode, std::int64_t size) {
    const int stream_mode = stream_mode_of(mode);
    if (stream_mode == transfer_stream::writing) {
        const reply_node reply = link_.request(
            L"open_file_upload",
            {{L"file_id", fields_.id}, {L"size", std::to_wstring(size)}, {L"is_pro", L"0"}});
        temp_location_ = reply.get_child_text(L"TempLocation");
    } else {
        link_.request(L"open_file_download", {{L"file_id", fields_.id}, {L"is_pro", L"0"}});
        temp_location_ = fields_.location;
    }
    stream_.open(wide_to_utf8(temp_location_), stream_mode);
    open_mode_ = mode;
    position_ = 0;
}

void file::close(vfs::time_seconds time) {
    if (open_mode_ == 0) {
        throw exception(L"Close failed", L"File is not opened");
    }
    if (stream_.get_mode() != transfer_stream::closed) {
        stream_.close();
    }
    if ((open_mode_ & (vfs::modeWrite | vfs::modeOverwrite)) != 0) {
        modification_date_ = time > 0 ? time : std::time(nullptr);
        size_ = position_;
        link_.request(L"close_file_upload", {{L"file_id", fields_.id},
                                             {L"temp_location", temp_location_},
                                             {L"file_time", std::to_wstring(modification_date_)},
                                             {L"file_size", std::to_wstring(position_)},
                                             {L"is_pro", L"0"}});
    } else {
        link_.request(L"close_file_download", {{L"file_id", fields_.id}, {L"is_pro", L"0"}});
    }
    open_mode_ = 0;
    position_ = 0;
}

void file::seek(std::int64_t offset, std::int32_t origin) {
    if ((origin == vfs::seek_current && offset == 0) ||
        (origin == vfs::seek_beginning && offset == position_)) {
        return;
    }
    if (origin == vfs::seek_beginning && offset == 0) {
        rewind();
        return;
    }
    throw exception(L"Internal error", L"file::seek(): Operation not implemented");
}

void file::rewind() {
    try {
        const int mode = stream_.get_mode();
        if (mode != transfer_stream::closed) {
            stream_.close();
        }
        stream_.open(wide_to_utf8(temp_location_), mode);
    } catch (const vfs::exception& cause) {
        throw exception(L"Seek error", cause.get_description());
    }
}

std::uint32_t file::read(void* buffer, std::uint32_t length) {
    const std::uint32_t delivered = stream_.read(buffer, length);
    position_ += delivered;
    return delivered;
}

std::uint32_t file::write(const void* buffer, std::uint32_t length) {
    const std::uint32_t placed = stream_.write(buffer, length);
    position_ += placed;
    return placed;
}

} // namespace vfs_quilldeck
