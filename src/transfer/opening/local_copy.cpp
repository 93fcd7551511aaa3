#include "transfer/opening/local_copy.h"

#include "com/worker.h"
#include "resources/string_ids.h"
#include "shell_items/file_types.h"
#include "shell_items/local_name.h"
#include "syncer/local_copies.h"
#include "syncer/manager.h"
#include "transfer/opening/part_file.h"
#include "ui/strings.h"
#include "utils/narrow.h"
#include "vfs/exceptions.h"

#include <exception>
#include <utility>

namespace transfer {

namespace {

constexpr UINT retry_style = MB_ICONSTOP | MB_RETRYCANCEL;
constexpr std::size_t buffer_size = 0x4000;

[[noreturn]] void raise(std::wstring words) {
    throw com::worker_exception(std::move(words));
}

/// The first name beside `path` that is free: "name (2).ext", "name (3).ext" and so on.
std::filesystem::path free_name_beside(const std::filesystem::path& path) {
    const std::wstring name = path.filename().native();
    const std::wstring extension(shell::extension_of(name));
    const std::wstring base = name.substr(0, name.size() - extension.size());
    for (int number = 2;; ++number) {
        std::wstring other = base;
        other.append(L" (").append(std::to_wstring(number)).append(L")").append(extension);
        std::filesystem::path beside = path.parent_path() / other;
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
        const std::size_t to =
            std::min(folder_path.find_first_of(L"/\\", from), folder_path.size());
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
void CLocalCopying::step(const Step& act) {
    for (;;) {
        std::wstring caption;
        std::wstring text;
        try {
            act();
            return;
        } catch (const vfs::exception& failure) {
            caption = failure.get_name();
            text = failure.get_description();
            if (m_prompt.ask(caption, text, retry_style) != IDRETRY) {
                throw;
            }
        } catch (const com::worker_exception& failure) {
            if (failure.words() == user_cancel ||
                m_prompt.ask(ui::load_string(IDS_DELETE_ERROR), failure.words(), retry_style) !=
                    IDRETRY) {
                throw;
            }
        } catch (const std::exception& failure) {
            if (m_prompt.ask(ui::load_string(IDS_DELETE_ERROR),
                             utils::widen(utils::narrow_message(failure)),
                             retry_style) != IDRETRY) {
                throw;
            }
        }
    }
}

std::filesystem::path CLocalCopying::copy(const shell::PIDLDATA& record) {
    const std::filesystem::path folder = local_copy_folder(m_user_name, m_folder_path);
    std::error_code failure;
    std::filesystem::create_directories(folder, failure);
    if (!std::filesystem::is_directory(folder, failure)) {
        raise(L"Error: can not create folder " + folder.native());
    }
    const std::filesystem::path local = folder / shell::local_name(record.get_name());
    std::shared_ptr<vfs::file> file;
    step([&] {
        file =
            std::dynamic_pointer_cast<vfs::file>(m_folder->find_item_by_id(record.get_id(), false));
        if (!file) {
            raise(ui::load_string(IDS_FILE_NOT_FOUND));
        }
    });
    bool good = false;
    step([&] { good = is_good(*file, local); });
    if (!good) {
        const std::uint64_t before = m_done;
        // An object of our own: others may read or write the same item.
        const std::shared_ptr<vfs::file> opened = file->duplicate();
        download(*opened, local);
        m_done = before + static_cast<std::uint64_t>(record.size);
        note(*opened, local);
    }
    return local;
}

bool CLocalCopying::is_good(const vfs::file& file, const std::filesystem::path& local) {
    const std::optional<std::int64_t> time = read_file_time(local);
    if (!time) {
        return false;
    }
    std::optional<syncer::local_copy> known;
    {
        const syncer::local_copies copies(m_user_name);
        if (const syncer::local_copy* found = copies.find(local)) {
            known = *found;
        }
    }
    const bool same_file = !known || known->remote_id == file.get_id();
    if (same_file && seconds_of_file_time(*time) >= file.get_modification_date()) {
        return true;
    }
    if (known && known->date_given == *time) {
        return false;
    }
    // Both have changed, or the local one is nothing that was brought here.
    const int answer =
        m_prompt.ask(IDS_DELETE_ERROR, IDS_COPY_WAS_EDITED, {local.filename().native()},
                     MB_ICONEXCLAMATION | MB_YESNOCANCEL);
    if (answer == IDNO) {
        keep_under_another_name(local);
    } else if (answer != IDYES) {
        raise(user_cancel);
    }
    return answer == IDYES;
}

void CLocalCopying::keep_under_another_name(const std::filesystem::path& local) {
    const std::filesystem::path kept = free_name_beside(local);
    // Fails for a name that somebody took meanwhile.
    if (!MoveFileW(local.c_str(), kept.c_str())) {
        raise(ui::load_string(IDS_COPY_NOT_KEPT));
    }
}

void CLocalCopying::download(vfs::file& file, const std::filesystem::path& local) {
    step([&] { file.open(vfs::modeRead, 0); });
    std::unique_ptr<part_file> part;
    step([&] {
        part = std::make_unique<part_file>(local);
        if (!*part) {
            raise(ui::load_string(IDS_COPY_NOT_CREATED));
        }
    });
    pass_bytes(file, part->get());
    step([&] { file.close(-1); });
    step([&] {
        if (file.get_modification_date() != vfs::time_unknown &&
            !part->set_time(file.get_modification_date())) {
            raise(L"file::set_modification_date(): Can't get file time");
        }
    });
    step([&] {
        if (!part->move_into_place()) {
            raise(ui::load_string(IDS_COPY_NOT_CLOSED));
        }
    });
}

void CLocalCopying::pass_bytes(vfs::file& file, HANDLE to) {
    char buffer[buffer_size];
    std::int64_t written = 0;
    for (;;) {
        std::uint32_t size = 0;
        step([&] { size = file.read(buffer, buffer_size); });
        if (size == 0) {
            return;
        }
        step([&] {
            // What a failed attempt wrote is written over.
            DWORD count = 0;
            LARGE_INTEGER position;
            position.QuadPart = written;
            if (!SetFilePointerEx(to, position, nullptr, FILE_BEGIN) ||
                !WriteFile(to, buffer, size, &count, nullptr) || count != size) {
                raise(ui::load_string(IDS_COPY_NOT_WRITTEN));
            }
        });
        written += size;
        m_done += size;
        m_progress.set_progress(m_done, m_total);
        if (m_progress.has_user_cancelled()) {
            raise(user_cancel);
        }
    }
}

void CLocalCopying::note(const vfs::file& file, const std::filesystem::path& local) {
    const std::optional<std::int64_t> time = read_file_time(local);
    if (!time) {
        return;
    }
    syncer::local_copies copies(m_user_name);
    copies.put({local, m_folder_path + L"/" + file.get_name(), file.get_id(), *time});
    copies.save();
}

} // namespace transfer
