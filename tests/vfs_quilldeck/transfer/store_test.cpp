#include "store_test.h"

#include "service_url.h"

#include "vfs_quilldeck/session/pc_id.h"
#include "vfs_quilldeck/wire/curl_descriptor_cache.h"
#include "vfs_quilldeck/wire/text_encoding.h"

#include <windows.h>

#include <fstream>
#include <map>
#include <stdexcept>

namespace transfer_test {

namespace {

std::string variable(store_kind kind, const std::string& name) {
    const std::string prefix = kind == store_kind::vsftpd ? "VSFTPD_" : "";
    return support::environment(("QUILLDECK_TEST_" + prefix + name).c_str());
}

/// The text behind a key of the ready file.
std::string text_after(const std::string& ready, const std::string& key) {
    const std::size_t at = ready.find("\"" + key + "\": ");
    if (at == std::string::npos) {
        throw std::runtime_error("the ready file does not tell " + key);
    }
    return ready.substr(at + key.size() + 4);
}

std::shared_ptr<vfs_quilldeck::client> client_of(store_kind kind) {
    support::set_service_url(variable(kind, "HTTPS_URL"));
    static std::map<store_kind, std::shared_ptr<vfs_quilldeck::client>> clients;
    auto& found = clients[kind];
    if (!found) {
        vfs_quilldeck::ensure_pc_id();
        found = std::make_shared<vfs_quilldeck::client>(L"demo", L"demo");
    }
    return found;
}

} // namespace

store_test::store_test(store_kind kind)
    : service_url(variable(kind, "HTTPS_URL")), control(service_url), client(client_of(kind)),
      root_(std::dynamic_pointer_cast<vfs::directory>(client->get_root())) {
    std::getline(std::ifstream("Z:" + variable(kind, "READY")), ready_, '\0');
    const std::string quoted = text_after(ready_, "incoming");
    locations_ = "Z:" + quoted.substr(1, quoted.find('"', 1) - 1);
    control.reset();
    static int number = 0;
    folder = std::dynamic_pointer_cast<vfs::directory>(root_->create_directory(
        L"Transfers " + std::to_wstring(GetCurrentProcessId()) + L" " + std::to_wstring(++number)));
}

store_test::~store_test() {
    if (tidy_) {
        control.reset();
        root_->delete_item(folder, false);
    }
}

void store_test::TearDown() {
    EXPECT_EQ(vfs_quilldeck::transfer_descriptor_cache.get_usage().locked, 0U);
    EXPECT_EQ(vfs_quilldeck::request_descriptor_cache.get_usage().locked, 0U);
}

file_ptr store_test::create(const std::wstring& name, std::size_t announced_size) {
    return std::dynamic_pointer_cast<vfs::file>(folder->create_and_open_file(
        name, vfs::modeWrite | vfs::modeOverwrite, static_cast<std::int64_t>(announced_size)));
}

file_ptr store_test::store(const std::wstring& name, const content& data) {
    const file_ptr file = create(name, data.size());
    EXPECT_TRUE(write_all(*file, data, steps_of({300'001})).complete);
    file->close(1);
    return file;
}

file_ptr store_test::find(const std::wstring& name) {
    return std::dynamic_pointer_cast<vfs::file>(folder->find_item_by_name(name, true));
}

content store_test::fetch(const std::wstring& name) {
    const file_ptr file = find(name);
    content data;
    file->open(vfs::modeRead, 0);
    EXPECT_TRUE(read_all(*file, data, steps_of({300'001})).complete);
    file->close(0);
    return data;
}

std::string store_test::open_upload(const vfs::file& file) {
    const auto reply = client->operations_request({{L"action", L"open_file_upload"},
                                                   {L"file_id", file.get_id()},
                                                   {L"size", L"0"},
                                                   {L"is_pro", L"0"}});
    return vfs_quilldeck::wide_to_utf8(reply.get_child_text(L"TempLocation"));
}

std::filesystem::path store_test::path_of(const std::string& location) const {
    return locations_ / location.substr(1);
}

unsigned long store_test::store_process() const {
    return std::stoul(text_after(ready_, "pid"));
}

std::string name_of_store(const testing::TestParamInfo<store_kind>& info) {
    return info.param == store_kind::vsftpd ? "vsftpd" : "bundled";
}

} // namespace transfer_test
