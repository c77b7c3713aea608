#include "IndicationHandle.h"

#include "AutoLock.h"
#include "Exception.h"

using Pegasus::Array;
using Pegasus::CIMInstance;
using Pegasus::IndicationResponseHandler;
using Pegasus::OperationContext;

namespace orvsmis {

IndicationHandle::IndicationHandle() : m_handler(nullptr), m_bEnabled(false) {}

void IndicationHandle::SetHandler(IndicationResponseHandler* handler) {
    AutoLock lock(m_mutex);
    m_handler = handler;
}

bool IndicationHandle::HasHandler() {
    AutoLock lock(m_mutex);
    return m_handler != nullptr;
}

IndicationResponseHandler& IndicationHandle::handler() {
    if (m_handler == nullptr) throw NotExistedException("No indication handler is set");
    return *m_handler;
}

// The handler is completed after each delivery and used again for the next.
void IndicationHandle::Deliver(const CIMInstance& indication) {
    AutoLock lock(m_mutex);
    IndicationResponseHandler& h = handler();
    h.processing();
    h.deliver(indication);
    h.complete();
}

void IndicationHandle::Deliver(const Array<CIMInstance>& indications) {
    AutoLock lock(m_mutex);
    IndicationResponseHandler& h = handler();
    h.processing();
    h.deliver(indications);
    h.complete();
}

void IndicationHandle::Deliver(const OperationContext& context, const CIMInstance& indication) {
    AutoLock lock(m_mutex);
    IndicationResponseHandler& h = handler();
    h.processing();
    h.deliver(context, indication);
    h.complete();
}

void IndicationHandle::Deliver(const OperationContext& context,
    const Array<CIMInstance>& indications) {
    AutoLock lock(m_mutex);
    IndicationResponseHandler& h = handler();
    h.processing();
    h.deliver(context, indications);
    h.complete();
}

void IndicationHandle::ReleaseHandle() {
    AutoLock lock(m_mutex);
    if (m_handler != nullptr) m_handler->complete();
    m_handler = nullptr;
    m_bEnabled.store(false);
}

}  // namespace orvsmis
