#pragma once

#include "com/media.h"
#include "transfer/descriptor_items/descriptor_group.h"
#include "transfer/istream_impl.h"
#include "transfer/wrappers/not_offered.h"

#include <objidl.h>
#include <wrl/client.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace transfer {

/// A virtual file of a data object. Its bytes come from the object at each opening; the size and
/// the times in the table are not read, as many a source sets them wrongly.
class CFILEDESCRIPTORFile final : public not_offered_file {
public:
    /// The record of number `nIndex`. Throws for what is null, and for a number that the table does
    /// not have.
    CFILEDESCRIPTORFile(IDataObject* pDataObj, descriptor_group_ptr pFGD, std::size_t nIndex);

    std::wstring get_name() const override { return m_group->name(m_index); }

    std::int32_t get_type() const override { return vfs::type_file; }

    std::wstring get_link() const override { return {}; }

    std::wstring get_direct_link() const override { return {}; }

    std::uint32_t get_attributes() const override { return 0; }

    /// With a date of 0 a copy gets the present time.
    vfs::time_seconds get_creation_date() const override { return 0; }

    vfs::time_seconds get_delete_date() const override { return 0; }

    vfs::time_seconds get_access_date() const override { return 0; }

    vfs::time_seconds get_modification_date() const override { return 0; }

    /// Copies inside the store a file that is one of this drive.
    void copy(const vfs::item_ptr& destination, bool move) override;
    /// `size` has no effect.
    void open(std::int32_t mode, std::int64_t size) override;
    /// `time` has no effect.
    void close(vfs::time_seconds time) override;

    std::int32_t get_open_mode() const override { return m_open ? m_open->mode : 0; }

    void seek(std::int64_t offset, std::int32_t origin) override;
    /// An end before as many bytes as the source promised is a failure.
    std::uint32_t read(void* buffer, std::uint32_t length) override;
    /// As the source's stream tells it; of a closed file of this drive, as it was listed.
    std::int64_t get_size() const override;

    std::shared_ptr<vfs::file> duplicate() const override {
        return std::make_shared<CFILEDESCRIPTORFile>(m_data.Get(), m_group, m_index);
    }

    void abandon() noexcept override { m_open.reset(); }

protected:
    std::wstring class_name() const override { return L"CFILEDESCRIPTORFile"; }

private:
    /// What "FileContents" gave. The stream goes before its medium.
    struct contents {
        com::medium medium;
        Microsoft::WRL::ComPtr<IStream> stream;
        /// Null for foreign streams.
        Microsoft::WRL::ComPtr<IStreamImpl> own;
        std::int32_t mode = 0;
        std::int64_t position = 0;
        /// Nothing when the stream does not tell.
        std::optional<std::int64_t> size;
    };

    std::wstring path() const { return m_group->path(m_index); }

    /// Null in `stream` for a medium of another kind; null when the source fails.
    std::unique_ptr<contents> request_contents() const;
    static std::optional<std::int64_t> size_of(IStream& stream);
    [[noreturn]] void fail_to_read(std::uint32_t length) const;

    const Microsoft::WRL::ComPtr<IDataObject> m_data;
    const descriptor_group_ptr m_group;
    const std::size_t m_index;
    std::unique_ptr<contents> m_open;
};

} // namespace transfer
