#ifndef ORVSMIS_INDICATIONHANDLE_H
#define ORVSMIS_INDICATIONHANDLE_H

#include <atomic>

#include <Pegasus/Common/Array.h>
#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/OperationContext.h>
#include <Pegasus/Common/ResponseHandler.h>

#include "Mutex.h"
#include "Singleton.h"

namespace orvsmis {

// The handler the server gave for indications, and the switch that says
// whether indications may go out. Deliveries and handler swaps are
// serialised by m_mutex; a handler is completed before it is dropped.
class IndicationHandle {
public:
    // Stores the handler under the mutex (enableIndications).
    void SetHandler(Pegasus::IndicationResponseHandler* handler);
    bool HasHandler();

    bool IsEnabled() const { return m_bEnabled.load(); }
    void SetEnabled(bool enabled) { m_bEnabled.store(enabled); }

    // processing(), deliver(...), complete() on the handler, under the mutex.
    // Callers check first that delivery is allowed; without a handler these
    // throw NotExistedException and deliver nothing.
    void Deliver(const Pegasus::CIMInstance& indication);
    void Deliver(const Pegasus::Array<Pegasus::CIMInstance>& indications);
    void Deliver(const Pegasus::OperationContext& context, const Pegasus::CIMInstance& indication);
    void Deliver(const Pegasus::OperationContext& context,
        const Pegasus::Array<Pegasus::CIMInstance>& indications);

    // complete() on the handler, then drop it and turn indications off.
    void ReleaseHandle();

private:
    friend class Singleton<IndicationHandle>;
    IndicationHandle();
    IndicationHandle(const IndicationHandle&) = delete;
    IndicationHandle& operator=(const IndicationHandle&) = delete;

    Pegasus::IndicationResponseHandler& handler();

    Pegasus::IndicationResponseHandler* m_handler;
    Mutex m_mutex;
    std::atomic<bool> m_bEnabled;
};

}  // namespace orvsmis

#endif
