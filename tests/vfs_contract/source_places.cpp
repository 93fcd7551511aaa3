// The sources of a transfer that are no remote store.
#include "../transfer/virtual_files.h"
#include "contract.h"

#include "transfer/descriptor_items/filedescriptor_wrapper.h"
#include "transfer/local_items/hdrop_directory.h"
#include "transfer/local_items/hdrop_wrapper.h"

#include <filesystem>
#include <fstream>
#include <set>

namespace vfs_contract {

namespace {

namespace fs = std::filesystem;

using Microsoft::WRL::ComPtr;

/// A local folder, by itself or by the paths of what lies in it.
class local_place final : public place {
public:
    explicit local_place(bool dropped) : dropped_(dropped) { fs::create_directories(folder_); }

    ~local_place() override { fs::remove_all(folder_); }

    void put(const std::wstring& path, const std::string& content) override {
        const fs::path target = folder_ / path;
        fs::create_directories(target.parent_path());
        if (target.has_filename()) {
            std::ofstream(target, std::ios::binary) << content;
        }
    }

    directory_ptr reach() override {
        if (!dropped_) {
            return std::make_shared<transfer::CHDROPDirectory>(
                folder_.native(), std::make_shared<transfer::refusals>());
        }
        std::vector<std::wstring> paths;
        for (const auto& entry : fs::directory_iterator(folder_)) {
            paths.push_back(entry.path().native());
        }
        return std::make_shared<transfer::CHDROPWrapper>(transfer_test::dropped_paths(paths).get());
    }

private:
    const bool dropped_;
    const fs::path folder_ = fs::temp_directory_path() / L"contract";
};

/// The virtual files of a data object, all of them or those of one folder.
class virtual_place final : public place {
public:
    explicit virtual_place(std::wstring folder) : folder_(std::move(folder)) {
        if (!folder_.empty()) {
            put(folder_ + L"/", {});
        }
    }

    void put(const std::wstring& path, const std::string& content) override {
        std::wstring whole = made_ && !folder_.empty() ? folder_ + L"/" + path : path;
        made_ = true;
        for (std::size_t at = whole.find(L'/'); at != std::wstring::npos; at = whole.find(L'/')) {
            whole[at] = L'\\';
            if (folders_.insert(whole.substr(0, at)).second) {
                source_->files.push_back(transfer_test::virtual_folder(whole.substr(0, at)));
            }
        }
        if (whole.back() != L'\\') {
            source_->files.push_back({.path = whole, .content = content, .piece = 10'000});
        }
    }

    directory_ptr reach() override {
        const auto whole = std::make_shared<transfer::CFILEDESCRIPTORWrapper>(
            source_.Get(), source_->descriptors().get());
        return folder_.empty() ? whole
                               : std::dynamic_pointer_cast<vfs::directory>(
                                     whole->find_item_by_name(folder_, false));
    }

private:
    const std::wstring folder_;
    bool made_ = false;
    std::set<std::wstring> folders_;
    const ComPtr<transfer_test::virtual_files> source_ = com::make<transfer_test::virtual_files>();
};

} // namespace

std::vector<implementation> source_implementations() {
    const auto local = [](bool dropped) {
        return [dropped] {
            return std::make_unique<local_place>(dropped);
        };
    };
    const auto descriptors = [](const std::wstring& folder) {
        return [folder] {
            return std::make_unique<virtual_place>(folder);
        };
    };
    return {
        {"local_selection", local(true)},
        {"local_directory", local(false)},
        {"virtual_selection", descriptors(L""), false},
        {"virtual_directory", descriptors(L"Folder"), false},
    };
}

} // namespace vfs_contract
