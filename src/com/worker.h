/// Threads for work that outlives the call which asked for it.
#pragma once

#include <windows.h>

#include <functional>
#include <string>
#include <utility>

namespace com {

/// A failure that a worker tells in its own words.
class worker_exception {
public:
    explicit worker_exception(std::wstring words) : words_(std::move(words)) {}

    const std::wstring& words() const noexcept { return words_; }

private:
    std::wstring words_;
};

/// Runs `body` once on a thread of its own, in a single-threaded apartment. The shell starts the
/// thread (SHCreateThread with CTF_PROCESS_REF), so that the process lives for as long as it runs;
/// this module stays loaded until the thread is gone.
///
/// `failed` is called within the handler of whatever `body` threw, outside of the apartment, and
/// may throw that again to see what it is; what leaves `failed` is dropped. A thread that gets no
/// apartment ends with a `worker_exception` "Com initialize failed". Both functions are copied to
/// the thread and gone when it ends; `body` is destroyed within the apartment, so that it may own
/// COM pointers of it.
///
/// Answers S_OK, or E_FAIL or E_OUTOFMEMORY when no thread was started: then nothing was called.
HRESULT start_worker(std::function<void()> body, std::function<void()> failed) noexcept;

} // namespace com
