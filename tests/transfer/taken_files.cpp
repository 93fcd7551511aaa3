#include "taken_files.h"

#include "com/clipboard_formats.h"
#include "com/media.h"
#include "transfer/format_values.h"
#include "vfs_quilldeck/wire/text_encoding.h"

#include <shlobj.h>

#include <array>
#include <cstdint>
#include <sstream>
#include <vector>

namespace transfer_test {

namespace {

/// FNV-1a over what it is given.
class running_sum {
public:
    void add(const void* content, std::size_t size) {
        for (const auto* byte = static_cast<const unsigned char*>(content); size-- > 0; ++byte) {
            value_ = (value_ ^ *byte) * 1099511628211U;
        }
    }

    std::uint64_t value() const { return value_; }

private:
    std::uint64_t value_ = 14695981039346656037U;
};

std::string line(const std::wstring& name, DWORD attributes, std::uint64_t size,
                 const std::string& rest) {
    std::ostringstream text;
    text << vfs_quilldeck::wide_to_utf8(name) << ' ' << std::hex << attributes << ' ' << std::dec
         << size << rest << '|';
    return text.str();
}

com::medium get(IDataObject& source, UINT format, TYMED kind, LONG index = -1) {
    FORMATETC request = transfer::format_of(format, kind, index);
    com::medium taken;
    com::check(source.GetData(&request, taken.put()));
    if (taken.get().tymed != kind) {
        throw com::status_exception(DV_E_TYMED);
    }
    return taken;
}

std::string sum_of(IStream& stream) {
    running_sum sum;
    std::array<char, 40'000> piece;
    for (HRESULT status = S_OK; status == S_OK;) {
        ULONG count = 0;
        status = stream.Read(piece.data(), piece.size(), &count);
        com::check(status);
        sum.add(piece.data(), count);
        if (count == 0) {
            break;
        }
    }
    return ' ' + std::to_string(sum.value());
}

} // namespace

std::string take_files(IDataObject& source) {
    std::string told;
    const HRESULT status = com::guard([&] {
        const com::medium table =
            get(source, com::registered_formats.file_group_descriptor, TYMED_HGLOBAL);
        const com::global_lock block(table.get().hGlobal);
        const auto& group = *reinterpret_cast<const FILEGROUPDESCRIPTORW*>(block.bytes().data());
        for (UINT i = 0; i < group.cItems; ++i) {
            const FILEDESCRIPTORW& record = group.fgd[i];
            const bool is_directory = (record.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
            std::string sum;
            if (!is_directory) {
                sum = sum_of(*get(source, com::registered_formats.file_contents, TYMED_ISTREAM,
                                  static_cast<LONG>(i))
                                  .get()
                                  .pstm);
            }
            told += line(record.cFileName, record.dwFileAttributes,
                         std::uint64_t{record.nFileSizeHigh} << 32U | record.nFileSizeLow, sum);
        }
    });
    if (FAILED(status)) {
        std::ostringstream text;
        text << "failed " << std::hex << static_cast<unsigned long>(status);
        told += text.str();
    }
    return told;
}

std::string told_of(const std::wstring& name, const void* content, std::size_t size) {
    running_sum sum;
    sum.add(content, size);
    return line(name, FILE_ATTRIBUTE_NORMAL, size, ' ' + std::to_string(sum.value()));
}

std::string told_of(const std::wstring& directory_name) {
    return line(directory_name, FILE_ATTRIBUTE_DIRECTORY, 0, {});
}

} // namespace transfer_test
