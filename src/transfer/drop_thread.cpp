/// A drop on a thread of its own.
#include "com/guard.h"
#include "com/worker.h"
#include "transfer/drop_transfer.h"
#include "transfer/worker_failure.h"

#include <wrl/client.h>

#include <shldisp.h>

#include <utility>

namespace transfer {

namespace {

using Microsoft::WRL::ComPtr;
/// Known to sources as IAsyncOperation too, of the same identifier.
using IAsyncOperation = IDataObjectAsyncCapability;

/// A data object on its way to another apartment. What it holds of the object is given back even if
/// it never arrives.
class marshalled_data {
public:
    explicit marshalled_data(IDataObject& data) {
        com::check(::CoMarshalInterThreadInterfaceInStream(__uuidof(IDataObject), &data,
                                                           m_stream.GetAddressOf()));
    }

    marshalled_data(const marshalled_data&) = delete;
    marshalled_data& operator=(const marshalled_data&) = delete;

    ~marshalled_data() {
        if (m_stream) {
            ::CoReleaseMarshalData(m_stream.Get());
        }
    }

    /// To be called once, on the thread that it is for.
    HRESULT unmarshal(IDataObject** result) noexcept {
        return ::CoGetInterfaceAndReleaseStream(m_stream.Detach(), __uuidof(IDataObject),
                                                reinterpret_cast<void**>(result));
    }

private:
    ComPtr<IStream> m_stream;
};

void require(bool fulfilled, const wchar_t* otherwise) {
    if (!fulfilled) {
        throw com::worker_exception(otherwise);
    }
}

/// Tells the source that its data is no longer needed, whatever ended the transfer.
class async_operation {
public:
    explicit async_operation(IAsyncOperation& source) : m_source(source) {
        require(SUCCEEDED(source.StartOperation(nullptr)), L"Unable to start async operation");
    }

    async_operation(const async_operation&) = delete;
    async_operation& operator=(const async_operation&) = delete;

    ~async_operation() {
        if (!m_ended) {
            m_source.EndOperation(E_FAIL, nullptr, DROPEFFECT_NONE);
        }
    }

    void end(const drop_outcome& outcome) {
        m_ended = true;
        require(SUCCEEDED(m_source.EndOperation(outcome.status, nullptr, outcome.effect)),
                L"Unable to end async operation");
    }

private:
    IAsyncOperation& m_source;
    bool m_ended = false;
};

void _DoDropThread(marshalled_data& marshalled, const drop_order& order) {
    ComPtr<IDataObject> data;
    require(SUCCEEDED(marshalled.unmarshal(data.GetAddressOf())),
            L"Unable to extract data object from the stream");
    require(data != nullptr, L"Wrong data object");
    ComPtr<IAsyncOperation> source;
    require(SUCCEEDED(data.As(&source)), L"Data object doesn't support async operations.");
    BOOL wanted = FALSE;
    require(SUCCEEDED(source->GetAsyncMode(&wanted)) && wanted,
            L"Unable to start async operation - not supported");
    async_operation operation(*source.Get());
    const drop_outcome outcome = carry_out_drop(*data.Get(), order);
    operation.end(outcome);
    if (outcome.failure) {
        std::rethrow_exception(outcome.failure);
    }
}

} // namespace

bool wants_async(IDataObject& data) noexcept {
    ComPtr<IAsyncOperation> source;
    BOOL wanted = FALSE;
    return SUCCEEDED(data.QueryInterface(IID_PPV_ARGS(&source))) &&
           SUCCEEDED(source->GetAsyncMode(&wanted)) && wanted;
}

HRESULT start_drop_thread(IDataObject& data, const drop_order& order) noexcept {
    return com::guard([&]() -> HRESULT {
        const auto marshalled = std::make_shared<marshalled_data>(data);
        const HRESULT started =
            com::start_worker([marshalled, order] { _DoDropThread(*marshalled, order); },
                              [] { show_worker_failure(L"CDropTargetImpl::_DoDropThread()"); });
        return FAILED(started) ? E_FAIL : S_OK;
    });
}

} // namespace transfer
