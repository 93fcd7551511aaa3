/// A user of a transfer who was told beforehand what to answer.
#pragma once

#include "transfer/progress_sink.h"
#include "ui/prompt.h"
#include "ui/strings.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace transfer_test {

/// What a transfer shows goes to `shown`; it presses Cancel at the `patience`-th look.
class scripted_progress final : public transfer::IProgressSink {
public:
    void start() override { ++running; }

    void set_title(const std::wstring& text) override { shown += text + L"|"; }

    void set_line(DWORD line, const std::wstring& text) override {
        shown += std::to_wstring(line) + L" " + text + L"|";
    }

    void set_progress(std::uint64_t now, std::uint64_t all) override {
        done = now;
        total = all;
    }

    void reset_timer() override {}

    bool has_user_cancelled() override { return --patience <= 0; }

    void stop() noexcept override { --running; }

    std::wstring shown;
    std::uint64_t done = 0;
    std::uint64_t total = 0;
    int patience = 1'000'000;
    int running = 0;
};

/// Answers by a letter each: Yes, No, Retry, Cancel, Abort, Ignore, Ok. Whoever asks more often
/// than was foreseen gets Cancel.
class scripted_prompt final : public ui::prompt {
public:
    explicit scripted_prompt(std::string letters = {}) : answers(std::move(letters)) {}

    int ask(UINT caption, UINT text, std::initializer_list<std::wstring> values,
            UINT style) override {
        values_of_last.assign(values.begin(), values.end());
        last_text = ui::load_string(text, values);
        return note(std::to_string(caption) + "/" + std::to_string(text), style);
    }

    int ask(const std::wstring& caption, const std::wstring& text, UINT style) override {
        last_text = caption + L": " + text;
        return note("words", style);
    }

    std::string answers;
    /// What was asked: "caption/text#style", a blank between.
    std::string asked;
    std::wstring last_text;
    std::vector<std::wstring> values_of_last;

private:
    int note(const std::string& what, UINT style) {
        constexpr const char* digits = "0123456789ABCDEF";
        asked +=
            (asked.empty() ? "" : " ") + what + "#" + digits[style >> 4U] + digits[style & 15U];
        const char letter = next < answers.size() ? answers[next] : 'C';
        ++next;
        switch (letter) {
        case 'Y':
            return IDYES;
        case 'N':
            return IDNO;
        case 'R':
            return IDRETRY;
        case 'A':
            return IDABORT;
        case 'I':
            return IDIGNORE;
        case 'O':
            return IDOK;
        default:
            return IDCANCEL;
        }
    }

    std::size_t next = 0;
};

} // namespace transfer_test
