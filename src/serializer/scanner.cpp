#include "serializer/scanner.h"

#include <utf8.h>

namespace serializer {

wchar_t* scanner::take_character(wchar_t* to) {
    const char* const begin = at_;
    utf8::next(at_, end_);
    return utf8::utf8to16(begin, at_, to);
}

} // namespace serializer
