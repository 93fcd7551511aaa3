#pragma once

#include <windows.h>

#include <cstdint>
#include <string>

namespace transfer {

/// What a transfer tells of its progress, and how it learns that its user wants it to end. The
/// operations are those of the platform's progress dialog; nothing comes of failures to show.
class IProgressSink {
public:
    /// Shows itself. What was told before counts as not told.
    virtual void start() = 0;
    virtual void set_title(const std::wstring& text) = 0;
    /// `line` is 1 to 3.
    virtual void set_line(DWORD line, const std::wstring& text) = 0;
    /// Bytes or items.
    virtual void set_progress(std::uint64_t done, std::uint64_t total) = 0;
    /// From now on the time that is left is reckoned anew.
    virtual void reset_timer() = 0;
    virtual bool has_user_cancelled() = 0;
    virtual void stop() noexcept = 0;

protected:
    ~IProgressSink() = default;
};

/// Keeps a sink started.
class started_progress {
public:
    explicit started_progress(IProgressSink& sink) : m_sink(sink) { sink.start(); }

    started_progress(const started_progress&) = delete;
    started_progress& operator=(const started_progress&) = delete;

    ~started_progress() { m_sink.stop(); }

private:
    IProgressSink& m_sink;
};

} // namespace transfer
