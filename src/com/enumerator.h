/// Enumerators over vectors.
#pragma once

#include "com/guard.h"
#include "com/object.h"

#include <algorithm>
#include <cstddef>
#include <vector>

namespace com {

/// An enumerator of the standard form (`Next`, `Skip`, `Reset`, `Clone`) over records that another
/// object keeps; it holds that object by a reference, as its clones do. `Policy` has
/// `static HRESULT copy(Element* to, const Record& from)`, which makes what a caller frees, and
/// `static void destroy(Element)` for what could not be delivered.
template <class Interface, class Element, class Record, class Policy>
class vector_enumerator final
    : public object<vector_enumerator<Interface, Element, Record, Policy>, Interface> {
public:
    /// `records` live as long as `owner`.
    vector_enumerator(const std::vector<Record>& records, IUnknown* owner, std::size_t position = 0)
        : records_(records), owner_(owner), position_(position) {}

    HRESULT STDMETHODCALLTYPE Next(ULONG count, Element* elements, ULONG* fetched) override {
        return guard([&] {
            if (fetched) {
                *fetched = 0;
            }
            if (!elements || (!fetched && count != 1)) {
                return E_POINTER;
            }
            const auto given = static_cast<ULONG>(std::min<std::size_t>(count, left()));
            for (ULONG index = 0; index < given; ++index) {
                const HRESULT status = Policy::copy(&elements[index], records_[position_ + index]);
                if (FAILED(status)) {
                    std::for_each(elements, elements + index, &Policy::destroy);
                    return status;
                }
            }
            position_ += given;
            if (fetched) {
                *fetched = given;
            }
            return given == count ? S_OK : S_FALSE;
        });
    }

    HRESULT STDMETHODCALLTYPE Skip(ULONG count) override {
        const bool enough = count <= left();
        position_ += enough ? count : left();
        return enough ? S_OK : S_FALSE;
    }

    HRESULT STDMETHODCALLTYPE Reset() override {
        position_ = 0;
        return S_OK;
    }

    HRESULT STDMETHODCALLTYPE Clone(Interface** result) override {
        return guard([&] {
            cleared(result);
            *result = make<vector_enumerator>(records_, owner_.Get(), position_).Detach();
        });
    }

private:
    std::size_t left() const noexcept { return records_.size() - position_; }

    const std::vector<Record>& records_;
    Microsoft::WRL::ComPtr<IUnknown> owner_;
    std::size_t position_;
};

} // namespace com
