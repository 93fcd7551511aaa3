#include "remote_controls.h"

#include <array>
#include <cstring>

namespace desktop {

namespace {

constexpr std::size_t text_units = 300;
constexpr std::size_t text_bytes = text_units * sizeof(wchar_t);

std::wstring read_text(const remote_memory& memory, std::size_t offset) {
    std::array<wchar_t, text_units> text{};
    memory.read(text.data(), text_bytes, offset);
    text.back() = L'\0';
    return text.data();
}

/// Sends a message with a structure that the receiver fills, and returns it.
template <class Structure>
Structure ask(HWND window, UINT message, WPARAM parameter, const Structure& question) {
    const remote_memory memory(window, sizeof(Structure));
    memory.write(&question, sizeof(Structure));
    ::SendMessageW(window, message, parameter, reinterpret_cast<LPARAM>(memory.address()));
    Structure answer{};
    memory.read(&answer, sizeof(Structure));
    return answer;
}

/// The same for structures with a text behind them; `put` sets the text's address.
template <class Structure, class Put>
std::wstring ask_text(HWND window, UINT message, WPARAM parameter, Structure question, Put put) {
    const remote_memory memory(window, sizeof(Structure) + text_bytes);
    put(question, reinterpret_cast<wchar_t*>(memory.address() + sizeof(Structure)));
    memory.write(&question, sizeof(Structure));
    ::SendMessageW(window, message, parameter, reinterpret_cast<LPARAM>(memory.address()));
    return read_text(memory, sizeof(Structure));
}

// Near the left end of a label: the rest of it may be covered.
constexpr LONG label_inset = 8;

POINT beside(HWND window, const RECT& label, LONG distance) {
    POINT point{label.left + distance, (label.top + label.bottom) / 2};
    ::ClientToScreen(window, &point);
    return point;
}

} // namespace

remote_memory::remote_memory(HWND window, std::size_t size) {
    DWORD process = 0;
    ::GetWindowThreadProcessId(window, &process);
    process_.reset(
        ::OpenProcess(PROCESS_VM_OPERATION | PROCESS_VM_READ | PROCESS_VM_WRITE, FALSE, process));
    address_ = static_cast<std::byte*>(
        ::VirtualAllocEx(process_.get(), nullptr, size, MEM_COMMIT | MEM_RESERVE, PAGE_READWRITE));
    if (!address_) {
        throw window_gone();
    }
}

remote_memory::~remote_memory() {
    ::VirtualFreeEx(process_.get(), address_, 0, MEM_RELEASE);
}

void remote_memory::write(const void* data, std::size_t size, std::size_t offset) const {
    if (!::WriteProcessMemory(process_.get(), address_ + offset, data, size, nullptr)) {
        throw window_gone();
    }
}

void remote_memory::read(void* data, std::size_t size, std::size_t offset) const {
    if (!::ReadProcessMemory(process_.get(), address_ + offset, data, size, nullptr)) {
        throw window_gone();
    }
}

int list_view::count() const {
    return static_cast<int>(::SendMessageW(window_, LVM_GETITEMCOUNT, 0, 0));
}

std::wstring list_view::cell(int row, int column) const {
    LVITEMW question{};
    question.iSubItem = column;
    question.cchTextMax = static_cast<int>(text_units);
    return ask_text(window_, LVM_GETITEMTEXTW, static_cast<WPARAM>(row), question,
                    [](LVITEMW& item, wchar_t* text) { item.pszText = text; });
}

std::optional<int> list_view::find(const std::wstring& name) const {
    for (int row = 0; row < count(); ++row) {
        if (cell(row, 0) == name) {
            return row;
        }
    }
    return std::nullopt;
}

std::vector<std::wstring> list_view::titles() const {
    const auto header = reinterpret_cast<HWND>(::SendMessageW(window_, LVM_GETHEADER, 0, 0));
    const LRESULT columns = ::SendMessageW(header, HDM_GETITEMCOUNT, 0, 0);
    std::vector<std::wstring> found;
    for (LRESULT column = 0; column < columns; ++column) {
        HDITEMW question{};
        question.mask = HDI_TEXT;
        question.cchTextMax = static_cast<int>(text_units);
        found.push_back(ask_text(header, HDM_GETITEMW, static_cast<WPARAM>(column), question,
                                 [](HDITEMW& item, wchar_t* text) { item.pszText = text; }));
    }
    return found;
}

POINT list_view::place(int row) const {
    ::SendMessageW(window_, LVM_ENSUREVISIBLE, static_cast<WPARAM>(row), FALSE);
    RECT question{};
    question.left = LVIR_LABEL;
    return beside(window_, ask(window_, LVM_GETITEMRECT, static_cast<WPARAM>(row), question),
                  label_inset);
}

int list_view::selected() const {
    const LRESULT row =
        ::SendMessageW(window_, LVM_GETNEXTITEM, static_cast<WPARAM>(-1), LVNI_SELECTED);
    return static_cast<int>(row);
}

HWND list_view::edit() const {
    return reinterpret_cast<HWND>(::SendMessageW(window_, LVM_GETEDITCONTROL, 0, 0));
}

HTREEITEM tree_view::root() const {
    return reinterpret_cast<HTREEITEM>(::SendMessageW(window_, TVM_GETNEXTITEM, TVGN_ROOT, 0));
}

HTREEITEM tree_view::selected() const {
    return reinterpret_cast<HTREEITEM>(::SendMessageW(window_, TVM_GETNEXTITEM, TVGN_CARET, 0));
}

HTREEITEM tree_view::child(HTREEITEM parent, const std::wstring& name) const {
    auto item =
        parent ? reinterpret_cast<HTREEITEM>(::SendMessageW(window_, TVM_GETNEXTITEM, TVGN_CHILD,
                                                            reinterpret_cast<LPARAM>(parent)))
               : root();
    while (item && text(item) != name) {
        item = reinterpret_cast<HTREEITEM>(
            ::SendMessageW(window_, TVM_GETNEXTITEM, TVGN_NEXT, reinterpret_cast<LPARAM>(item)));
    }
    return item;
}

std::wstring tree_view::text(HTREEITEM item) const {
    TVITEMW question{};
    question.mask = TVIF_HANDLE | TVIF_TEXT;
    question.hItem = item;
    question.cchTextMax = static_cast<int>(text_units);
    return ask_text(window_, TVM_GETITEMW, 0, question,
                    [](TVITEMW& asked, wchar_t* text) { asked.pszText = text; });
}

POINT tree_view::place(HTREEITEM item) const {
    return beside(window_, label(item), label_inset);
}

POINT tree_view::button(HTREEITEM item) const {
    // Left of the label stands the icon, and left of that the button, an indentation wide each.
    const auto indentation = static_cast<LONG>(::SendMessageW(window_, TVM_GETINDENT, 0, 0));
    return beside(window_, label(item), -indentation - indentation / 2);
}

RECT tree_view::label(HTREEITEM item) const {
    ::SendMessageW(window_, TVM_ENSUREVISIBLE, 0, reinterpret_cast<LPARAM>(item));
    // The message takes the item where it gives the rectangle.
    RECT question{};
    constexpr std::size_t handle_size = sizeof(HTREEITEM);
    static_assert(sizeof(question) >= handle_size);
    std::memcpy(&question, static_cast<const void*>(&item), handle_size);
    return ask(window_, TVM_GETITEMRECT, TRUE, question);
}

bool tree_view::expanded(HTREEITEM item) const {
    return (::SendMessageW(window_, TVM_GETITEMSTATE, reinterpret_cast<WPARAM>(item),
                           TVIS_EXPANDED) &
            TVIS_EXPANDED) != 0;
}

} // namespace desktop
