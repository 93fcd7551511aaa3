#include "transfer/descriptor_items/filedescriptor_wrapper.h"

#include "com/media.h"

#include <array>
#include <memory>
#include <utility>

namespace transfer {

namespace {

descriptor_group_ptr read_group(IDataObject* data, HGLOBAL block) {
    try {
        const com::global_lock locked(block);
        return std::make_shared<descriptor_group>(data, locked.bytes());
    } catch (const com::status_exception&) {
        throw CWrapperException(
            internal_error,
            L"CFILEDESCRIPTORWrapper::CFILEDESCRIPTORWrapper(pDataObj,hGlobal): Out of memory");
    }
}

using fault = descriptor_table::fault;

const wchar_t* text_of(fault why) {
    switch (why) {
    case fault::endless_name:
        return L"The name is too long.";
    case fault::bad_name:
        return L"No item can have this name.";
    case fault::doubled:
        return L"Another item has the same name.";
    case fault::inside_file:
        return L"It lies in what is no folder.";
    default:
        return L"The folder that holds it is missing.";
    }
}

} // namespace

CFILEDESCRIPTORWrapper::CFILEDESCRIPTORWrapper(IDataObject* pDataObj, HGLOBAL hGlobal) {
    const auto fail = [](const wchar_t* why) {
        throw CWrapperException(
            internal_error,
            std::wstring(L"CFILEDESCRIPTORWrapper::CFILEDESCRIPTORWrapper( pDataObj, hGlobal ): ") +
                why);
    };
    if (pDataObj == nullptr) {
        fail(L"pDataObj is NULL");
    }
    if (hGlobal == nullptr) {
        fail(L"hGlobal is NULL");
    }
    const auto group = read_group(pDataObj, hGlobal);
    note_what_is_left_out(*group);
    m_root = std::make_shared<CFILEDESCRIPTORDirectory>(pDataObj, group, descriptor_table::root);
}

void CFILEDESCRIPTORWrapper::note_what_is_left_out(const descriptor_group& group) {
    // A million items may be left out: only those that are told need their names.
    std::size_t noted = 0;
    std::size_t more = group.table.missing();
    for (std::size_t index = 0; index < group.table.count(); ++index) {
        const fault why = group.table.fault_of(index);
        if (why == fault::none) {
            continue;
        }
        if (noted++ < refusals::most_named) {
            m_left_out.add(group.path(index), text_of(why));
        } else {
            ++more;
        }
    }
    m_left_out.add_more(more);
}

} // namespace transfer
