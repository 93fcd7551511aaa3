#pragma once

#include "transfer/local_items/hdrop_item.h"
#include "transfer/wrappers/not_offered.h"

#include <windows.h>

#include <cstdio>
#include <memory>
#include <optional>
#include <string>

namespace transfer {

/// A local file. Nothing is asked of the disk before it is used.
class CHDROPFile final : public not_offered_file, public CHDROPItem {
public:
    using CHDROPItem::CHDROPItem;

    std::wstring get_name() const override { return name(); }

    std::int32_t get_type() const override { return vfs::type_file; }

    std::wstring get_link() const override { return {}; }

    std::wstring get_direct_link() const override { return {}; }

    std::uint32_t get_attributes() const override { return 0; }

    vfs::time_seconds get_creation_date() const override;
    vfs::time_seconds get_access_date() const override;
    vfs::time_seconds get_modification_date() const override;

    /// `size` has no effect.
    void open(std::int32_t mode, std::int64_t size) override;
    /// `time` has no effect.
    void close(vfs::time_seconds time) override;
    bool is_bof() override;
    /// True only after a read has met the end.
    bool is_eof() override;

    std::int32_t get_open_mode() const override { return m_mode; }

    std::int64_t get_pos() const override;
    void seek(std::int64_t offset, std::int32_t origin) override;
    /// Fails for good once it notices that the file is no longer what was opened: what arrived then
    /// is neither the old content nor the new one.
    std::uint32_t read(void* buffer, std::uint32_t length) override;
    std::uint32_t write(const void* buffer, std::uint32_t length) override;
    std::int64_t get_size() const override;

    std::shared_ptr<vfs::file> duplicate() const override {
        return std::make_shared<CHDROPFile>(path());
    }

    /// A file that was being written is left as far as it came: its old content went at `open`.
    void abandon() noexcept override;

protected:
    std::wstring class_name() const override { return L"CHDROPFile"; }

private:
    struct stream_closer {
        void operator()(std::FILE* stream) const noexcept { std::fclose(stream); }
    };

    using unique_stream = std::unique_ptr<std::FILE, stream_closer>;

    /// By which one sees that somebody has written to a file.
    struct state {
        std::uint64_t size;
        std::int64_t written; ///< the time of it

        bool operator==(const state&) const = default;
    };

    static std::optional<state> state_of(std::FILE* stream);
    bool has_changed() const;
    /// The open stream; throws a failure of that name for a closed one.
    std::FILE* opened(const wchar_t* name) const;

    std::int32_t m_mode = 0;
    unique_stream m_stream;
    /// When a file was opened for reading; unknown where a file system does not tell.
    std::optional<state> m_opened;
};

} // namespace transfer
