#include "commands/association.h"

#include "commands/registry_text.h"

#include <objbase.h>
#include <shlwapi.h>

#include <iterator>
#include <utility>

namespace commands {

namespace {

std::wstring query(HKEY key, ASSOCSTR what) {
    wchar_t text[255] = L"";
    DWORD length = std::size(text);
    const HRESULT found = AssocQueryStringByKeyW(ASSOCF_NONE, what, key, nullptr, text, &length);
    return FAILED(found) ? std::wstring() : std::wstring(text);
}

std::wstring default_verb(HKEY key) {
    const std::wstring verb = read_text(key, L"shell", nullptr);
    return verb.empty() || verb.find(L'\\') != std::wstring::npos ? L"open" : verb;
}

std::wstring key_of_verb(const std::wstring& verb) {
    return L"shell\\" + verb;
}

} // namespace

std::wstring executable_of(HKEY key) {
    return query(key, ASSOCSTR_EXECUTABLE);
}

shell::class_verb read_verb(HKEY key) {
    shell::class_verb read;
    const std::wstring verb = default_verb(key);
    const std::wstring verb_key = key_of_verb(verb);
    utils::unique_registry_key opened;
    if (RegOpenKeyExW(key, verb_key.c_str(), 0, KEY_READ, opened.put()) == ERROR_SUCCESS) {
        read.name = verb;
    }
    const std::wstring target = read_text(key, verb_key + L"\\DropTarget", L"CLSID");
    if (target.empty() || FAILED(CLSIDFromString(target.c_str(), &read.drop_target))) {
        read.drop_target = {};
    }
    return read;
}

std::optional<Association> make_association(utils::unique_registry_key key, std::wstring key_name) {
    Association made;
    made.executable = executable_of(key.get());
    made.program_name = query(key.get(), ASSOCSTR_FRIENDLYAPPNAME);
    if (made.executable.empty() || made.program_name.empty()) {
        return std::nullopt;
    }
    made.icon = made.executable + L",0";

    made.verb = read_verb(key.get());
    made.title = read_text(key.get(), key_of_verb(default_verb(key.get())), nullptr);
    if (made.title.empty()) {
        made.title = L"Open";
    }
    made.key_name = std::move(key_name);
    made.key = std::move(key);
    return made;
}

} // namespace commands
