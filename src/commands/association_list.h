#pragma once

#include "commands/association.h"

#include <shobjidl.h>
#include <wrl/client.h>

#include <optional>
#include <string>
#include <vector>

namespace commands {

/// The programs that open a file of some name: the default one first, then those that its kind
/// offers beside it. Reads the registry only. One object belongs to one thread at a time.
class AssociationList {
public:
    /// Finds the programs for `name`, or with `default_only` only the first of them. False, and an
    /// empty list, when the name has no extension or nothing opens it.
    bool load(const std::wstring& name, bool default_only);

    /// Finds the default program of `name`, a file name or an executable, and forgets all others.
    bool load_default(const std::wstring& name) { return load(name, true); }

    /// Null when the list is empty.
    const Association* default_program() const;

    const std::vector<Association>& programs() const { return entries_; }

    const std::wstring& perceived_type() const { return perceived_type_; }

    /// The executable of the first program of `name` that is also one of `other`; that of the first
    /// program when they share none, empty when there is none.
    static std::wstring common_program(const std::wstring& name, const std::wstring& other);

    /// Whether one command can open all of `items`: a file with a program for it, or several files
    /// of music or of video with the same extension. Fills the list. The answer for the array that
    /// was asked about last is kept, as a host asks for it several times in a row. A failure of any
    /// kind is a no.
    bool check_selection(IShellItemArray* items) noexcept;

    /// How many items the last array had that passed or failed the check.
    DWORD item_count() const { return item_count_; }

private:
    void add(utils::unique_registry_key key, const std::wstring& key_name);
    void add_classes(const std::wstring& extension);
    void add_applications();
    bool load_for(IShellItemArray& items);
    void clear() noexcept;

    std::wstring perceived_type_;
    std::vector<Association> entries_;
    /// Held, so that no other array gets its address.
    Microsoft::WRL::ComPtr<IShellItemArray> checked_;
    DWORD item_count_ = 0;
};

} // namespace commands
