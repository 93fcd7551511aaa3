#include "vfs_quilldeck/items/file.h"

#include "vfs_quilldeck/items/directory.h"
#include "vfs_quilldeck/wire/exceptions.h"
#include "vfs_quilldeck/wire/reply_fields.h"
#include "vfs_quilldeck/wire/text_encoding.h"

#include <boost/format.hpp>

#include <ctime>
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

/// Takes over what a reply tells of the present content.
void heed_content(file_record& record, const reply_node& reply) {
    const std::wstring location = reply.get_child_text(L"Location");
    if (!location.empty()) {
        record.set_content(location, get_int64(reply, L"Size"), get_time(reply, L"DateModified"));
    }
}

} // namespace

file::file(std::shared_ptr<file_record> record) : record_(std::move(record)) {}

file::file(item_link link, file_fields fields, std::wstring temp_location, std::int32_t open_mode)
    : file(std::make_shared<file_record>(std::move(link), std::move(fields))) {
    if (open_mode == 0) {
        return;
    }
    if (open_mode != (vfs::modeWrite | vfs::modeOverwrite)) {
        throw exception(L"Internal error",
                        L"Wrong file open mode: only modeWrite|modeOverwrite is supported");
    }
    temp_location_ = std::move(temp_location);
    stream().open(wide_to_utf8(temp_location_), transfer_stream::writing);
    open_mode_ = open_mode;
}

transfer_stream& file::stream() {
    if (!stream_) {
        stream_ =
            std::make_unique<transfer_stream>(record_->link.get_client().get_transfer_account());
    }
    return *stream_;
}

std::wstring file::get_path() {
    return record_->link.request(L"get_file_path", id_param()).get_child_text(L"Path");
}

std::wstring file::get_description() const {
    return record_->get_description();
}

void file::set_description(const std::wstring& description) {
    record_->link.request(L"set_file_description",
                          {{L"file_id", record_->id()}, {L"description", description}});
    record_->set_description(description);
}

vfs::byte_buffer file::get_thumbnail() {
    return record_->link.get_client().get_thumbnail(get_thumbnail_user_id(), record_->id());
}

void file::set_access(std::int32_t access) {
    record_->link.request(L"set_file_access",
                          {{L"file_id", record_->id()}, {L"access", std::to_wstring(access)}});
}

void file::restore() {
    record_->link.request(L"restore_file_from_trash", id_param());
}

void file::copy(const vfs::item_ptr& destination, bool move) {
    const auto target = std::dynamic_pointer_cast<directory>(destination);
    if (!target) {
        throw exception(L"Copy file failed", L"Wrong type of destination item");
    }
    request_params source = record_->link.get_route(L"src_");
    append(source,
           {{L"src_file_id", record_->id()}, {L"move", move ? L"1" : L"0"}, {L"is_pro", L"0"}});
    request_params params = target->get_copy_target_params();
    params.emplace_back(L"action", L"copy_file");
    append(params, source);
    record_->link.get_client().operations_request(std::move(params));
}

void file::set_price(double price) {
    record_->link.request(L"set_file_price", {{L"file_id", record_->id()},
                                              {L"price", (boost::wformat(L"%1%") % price).str()}});
    record_->set_price(price);
}

void file::set_modification_date(vfs::time_seconds time) {
    record_->link.request(L"set_file_date",
                          {{L"file_id", record_->id()}, {L"file_datetime", std::to_wstring(time)}});
}

bool file::is_bof() {
    throw exception(L"Internal error", L"file::is_bof(): Operation not implemented");
}

void file::open(std::int32_t mode, std::int64_t size) {
    if (open_mode_ != 0) {
        throw exception(L"Open failed", L"File already opened");
    }
    const int stream_mode = stream_mode_of(mode);
    if (stream_mode == transfer_stream::writing) {
        const reply_node reply = record_->link.request(
            L"open_file_upload",
            {{L"file_id", record_->id()}, {L"size", std::to_wstring(size)}, {L"is_pro", L"0"}});
        temp_location_ = reply.get_child_text(L"TempLocation");
    } else {
        const reply_node reply = record_->link.request(
            L"open_file_download", {{L"file_id", record_->id()}, {L"is_pro", L"0"}});
        heed_content(*record_, reply);
        temp_location_ = record_->get_location();
    }
    stream().open(wide_to_utf8(temp_location_), stream_mode);
    open_mode_ = mode;
    position_ = 0;
}

void file::close(vfs::time_seconds time) {
    if (open_mode_ == 0) {
        throw exception(L"Close failed", L"File is not opened");
    }
    if (stream_mode_of(open_mode_) == transfer_stream::writing) {
        if (!is_stored_already(time)) {
            stream().finish();
            ask_to_store(time);
        }
    } else {
        stream().abandon();
        record_->link.request(L"close_file_download",
                              {{L"file_id", record_->id()}, {L"is_pro", L"0"}});
    }
    abandon();
}

bool file::is_stored_already(vfs::time_seconds time) {
    if (!close_asked_) {
        return false;
    }
    try {
        ask_to_store(time);
        return true;
    } catch (const exception& failure) {
        if (failure.get_description() == connection_failure_text) {
            throw;
        }
        // Bytes are missing, it seems.
        return false;
    }
}

void file::ask_to_store(vfs::time_seconds time) {
    const vfs::time_seconds modified = time > 0 ? time : std::time(nullptr);
    close_asked_ = true;
    const reply_node reply =
        record_->link.request(L"close_file_upload", {{L"file_id", record_->id()},
                                                     {L"temp_location", temp_location_},
                                                     {L"file_time", std::to_wstring(modified)},
                                                     {L"file_size", std::to_wstring(position_)},
                                                     {L"is_pro", L"0"}});
    record_->set_content(record_->get_location(), position_, modified);
    heed_content(*record_, reply);
}

void file::abandon() noexcept {
    stream_.reset();
    open_mode_ = 0;
    position_ = 0;
    close_asked_ = false;
}

void file::seek(std::int64_t offset, std::int32_t origin) {
    if ((origin == vfs::seek_current && offset == 0) ||
        (origin == vfs::seek_beginning && offset == position_)) {
        return;
    }
    if (origin != vfs::seek_beginning || offset != 0) {
        throw exception(L"Internal error", L"file::seek(): Operation not implemented");
    }
    close_asked_ = false;
    try {
        stream().rewind();
    } catch (const vfs::exception& cause) {
        position_ = stream().get_position();
        throw exception(L"Seek error", cause.get_description());
    }
    position_ = 0;
}

std::uint32_t file::read(void* buffer, std::uint32_t length) {
    const std::uint32_t delivered = stream().read(buffer, length);
    position_ += delivered;
    return delivered;
}

std::uint32_t file::write(const void* buffer, std::uint32_t length) {
    close_asked_ = false;
    const std::uint32_t placed = stream().write(buffer, length);
    position_ += placed;
    return placed;
}

} // namespace vfs_quilldeck
