/// This test program once more, as the program that opens files: it notes how it was started.
#pragma once

#include <windows.h>

#include <filesystem>
#include <string>

namespace commands {

/// Kinds of file that the recording player opens, for as long as the object lives: music ".qdmusic"
/// and ".qdother", documents ".qdtext", and the player's entry below "Applications". ".m3u" belongs
/// to it too.
class recording_player {
public:
    recording_player();
    recording_player(const recording_player&) = delete;
    recording_player& operator=(const recording_player&) = delete;
    ~recording_player();

    /// Sets a value below HKEY_LOCAL_MACHINE\Software\Classes, a text unless `type` says otherwise;
    /// the key goes with the object when its first part begins with "qd" or ".qd".
    static void set(const std::wstring& key, const wchar_t* value, const std::wstring& text,
                    DWORD type = REG_SZ);

    /// The arguments of the next start, parted by "|"; waits for it. Throws when none comes.
    std::wstring next_start();

    /// Whether it was started since the last look.
    bool was_started() const { return std::filesystem::exists(record_); }

    const std::wstring& executable() const { return executable_; }

    /// Where a start is noted.
    const std::filesystem::path& record() const { return record_; }

private:
    std::wstring executable_;
    std::filesystem::path record_;
};

/// What `main` calls first: in the player it notes the arguments and does not return.
void record_if_player();

/// Notes `text` as `next_start` reads it, once the note before was read.
void write_record(const std::filesystem::path& record, const std::wstring& text);

} // namespace commands
