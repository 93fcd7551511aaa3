#pragma once

#include "transfer/progress_sink.h"
#include "ui/prompt.h"
#include "vfs/directory.h"
#include "vfs/file.h"

#include <windows.h>

#include <cstdint>
#include <memory>
#include <string>

namespace transfer {

/// What all files of one transfer share. A transfer lives on one thread.
struct copy_context {
    IProgressSink& progress;
    ui::prompt& prompt;
    bool move = false;     ///< otherwise copy; only the words differ unless `internal`
    bool internal = false; ///< the source's files are the store's own: the store copies them
    /// The transfer is about one file alone, so that there is nothing else to go on with.
    bool single = true;
    std::uint64_t done = 0; ///< bytes
    std::uint64_t total = 0;

    /// The style of the box of a step that failed.
    UINT failure_style() const noexcept {
        return MB_ICONSTOP | (single ? MB_RETRYCANCEL : MB_ABORTRETRYIGNORE);
    }

    /// The style of a question whether something may be replaced.
    UINT question_style() const noexcept {
        return MB_ICONEXCLAMATION | (single ? MB_YESNO : MB_YESNOCANCEL);
    }
};

/// The copy of one file into a directory of the store: its bytes through this process or, with
/// `copy_context::internal`, by the store itself. Each step that fails asks the user and is made
/// again on demand. A copy that is given up leaves nothing of itself behind: what it created is
/// deleted, and what it had begun to replace goes to the Trash with its old content.
class CFileCopy {
public:
    CFileCopy(const std::shared_ptr<vfs::file>& source, std::shared_ptr<vfs::directory> destination,
              copy_context& context);

    /// S_OK when the file has arrived, E_FAIL when it was given up, E_ABORT when the whole transfer
    /// is to end. Throws the `vfs::exception` of a file that could not be removed, after which the
    /// transfer should end too.
    HRESULT run();

private:
    /// Ends this file; nothing is shown.
    struct given_up {};

    void _DoCopyInside();
    void _DoCopyBytes();
    void open_target();
    void open_existing_target();
    void move_bytes();
    /// Throws when the source has ended elsewhere than where it said that it would.
    void check_whole();

    /// Makes a step until it succeeds. `text` tells of its failure.
    template <class Step>
    void attempt(UINT text, const Step& step);
    void ask_replace();
    [[noreturn]] void refuse_target();
    void check_cancelled();
    void count(std::uint64_t bytes);

    void give_up();
    void remove_target();

    const std::shared_ptr<vfs::file> m_source;
    const std::shared_ptr<vfs::directory> m_destination;
    copy_context& m_context;
    const std::wstring m_name;
    bool m_cancelled = false;
    /// What is deleted when the copy is given up, whatever bears its name then: the file that was
    /// created, or that was told to be replaced.
    vfs::item_ptr m_made;
    bool m_replaced = false;
    std::shared_ptr<vfs::file> m_target;
    std::int64_t m_size = 0;  ///< as the source last told it
    std::int64_t m_moved = 0; ///< bytes
};

} // namespace transfer
