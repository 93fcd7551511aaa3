#include "ui/prompt.h"

#include "ui/message.h"

namespace ui {

int message_prompt::ask(UINT caption, UINT text, std::initializer_list<std::wstring> values,
                        UINT style) {
    return show_message(owner_, caption, text, values, style, progress_);
}

int message_prompt::ask(const std::wstring& caption, const std::wstring& text, UINT style) {
    return show_message(window_over(owner_, progress_), caption, text, style);
}

} // namespace ui
