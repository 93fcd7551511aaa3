#pragma once

#include "vfs/file.h"
#include "vfs_quilldeck/items/file_fields.h"
#include "vfs_quilldeck/items/file_record.h"
#include "vfs_quilldeck/items/item.h"
#include "vfs_quilldeck/items/item_link.h"
#include "vfs_quilldeck/transfer/transfer_stream.h"

#include <memory>
#include <string>

namespace vfs_quilldeck {

/// A file on the store. Its metadata travel by requests, its bytes through a stream of its own:
/// an upload goes to a temporary location that the service names, and becomes the content when
/// `close` has been accepted.
class file : public vfs::file, public item {
public:
    /// With a non-zero `open_mode`, which must be `modeWrite|modeOverwrite`, the file is built open
    /// for writing to `temp_location`, without a request.
    file(item_link link, file_fields fields, std::wstring temp_location, std::int32_t open_mode);
    /// Another object for the file of `record`, closed.
    explicit file(std::shared_ptr<file_record> record);

    std::wstring get_raw_id() const override { return record_->id(); }

    std::wstring get_name() const override { return record_->name(); }

    std::wstring get_id() const override { return record_->id(); }

    std::wstring get_path() override;
    std::wstring get_description() const override;
    void set_description(const std::wstring& description) override;

    std::int32_t get_type() const override { return vfs::type_file; }

    vfs::byte_buffer get_thumbnail() override;
    void set_access(std::int32_t access) override;

    std::int32_t get_access() const override { return record_->access(); }

    std::wstring get_link() const override { return record_->url(); }

    /// The service tells no such date of files.
    vfs::time_seconds get_creation_date() const override { return vfs::time_unknown; }

    vfs::time_seconds get_delete_date() const override { return record_->delete_date(); }

    void restore() override;

    std::wstring get_direct_link() const override { return record_->direct_link(); }

    void copy(const vfs::item_ptr& destination, bool move) override;

    double get_price() const override { return record_->get_price(); }

    void set_price(double price) override;
    void open(std::int32_t mode, std::int64_t size) override;
    void close(vfs::time_seconds time) override;
    bool is_bof() override;

    bool is_eof() override { return stream_ && stream_->is_eof(); }

    std::int32_t get_open_mode() const override { return open_mode_; }

    std::int64_t get_pos() const override { return position_; }

    /// The stream can be rewound and no more: to where it is, or to the beginning.
    void seek(std::int64_t offset, std::int32_t origin) override;
    std::uint32_t read(void* buffer, std::uint32_t length) override;
    std::uint32_t write(const void* buffer, std::uint32_t length) override;

    std::int64_t get_size() const override { return record_->get_size(); }

    vfs::time_seconds get_access_date() const override { return record_->access_date(); }

    vfs::time_seconds get_modification_date() const override {
        return record_->get_modification_date();
    }

    void set_modification_date(vfs::time_seconds time) override;

    std::uint32_t get_attributes() const override { return 0; }

    void set_attributes(std::uint32_t) override {}

    std::shared_ptr<vfs::file> duplicate() const override {
        return std::make_shared<file>(record_);
    }

    void abandon() noexcept override;

protected:
    /// Whose file the service is told when it is asked for a thumbnail; empty for the user's own.
    virtual std::wstring get_thumbnail_user_id() const { return {}; }

    const item_link& get_item_link() const { return record_->link; }

    const std::shared_ptr<file_record>& get_record() const { return record_; }

private:
    request_params id_param() const { return {{L"file_id", record_->id()}}; }

    transfer_stream& stream();
    /// After a `close` whose request brought no answer the store may have the file all the same.
    bool is_stored_already(vfs::time_seconds time);
    void ask_to_store(vfs::time_seconds time);

    const std::shared_ptr<file_record> record_;
    /// Of this object's own open.
    std::int32_t open_mode_ = 0;
    /// A listing makes many files, of which few are ever opened: null until it is needed.
    std::unique_ptr<transfer_stream> stream_;
    std::wstring temp_location_;
    std::int64_t position_ = 0;
    /// The store has been asked to make this upload the file, and has not said that it did.
    bool close_asked_ = false;
};

} // namespace vfs_quilldeck
