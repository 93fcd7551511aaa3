#include "companions/user_security.h"

#include "companions/last_error.h"
#include "utils/unique_handle.h"

#include <sddl.h>

#include <array>
#include <string>

namespace companions {

namespace {

/// A record of this process's token that holds one SID.
template <class Record, TOKEN_INFORMATION_CLASS which>
class token_record {
public:
    token_record() {
        utils::unique_handle token;
        DWORD size = 0;
        if (!OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, token.put()) ||
            !GetTokenInformation(token.get(), which, bytes_.data(),
                                 static_cast<DWORD>(bytes_.size()), &size)) {
            raise_last_error("::GetTokenInformation(token, which, bytes, size, &size)");
        }
    }

    const Record& get() const { return *reinterpret_cast<const Record*>(bytes_.data()); }

private:
    alignas(Record) std::array<std::byte, sizeof(Record) + SECURITY_MAX_SID_SIZE> bytes_{};
};

std::wstring user_text() {
    const token_record<TOKEN_USER, TokenUser> user;
    LPWSTR text = nullptr;
    if (!ConvertSidToStringSidW(user.get().User.Sid, &text)) {
        raise_last_error("::ConvertSidToStringSidW(user, &text)");
    }
    const std::unique_ptr<wchar_t, local_free> owner(text);
    return text;
}

/// A program may lower the level of what it makes, and not raise it.
bool is_above_ordinary_programs() {
    const token_record<TOKEN_MANDATORY_LABEL, TokenIntegrityLevel> label;
    const PSID level = label.get().Label.Sid;
    return *GetSidSubAuthority(level, *GetSidSubAuthorityCount(level) - 1U) >
           SECURITY_MANDATORY_MEDIUM_RID;
}

} // namespace

user_security::user_security() {
    const std::wstring text = L"D:P(A;;GA;;;SY)(A;;GA;;;" + user_text() + L")" +
                              (is_above_ordinary_programs() ? L"S:(ML;;NW;;;ME)" : L"");
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    if (!ConvertStringSecurityDescriptorToSecurityDescriptorW(text.c_str(), SDDL_REVISION_1,
                                                              &descriptor, nullptr)) {
        raise_last_error("::ConvertStringSecurityDescriptorToSecurityDescriptorW(text, ...)");
    }
    descriptor_.reset(descriptor);
    attributes_.nLength = sizeof(attributes_);
    attributes_.lpSecurityDescriptor = descriptor;
}

} // namespace companions
