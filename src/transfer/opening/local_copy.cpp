#include "transfer/opening/local_copy.h"

#include "com/worker.h"
#include "resources/string_ids.h"
#include "shell_items/file_types.h"
#include "shell_items/local_name.h"
#include "syncer/binding.h"
#include "syncer/local_copies.h"
#include "syncer/manager.h"
#include "transfer/opening/download_mutex.h"
#include "transfer/repeat.h"
#include "ui/strings.h"
#include "utils/file_time.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <utility>

namespace transfer {

namespace {

constexpr std::size_t buffer_size = 0x4000;
constexpr std::size_t longest_name = 255;

[[noreturn]] void raise(UINT words) {
    throw com::worker_exception(ui::load_string(words));
}

/// The first name beside `path` that is free: "name (2).ext", "name (3).ext" and so on.
std::filesystem::path free_name_beside(const std::filesystem::path& path) {
    const std::wstring name = path.filename().native();
    const std::wstring extension(shell::extension_of(name));
    const std::wstring base = name.substr(0, name.size() - extension.size());
    for (int number = 2;; ++number) {
        const std::wstring mark = L" (" + std::to_wstring(number) + L")";
        const std::size_t rest = mark.size() + extension.size();
        std::wstring other = base.substr(0, longest_name - std::min(rest, longest_name));
        if (!other.empty() && IS_HIGH_SURROGATE(other.back())) {
            other.pop_back();
        }
        std::filesystem::path beside = path.parent_path() / other.append(mark).append(extension);
        if (GetFileAttributesW(beside.c_str()) == INVALID_FILE_ATTRIBUTES) {
            return beside;
        }
    }
}

} // namespace

std::filesystem::path local_copy_folder(const std::wstring& user_name,
                                        const std::wstring& folder_path) {
    std::filesystem::path folder = syncer::manager::get_files_saved_directory(user_name);
    for (std::size_t from = 0; from < folder_path.size();) {
        const std::size_t to = std::min(folder_path.find(L'/', from), folder_path.size());
        if (to > from) {
            folder /= shell::local_name(folder_path.substr(from, to - from));
        }
        from = to + 1;
    }
    return folder;
}

CLocalCopying::CLocalCopying(std::wstring user_name, std::shared_ptr<vfs::directory> folder,
                             std::wstring folder_path, std::uint64_t total, IProgressSink& progress,
                             ui::prompt& prompt)
    : m_user_name(std::move(user_name)), m_folder(std::move(folder)),
      m_folder_path(std::move(folder_path)), m_total(total), m_progress(progress),
      m_prompt(prompt) {}

template <class Step>
auto CLocalCopying::step(const Step& act) {
    return repeat(act, [this] { return wants_retry(m_prompt); });
}

std::filesystem::path CLocalCopying::copy(const shell::PIDLDATA& record) {
    const std::filesystem::path local = step([&] { return make_place(record.get_name()); });
    const std::uint64_t before = m_done;
    for (bool refresh = false;; refresh = true) {
        const auto file = step([&] { return find(record.get_id(), refresh); });
        if (step([&] { return is_good(*file, local); })) {
            return local;
        }
        m_done = before;
        // An object of our own: others may read or write the same item.
        if (download(*file->duplicate(), local)) {
            m_done = before + static_cast<std::uint64_t>(std::max<std::int64_t>(record.size, 0));
            return local;
        }
    }
}

std::filesystem::path CLocalCopying::make_place(const std::wstring& name) const {
    const std::filesystem::path folder = local_copy_folder(m_user_name, m_folder_path);
    std::error_code failure;
    std::filesystem::create_directories(folder, failure);
    if (!std::filesystem::is_directory(folder, failure)) {
        throw com::worker_exception(L"Error: can not create folder " + folder.native());
    }
    return folder / shell::exact_local_name(name);
}

std::shared_ptr<vfs::file> CLocalCopying::find(const std::wstring& id, bool refresh) {
    auto file = std::dynamic_pointer_cast<vfs::file>(m_folder->find_item_by_id(id, refresh));
    if (!file) {
        raise(IDS_FILE_NOT_FOUND);
    }
    return file;
}

bool CLocalCopying::is_good(const vfs::file& file, const std::filesystem::path& local) {
    const std::optional<std::int64_t> time = read_file_time(local);
    if (!time) {
        return false;
    }
    const auto known = syncer::local_copies(m_user_name).find(local);
    // Of two files of the store, or one that took the name of another, the names may be one here.
    const bool same_file = !known || known->remote_id == file.get_id();
    return (same_file && utils::seconds_of_steps(*time) >= file.get_modification_date()) ||
           !may_replace(local);
}

bool CLocalCopying::may_replace(const std::filesystem::path& local) {
    const std::optional<std::int64_t> time = read_file_time(local);
    if (!time) {
        return true;
    }
    const auto known = syncer::local_copies(m_user_name).find(local);
    if (known && known->date_given == *time) {
        return true;
    }
    switch (m_prompt.ask(IDS_ERROR, IDS_COPY_WAS_EDITED, {local.filename().native()},
                         MB_ICONEXCLAMATION | MB_YESNOCANCEL)) {
    case IDYES:
        return false;
    case IDNO:
        keep_under_another_name(local);
        return true;
    default:
        throw user_cancelled();
    }
}

void CLocalCopying::keep_under_another_name(const std::filesystem::path& local) {
    const std::filesystem::path kept = free_name_beside(local);
    {
        // The store may have, or get, a file of the name under which it is kept: this is no copy
        // of that.
        syncer::local_copies copies(m_user_name);
        copies.put({kept, L"", L"", 0});
        copies.save();
    }
    // Fails for a name that somebody took meanwhile.
    if (!MoveFileW(local.c_str(), kept.c_str())) {
        raise(IDS_COPY_NOT_KEPT);
    }
}

bool CLocalCopying::download(vfs::file& file, const std::filesystem::path& local) {
    check_cancelled();
    step([&] { file.open(vfs::modeRead, 0); });
    std::unique_ptr<part_file> part;
    step([&] {
        part = std::make_unique<part_file>(local);
        if (!*part) {
            raise(IDS_COPY_NOT_CREATED);
        }
    });
    const std::int64_t came = pass_bytes(file, part->get());
    if (const std::int64_t announced = file.get_size(); came != announced) {
        if (m_prompt.ask(IDS_ERROR, IDS_FILE_CHANGED,
                         {std::to_wstring(came), std::to_wstring(announced)},
                         MB_ICONSTOP | MB_RETRYCANCEL) != IDRETRY) {
            throw user_cancelled();
        }
        return false;
    }
    step([&] { file.close(-1); });
    put_in_place(*part, file, local);
    return true;
}

std::int64_t CLocalCopying::pass_bytes(vfs::file& file, HANDLE to) {
    char buffer[buffer_size];
    for (std::int64_t written = 0;;) {
        const auto size = step([&] { return file.read(buffer, buffer_size); });
        if (size == 0) {
            return written;
        }
        step([&] {
            // What a failed attempt wrote is written over.
            DWORD count = 0;
            LARGE_INTEGER position;
            position.QuadPart = written;
            if (!SetFilePointerEx(to, position, nullptr, FILE_BEGIN) ||
                !WriteFile(to, buffer, size, &count, nullptr) || count != size) {
                raise(IDS_COPY_NOT_WRITTEN);
            }
        });
        written += size;
        m_done += size;
        m_progress.set_progress(m_done, m_total);
        check_cancelled();
    }
}

void CLocalCopying::put_in_place(part_file& part, const vfs::file& file,
                                 const std::filesystem::path& local) {
    const std::int64_t date = step([&] { return part.set_time(file.get_modification_date()); });
    const bool wanted = step([&] {
        // The copy that was there may have been changed during the download.
        if (!may_replace(local)) {
            return false;
        }
        if (!part.move_into_place()) {
            raise(IDS_COPY_NOT_CLOSED);
        }
        return true;
    });
    if (!wanted) {
        return;
    }
    step([&] {
        syncer::local_copies copies(m_user_name);
        copies.put({local, syncer::remote_path_of(m_folder_path + L"/" + file.get_name()),
                    file.get_id(), date});
        copies.save();
    });
}

void CLocalCopying::check_cancelled() {
    if (m_progress.has_user_cancelled()) {
        throw user_cancelled();
    }
}

} // namespace transfer
