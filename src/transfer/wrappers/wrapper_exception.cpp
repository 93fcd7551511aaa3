#include "transfer/wrappers/wrapper_exception.h"

#include "vfs/records.h"

#include <boost/format.hpp>

namespace transfer {

std::wstring filled(const wchar_t* format, std::initializer_list<std::wstring> values) {
    boost::wformat text(format);
    for (const std::wstring& value : values) {
        text % value;
    }
    return text.str();
}

std::wstring origin_name(int origin) {
    switch (origin) {
    case vfs::seek_beginning:
        return L"beginning";
    case vfs::seek_current:
        return L"current";
    default:
        return L"ending";
    }
}

} // namespace transfer
