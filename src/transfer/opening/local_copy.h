#pragma once

#include "shell_items/item_record.h"
#include "transfer/opening/part_file.h"
#include "transfer/progress_sink.h"
#include "ui/prompt.h"
#include "vfs/directory.h"
#include "vfs/file.h"

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>

namespace transfer {

/// The folder in which the local copies of what lies in the store's folder `folder_path` have their
/// place: a tree that mirrors the store, so that files of one name in different folders do not
/// meet. Is not made. Throws the failure of `shell::local_name` for a path that no local folder can
/// have.
std::filesystem::path local_copy_folder(const std::wstring& user_name,
                                        const std::wstring& folder_path);

/// Brings files of one folder of the store to this machine, each beside its place first and into it
/// when it is whole: at any moment the place holds a whole copy, and what the user changed there is
/// never written over. Its user holds the mutex of all downloads. Speaks to the user through a
/// progress sink and a prompt alone. Belongs to one thread.
class CLocalCopying {
public:
    /// `folder_path` is that of `folder`, `total` the bytes of all files that will be asked for.
    CLocalCopying(std::wstring user_name, std::shared_ptr<vfs::directory> folder,
                  std::wstring folder_path, std::uint64_t total, IProgressSink& progress,
                  ui::prompt& prompt);

    /// Sees to it that a current copy of the file is there and answers its path. Throws, after the
    /// user was told and did not want to try again, what made that fail; and `user_cancelled` when
    /// the user gave up this file.
    std::filesystem::path copy(const shell::PIDLDATA& record);

private:
    std::filesystem::path make_place(const std::wstring& name) const;
    std::shared_ptr<vfs::file> find(const std::wstring& id, bool refresh);
    /// Whether the copy in place is to be opened as it is.
    bool is_good(const vfs::file& file, const std::filesystem::path& local);
    /// Whether a fresh copy may come to that place: nothing is there, or what came from the store
    /// and is unchanged. Otherwise the user is asked, and what is there moved away if it is to be
    /// kept; false when that is to be opened.
    bool may_replace(const std::filesystem::path& local);
    void keep_under_another_name(const std::filesystem::path& local);
    /// False when what came is not what the store had announced.
    bool download(vfs::file& file, const std::filesystem::path& local);
    /// Answers how many there were.
    std::int64_t pass_bytes(vfs::file& file, HANDLE to);
    void put_in_place(part_file& part, const vfs::file& file, const std::filesystem::path& local);
    void check_cancelled();
    /// Runs a step, again and again as long as it fails and the user wants that.
    template <class Step>
    auto step(const Step& act);

    const std::wstring m_user_name;
    const std::shared_ptr<vfs::directory> m_folder;
    const std::wstring m_folder_path;
    const std::uint64_t m_total;
    IProgressSink& m_progress;
    ui::prompt& m_prompt;
    std::uint64_t m_done = 0;
};

} // namespace transfer
