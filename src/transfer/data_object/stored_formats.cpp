#include "transfer/data_object/stored_formats.h"

#include "com/memory.h"

#include <wrl/client.h>

#include <algorithm>

namespace transfer {

namespace {

using Microsoft::WRL::ComPtr;

bool matches(const FORMATETC& entry, const FORMATETC& wanted) noexcept {
    return entry.cfFormat == wanted.cfFormat && (entry.tymed & wanted.tymed) != 0 &&
           (entry.dwAspect & wanted.dwAspect) != 0 && entry.lindex == wanted.lindex;
}

com::medium medium_of(const ComPtr<IStream>& stream) {
    STGMEDIUM made{};
    made.tymed = TYMED_ISTREAM;
    com::check(stream.CopyTo(&made.pstm));
    return com::medium(made);
}

void rewind(IStream& stream) {
    com::check(stream.Seek({}, STREAM_SEEK_SET, nullptr));
}

com::medium copy_stream(IStream& source) {
    ComPtr<IStream> copy;
    com::check(::CreateStreamOnHGlobal(nullptr, TRUE, &copy));
    STATSTG stat{};
    com::check(source.Stat(&stat, STATFLAG_NONAME));
    rewind(source);
    com::check(source.CopyTo(copy.Get(), stat.cbSize, nullptr, nullptr));
    rewind(source);
    rewind(*copy.Get());
    return medium_of(copy);
}

com::medium copy_storage(IStorage& source) {
    // A file without a name lives as long as it is open.
    constexpr DWORD mode =
        STGM_DELETEONRELEASE | STGM_CREATE | STGM_SHARE_EXCLUSIVE | STGM_READWRITE;
    static_assert(mode == 0x04001012);
    STGMEDIUM made{};
    com::check(::StgCreateDocfile(nullptr, mode, 0, &made.pstg));
    made.tymed = TYMED_ISTORAGE;
    com::medium copy(made);
    com::check(source.CopyTo(0, nullptr, nullptr, made.pstg));
    return copy;
}

com::medium copy_handle(const STGMEDIUM& source, CLIPFORMAT format) {
    STGMEDIUM made{};
    made.hGlobal = ::OleDuplicateData(source.hGlobal, format, 0);
    if (made.hGlobal == nullptr) {
        throw com::status_exception(E_OUTOFMEMORY);
    }
    made.tymed = source.tymed;
    return com::medium(made);
}

} // namespace

const CStoredFormats::entry* CStoredFormats::find(const FORMATETC& wanted) const noexcept {
    const auto found = std::ranges::find_if(
        m_entries, [&](const entry& each) { return matches(each.format, wanted); });
    return found == m_entries.end() ? nullptr : &*found;
}

CStoredFormats::entry& CStoredFormats::get(const FORMATETC& format) {
    const auto found = std::ranges::find_if(
        m_entries, [&](const entry& each) { return matches(each.format, format); });
    return found == m_entries.end() ? m_entries.emplace_back(format) : *found;
}

void CStoredFormats::append(const FORMATETC& format, com::medium content) {
    m_entries.emplace_back(format, std::move(content));
}

std::vector<FORMATETC> CStoredFormats::formats() const {
    std::vector<FORMATETC> all;
    for (const entry& each : m_entries) {
        all.push_back(each.format);
    }
    return all;
}

com::medium duplicate_medium(const STGMEDIUM& source, CLIPFORMAT format) {
    switch (source.tymed) {
    case TYMED_HGLOBAL:
    case TYMED_GDI:
    case TYMED_MFPICT:
    case TYMED_ENHMF:
        return copy_handle(source, format);
    case TYMED_ISTREAM:
        return copy_stream(com::required(source.pstm));
    case TYMED_ISTORAGE:
        return copy_storage(com::required(source.pstg));
    default:
        throw com::status_exception(DV_E_TYMED);
    }
}

STGMEDIUM share_medium(const STGMEDIUM& stored, IUnknown& owner) {
    STGMEDIUM shared = stored;
    switch (stored.tymed) {
    case TYMED_HGLOBAL:
    case TYMED_GDI:
    case TYMED_MFPICT:
    case TYMED_ENHMF:
        break;
    case TYMED_FILE:
        // Who releases a medium frees the name, whoever owns the file.
        shared.lpszFileName = com::duplicate_string(stored.lpszFileName).release();
        break;
    case TYMED_ISTREAM:
        stored.pstm->AddRef();
        break;
    case TYMED_ISTORAGE:
        stored.pstg->AddRef();
        break;
    default:
        throw com::status_exception(DV_E_TYMED);
    }
    if (shared.pUnkForRelease == nullptr) {
        shared.pUnkForRelease = &owner;
    }
    shared.pUnkForRelease->AddRef();
    return shared;
}

} // namespace transfer
