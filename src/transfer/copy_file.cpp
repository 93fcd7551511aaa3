#include "transfer/copy_file.h"

#include "resources/string_ids.h"
#include "transfer/copy_failure.h"
#include "transfer/repeat.h"
#include "ui/strings.h"
#include "vfs/exceptions.h"

#include <array>
#include <cstddef>
#include <utility>

namespace transfer {

namespace {

constexpr std::size_t buffer_size = 16'384;
constexpr std::int32_t write_mode = vfs::modeWrite | vfs::modeOverwrite;

} // namespace

CFileCopy::CFileCopy(const std::shared_ptr<vfs::file>& source,
                     std::shared_ptr<vfs::directory> destination, copy_context& context)
    : m_source(source->duplicate()), m_destination(std::move(destination)), m_context(context),
      m_name(source->get_name()) {}

HRESULT CFileCopy::run() {
    try {
        m_context.progress.set_line(
            1, ui::load_string(m_context.move ? IDS_MOVING_ITEM : IDS_COPYING_ITEM, {m_name}));
        check_cancelled();
        m_context.internal ? _DoCopyInside() : _DoCopyBytes();
        return S_OK;
    } catch (const given_up&) {
        give_up();
        return m_cancelled ? E_ABORT : E_FAIL;
    } catch (...) {
        give_up();
        throw;
    }
}

void CFileCopy::_DoCopyInside() {
    vfs::item_ptr found;
    try {
        found = m_destination->find_item_by_name(m_name, false);
    } catch (const vfs::exception&) {
        // Whatever the reason, the store has the last word when it copies.
        found = nullptr;
    }
    if (found) {
        if (!std::dynamic_pointer_cast<vfs::file>(found)) {
            refuse_target();
        }
        ask_replace();
        attempt(IDS_OVERWRITE_FAILED, [&] { m_destination->delete_item(found, true); });
    }
    attempt(IDS_COPY_FAILED, [&] { m_source->copy(m_destination, m_context.move); });
    // From here on there is nothing to be taken back: after a move the source is gone.
    try {
        count(static_cast<std::uint64_t>(m_source->get_size()));
    } catch (const vfs::exception&) {
        // A file that has arrived is not lost for the sake of the bar.
        count(0);
    }
    check_cancelled();
}

void CFileCopy::_DoCopyBytes() {
    open_target();
    attempt(IDS_READ_FAILED, [&] { m_source->open(vfs::modeRead, 0); });
    move_bytes();
    attempt(IDS_CLOSE_FAILED, [&] { m_source->close(vfs::time_unknown); });
    // The file keeps the source's time.
    attempt(IDS_CLOSE_FAILED, [&] { m_target->close(m_source->get_modification_date()); });
}

void CFileCopy::open_target() {
    bool taken = false;
    attempt(IDS_CREATE_FAILED, [&] {
        m_size = m_source->get_size();
        try {
            m_made = m_destination->create_and_open_file(m_name, write_mode, m_size);
        } catch (const vfs::item_already_exists_exception&) {
            taken = true;
        }
    });
    if (taken) {
        open_existing_target();
        return;
    }
    m_target = std::dynamic_pointer_cast<vfs::file>(m_made);
    if (!m_target) {
        refuse_target();
    }
}

void CFileCopy::open_existing_target() {
    ask_replace();
    vfs::item_ptr found;
    // The name is looked up anew: what it meant when the transfer began may by now be elsewhere
    // under another one, and is not what the user has agreed to lose.
    attempt(IDS_FILE_NOT_CREATED, [&] { found = m_destination->find_item_by_name(m_name, true); });
    const auto file = std::dynamic_pointer_cast<vfs::file>(found);
    if (!file) {
        refuse_target();
    }
    m_made = found;
    m_replaced = true;
    m_target = file->duplicate();
    attempt(IDS_WRITE_FAILED, [&] { m_target->open(write_mode, m_size); });
}

void CFileCopy::move_bytes() {
    std::array<std::byte, buffer_size> buffer;
    for (;;) {
        std::uint32_t length = 0;
        attempt(IDS_READ_FAILED, [&] {
            length = m_source->read(buffer.data(), static_cast<std::uint32_t>(buffer.size()));
            if (length == 0) {
                check_whole();
            }
        });
        if (length == 0) {
            return;
        }
        for (std::uint32_t written = 0; written < length;) {
            std::uint32_t taken = 0;
            attempt(IDS_WRITE_FAILED, [&] {
                taken = m_target->write(buffer.data() + written, length - written);
                if (taken == 0) {
                    throw copy_failure(ui::load_string(IDS_NOTHING_WRITTEN));
                }
            });
            written += taken;
            count(taken);
        }
        m_moved += length;
        check_cancelled();
    }
}

void CFileCopy::check_whole() {
    if (m_moved == m_size) {
        return;
    }
    const std::int64_t now = m_source->get_size();
    if (m_size == 0 && now == 0) {
        // Bytes came, and it still says that there are none: it does not tell sizes.
        return;
    }
    const std::int64_t before = std::exchange(m_size, now);
    throw copy_failure(
        ui::load_string(IDS_FILE_CHANGED, {std::to_wstring(m_moved), std::to_wstring(before)}));
}

template <class Step>
void CFileCopy::attempt(UINT text, const Step& step) {
    repeat(step, [&] {
        try {
            throw;
        } catch (const vfs::exception& failure) {
            const int answer =
                m_context.prompt.ask(IDS_TRANSFER_ERROR, text, {m_name, failure.get_description()},
                                     m_context.failure_style());
            if (answer != IDRETRY) {
                m_cancelled = answer == IDABORT;
                throw given_up();
            }
            return true;
        }
    });
}

void CFileCopy::ask_replace() {
    const int answer = m_context.prompt.ask(IDS_CONFIRM_REPLACE, IDS_REPLACE_FILE, {m_name},
                                            m_context.question_style());
    if (answer != IDYES) {
        m_cancelled = answer == IDCANCEL;
        throw given_up();
    }
}

void CFileCopy::refuse_target() {
    m_context.prompt.ask(IDS_CREATING_FILE_FAILED, IDS_FILE_NOT_CREATED, {m_name}, MB_ICONSTOP);
    m_cancelled = true;
    throw given_up();
}

void CFileCopy::check_cancelled() {
    if (m_context.progress.has_user_cancelled()) {
        m_cancelled = true;
        throw given_up();
    }
}

void CFileCopy::count(std::uint64_t bytes) {
    m_context.done += bytes;
    m_context.progress.set_progress(m_context.done, m_context.total);
}

void CFileCopy::give_up() {
    try {
        m_source->close(vfs::time_unknown);
    } catch (const vfs::exception&) {
        m_source->abandon();
    }
    if (m_target) {
        m_target->abandon();
    }
    if (m_made) {
        remove_target();
    }
}

void CFileCopy::remove_target() {
    try {
        m_destination->delete_item(m_made, m_replaced);
    } catch (const vfs::exception&) {
        try {
            m_destination->find_item_by_id(m_made->get_id(), true);
        } catch (const vfs::item_not_found_exception&) {
            // Somebody else has removed it.
            return;
        } catch (const vfs::exception&) {
            // The first failure tells more.
            static_cast<void>(0);
        }
        throw;
    }
}

} // namespace transfer
