#include "ui/strings.h"

#include "utils/exceptions.h"
#include "utils/module.h"

#include <boost/format.hpp>

#include <source_location>

namespace ui {

std::wstring load_string(UINT id) {
    // Without a buffer the call gives the place of the text in the module, which has no end mark.
    const wchar_t* text = nullptr;
    const int length = LoadStringW(utils::own_module(), id, reinterpret_cast<wchar_t*>(&text), 0);
    if (length == 0) {
        throw utils::system_error_exception(std::source_location::current().function_name(),
                                            "::LoadStringW(own_module(), id, &text, 0)",
                                            GetLastError());
    }
    return {text, static_cast<std::size_t>(length)};
}

std::wstring load_string(UINT id, std::initializer_list<std::wstring> values) {
    boost::wformat format(load_string(id));
    format.exceptions(boost::io::all_error_bits ^ boost::io::too_many_args_bit);
    for (const std::wstring& value : values) {
        format % value;
    }
    return format.str();
}

} // namespace ui
