/// Files and folders to copy from, that fail on demand.
#pragma once

#include "content.h"
#include "transfer/wrappers/not_offered.h"
#include "transfer/wrappers/source_directory.h"

#include <algorithm>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace transfer_test {

/// Called with each operation on a source ("read a.txt"); what it throws is the operation's
/// failure.
using source_hook = std::function<void(const std::string& operation)>;

class source_file final : public transfer::not_offered_file {
public:
    source_file(std::wstring name, std::shared_ptr<content> data, source_hook& hook,
                std::shared_ptr<vfs::file> stored = nullptr)
        : m_name(std::move(name)), m_data(std::move(data)), m_hook(hook),
          m_stored(std::move(stored)) {}

    std::wstring get_name() const override { return m_name; }

    std::int32_t get_type() const override { return vfs::type_file; }

    std::wstring get_direct_link() const override { return {}; }

    std::uint32_t get_attributes() const override { return 0; }

    vfs::time_seconds get_access_date() const override { return -1; }

    vfs::time_seconds get_modification_date() const override {
        tell("date");
        return date;
    }

    std::int64_t get_size() const override {
        tell("size");
        return *m_told < 0 ? static_cast<std::int64_t>(m_data->size()) : *m_told;
    }

    std::int32_t get_open_mode() const override { return m_mode; }

    void open(std::int32_t mode, std::int64_t) override {
        tell("open");
        m_mode = mode;
    }

    void close(vfs::time_seconds) override {
        if (m_mode == 0) {
            refuse(L"close of a closed file");
        }
        tell("close");
        m_mode = 0;
    }

    void seek(std::int64_t, std::int32_t) override { refuse(L"seek"); }

    std::uint32_t read(void* buffer, std::uint32_t length) override {
        tell("read");
        const auto count = std::min<std::size_t>(length, m_data->size() - m_at);
        std::copy_n(m_data->data() + m_at, count, static_cast<unsigned char*>(buffer));
        m_at += count;
        return static_cast<std::uint32_t>(count);
    }

    void copy(const vfs::item_ptr& destination, bool move) override {
        m_stored->copy(destination, move);
    }

    std::shared_ptr<vfs::file> duplicate() const override {
        auto other = std::make_shared<source_file>(m_name, m_data, m_hook, m_stored);
        other->m_told = m_told;
        return other;
    }

    void abandon() noexcept override { m_mode = 0; }

    /// Says so whatever it holds.
    void tell_size(std::int64_t size) { *m_told = size; }

    static constexpr vfs::time_seconds date = 1'234'567'890;

protected:
    std::wstring class_name() const override { return L"source_file"; }

private:
    void tell(const std::string& operation) const {
        if (m_hook) {
            m_hook(operation);
        }
    }

    const std::wstring m_name;
    const std::shared_ptr<content> m_data;
    source_hook& m_hook;
    const std::shared_ptr<vfs::file> m_stored;
    /// Common to all duplicates; below 0 the real one.
    std::shared_ptr<std::int64_t> m_told = std::make_shared<std::int64_t>(-1);
    std::int32_t m_mode = 0;
    std::size_t m_at = 0;
};

class source_folder final : public transfer::CSourceDirectory {
public:
    source_folder(std::wstring name, std::vector<vfs::item_ptr> children, source_hook& hook)
        : m_name(std::move(name)), m_children(std::move(children)), m_hook(hook) {}

    std::wstring get_name() const override { return m_name; }

protected:
    std::wstring class_name() const override { return L"source_folder"; }

    std::vector<vfs::item_ptr> list() const override {
        if (m_hook) {
            m_hook("list");
        }
        return m_children;
    }

    std::wstring place() const override { return {}; }

private:
    const std::wstring m_name;
    const std::vector<vfs::item_ptr> m_children;
    source_hook& m_hook;
};

} // namespace transfer_test
