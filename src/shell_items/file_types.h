/// What the platform knows of a kind of file by the extension of its name.
#pragma once

#include <functional>
#include <map>
#include <string>
#include <string_view>

namespace shell {

/// From the last "." of `name` to its end, with the dot; empty without one.
std::wstring_view extension_of(std::wstring_view name);

/// Whether the registry gives the extension of `name` that perceived type, such as "audio";
/// compared without regard to case.
bool is_perceived(const std::wstring& name, const wchar_t* word);
bool is_audio(const std::wstring& name);
bool is_video(const std::wstring& name);

/// The platform's answers by extension, each asked for once in the life of the object: a folder of
/// thousands of files has a handful of extensions, and each question reads the registry. An object
/// serves one listing, so that a change of the registry shows at the next.
class file_types {
public:
    struct entry {
        std::wstring text; ///< the description as the platform words it
        bool audio = false;
        bool video = false;
    };

    /// Of a file of that name.
    const entry& of_file(std::wstring_view name);
    /// The description of a directory.
    const std::wstring& directory_text();

private:
    std::map<std::wstring, entry, std::less<>> files_;
    std::wstring directory_text_;
};

} // namespace shell
