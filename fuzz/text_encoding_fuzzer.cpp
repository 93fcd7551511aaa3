/// The service's encoding of texts, there and back, and beside the standard one where both agree.
#include "check.h"
#include "vfs_quilldeck/wire/text_encoding.h"
#include "vfs_quilldeck/wire/url_encode.h"

#include <utf8.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <string>

namespace {

using namespace vfs_quilldeck;

std::string decode_percent(const std::string& text) {
    std::string out;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '%') {
            out.push_back(static_cast<char>(std::stoi(text.substr(i + 1, 2), nullptr, 16)));
            i += 2;
        } else {
            out.push_back(text[i]);
        }
    }
    return out;
}

void encode(const std::wstring& units) {
    const std::string plain = url_encode(units, false);
    const std::string escaped = url_encode(units, true);
    fuzz::check(escaped.find_first_of("\"#&+/<>?[\\]^`{|}") == std::string::npos,
                "nothing reserved goes out");
    fuzz::check(decode_percent(escaped) == plain, "escapes stand for what they escape");

    std::wstring arriving = units;
    std::erase(arriving, L'\x80');
    std::erase(arriving, L'\x800');
    fuzz::check(utf8_to_wide(plain) == arriving, "all arrives but U+0080 and U+0800");
    const bool pairs =
        std::ranges::any_of(units, [](wchar_t c) { return c >= 0xD800 && c <= 0xDFFF; });
    if (!pairs && arriving == units) {
        fuzz::check(wide_to_utf8(units) == plain, "texts without pairs go out as UTF-8");
    }
}

void decode(const std::string& bytes) {
    const std::wstring text = utf8_to_wide(bytes);
    fuzz::check(text.size() <= bytes.size(), "no byte gives more than one unit");
    fuzz::check(std::ranges::all_of(text, [](wchar_t c) { return c >= 0 && c <= 0xFFFF; }),
                "units have 16 bits");
    if (utf8::is_valid(bytes.begin(), bytes.end())) {
        std::u32string points;
        utf8::utf8to32(bytes.begin(), bytes.end(), std::back_inserter(points));
        fuzz::check(std::ranges::equal(
                        text, points, {}, {},
                        [](char32_t c) { return static_cast<wchar_t>(static_cast<char16_t>(c)); }),
                    "UTF-8 is read, and cut to 16 bits");
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    decode(std::string(data, data + size));
    std::wstring units;
    for (std::size_t i = 0; i + 1 < size; i += 2) {
        units.push_back(static_cast<wchar_t>(data[i] << 8U | data[i + 1]));
    }
    encode(units);
    encode(std::wstring(data, data + size));
    return 0;
}
