#include "contract.h"

#include "vfs_quilldeck/session/client.h"
#include "vfs_quilldeck/session/pc_id.h"
#include "vfs_quilldeck/wire/curl_descriptor_cache.h"

#include <cstdint>
#include <map>

namespace vfs_contract {

namespace {

using vfs_quilldeck::client;

/// The session of a demo account or access id, whose password is its name.
client& session_of(const std::wstring& user) {
    static std::map<std::wstring, std::unique_ptr<client>> sessions;
    auto& session = sessions[user];
    if (!session) {
        vfs_quilldeck::ensure_pc_id();
        session = std::make_unique<client>(user, user);
    }
    return *session;
}

/// Who has a folder, who works in it, and where each finds it.
struct road {
    std::wstring owner;
    std::wstring own_path;
    std::wstring user;
    std::wstring path;
};

class remote_place : public place {
public:
    explicit remote_place(road way) : way_(std::move(way)) {
        static int number = 0;
        name_ = L"Contract " + std::to_wstring(++number);
        put(L"", {});
    }

    /// Whatever the test did, all that it opened has been closed or let go.
    ~remote_place() override {
        EXPECT_EQ(vfs_quilldeck::transfer_descriptor_cache.get_usage().locked, 0U);
        EXPECT_EQ(vfs_quilldeck::request_descriptor_cache.get_usage().locked, 0U);
        const vfs::item_ptr parent =
            way_.own_path.empty() ? session_of(way_.owner).get_root()
                                  : session_of(way_.owner).get_directory(way_.own_path, false);
        auto& directory = dynamic_cast<vfs::directory&>(*parent);
        directory.delete_item(directory.find_item_by_name(name_, true), false);
    }

    void put(const std::wstring& path, const std::string& content) override {
        const std::size_t slash = path.rfind(L'/') + 1;
        const vfs::item_ptr folder =
            session_of(way_.owner)
                .get_directory(way_.own_path + L"/" + name_ + L"/" + path.substr(0, slash), true);
        if (slash == path.size()) {
            return;
        }
        const vfs::item_ptr made = dynamic_cast<vfs::directory&>(*folder).create_and_open_file(
            path.substr(slash), vfs::modeWrite | vfs::modeOverwrite, std::ssize(content));
        auto& file = dynamic_cast<vfs::file&>(*made);
        file.write(content.data(), static_cast<std::uint32_t>(content.size()));
        file.close(1'000'000'000);
    }

    directory_ptr reach() override {
        return std::dynamic_pointer_cast<vfs::directory>(
            session_of(way_.user).get_directory(way_.path + L"/" + name_, false));
    }

private:
    const road way_;
    std::wstring name_;
};

} // namespace

std::vector<implementation> remote_implementations() {
    const auto by = [](const road& way) {
        return [way] {
            return std::make_unique<remote_place>(way);
        };
    };
    return {
        {"plain", by({L"demo", L"", L"demo", L""})},
        {"share", by({L"anna", L"Work", L"demo", L"Shared Folders/anna/Work"})},
        {"access", by({L"demo", L"Drop box", L"helper", L"Drop box"})},
    };
}

} // namespace vfs_contract
