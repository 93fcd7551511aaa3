/// What the sources of a transfer do not offer. Each operation stands here once, with the text that
/// its failure names it by; a class overrides those that it does offer.
#pragma once

#include "transfer/wrappers/wrapper_exception.h"
#include "vfs/directory.h"
#include "vfs/file.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace transfer {

/// Who does not offer something.
class refusing {
protected:
    refusing() = default;
    refusing(const refusing&) = delete;
    refusing& operator=(const refusing&) = delete;
    ~refusing() = default;

    /// As the texts of failures begin.
    virtual std::wstring class_name() const = 0;

    [[noreturn]] void refuse(const wchar_t* operation) const {
        throw CWrapperException(internal_error,
                                class_name() + L"::" + operation + L" is not implemented");
    }
};

/// The operations of `vfs::item`; `Base` is the contract that a class implements.
template <class Base>
class not_offered_item : public Base, protected refusing {
public:
    std::wstring get_name() const override { refuse(L"get_name()"); }

    std::wstring get_id() const override { refuse(L"get_id()"); }

    std::wstring get_path() override { refuse(L"get_path()"); }

    std::wstring get_description() const override { refuse(L"get_description()"); }

    void set_description(const std::wstring&) override { refuse(L"set_description(description)"); }

    vfs::byte_buffer get_thumbnail() override { refuse(L"get_thumbnail()"); }

    std::int32_t get_access() const override { refuse(L"get_access()"); }

    void set_access(std::int32_t) override { refuse(L"set_access(access)"); }

    std::wstring get_link() const override { refuse(L"get_link()"); }

    vfs::time_seconds get_creation_date() const override { refuse(L"get_creation_date()"); }

    vfs::time_seconds get_delete_date() const override { refuse(L"get_delete_date()"); }

    void restore() override { refuse(L"restore()"); }
};

class not_offered_directory : public not_offered_item<vfs::directory> {
public:
    void rename_item(const std::wstring&, const std::wstring&) override {
        refuse(L"rename_item(name, new_name)");
    }

    void rename_item(const vfs::item_ptr&, const std::wstring&) override {
        refuse(L"rename_item(item, new_name)");
    }

    void delete_item(const std::wstring&, bool) override { refuse(L"delete_item(name)"); }

    void delete_item(const vfs::item_ptr&, bool) override { refuse(L"delete_item(item)"); }

    vfs::item_ptr create_file(const std::wstring&) override { refuse(L"create_file(name)"); }

    vfs::item_ptr create_file_alloc(const std::wstring&, std::int64_t) override {
        refuse(L"create_file_alloc(name, size)");
    }

    vfs::item_ptr create_and_open_file(const std::wstring&, std::int32_t, std::int64_t) override {
        refuse(L"create_and_open_file(name, mode, size)");
    }

    vfs::item_ptr create_directory(const std::wstring&) override {
        refuse(L"create_directory(name)");
    }

    std::int32_t can_share_with(const std::wstring&, bool&) override {
        refuse(L"can_share_with(username, bEmail)");
    }

    void sharing(std::int32_t) override { refuse(L"sharing(sharewithuser_id)"); }

    void set_share_mode(std::int32_t, std::int32_t) override {
        refuse(L"set_share_mode(sharewithuser_id, mode)");
    }

    void delete_sharing_with_user(std::int32_t) override {
        refuse(L"delete_sharing_with_user(sharedfolder_id)");
    }

    std::vector<sharewith_item_ptr> get_sharewith_items() override {
        refuse(L"get_sharewith_items()");
    }

    sharewith_item_ptr find_sharewith_item_by_id(std::int32_t) override {
        refuse(L"find_sharewith_item_by_id(id)");
    }

    sharewith_item_ptr find_sharewith_item_by_userid(std::int32_t) override {
        refuse(L"find_sharewith_item_by_userid(sharewithuser_id)");
    }

    void email_for_sharing(const std::wstring&) override { refuse(L"email_for_sharing(email)"); }
};

class not_offered_file : public not_offered_item<vfs::file> {
public:
    void copy(const vfs::item_ptr&, bool) override { refuse(L"copy( vfs::item_ptr, bool)"); }

    double get_price() const override { refuse(L"get_price()"); }

    void set_price(double) override { refuse(L"set_price(price)"); }

    bool is_bof() override { refuse(L"is_bof()"); }

    bool is_eof() override { refuse(L"is_eof()"); }

    std::int64_t get_pos() const override { refuse(L"get_pos()"); }

    std::uint32_t write(const void*, std::uint32_t) override { refuse(L"write(pdata, len)"); }

    void set_modification_date(vfs::time_seconds) override {
        refuse(L"set_modification_date(time)");
    }

    void set_attributes(std::uint32_t) override { refuse(L"set_attributes(attr)"); }
};

} // namespace transfer
