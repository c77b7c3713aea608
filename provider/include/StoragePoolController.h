#ifndef ORVSMIS_STORAGEPOOLCONTROLLER_H
#define ORVSMIS_STORAGEPOOLCONTROLLER_H

#include <list>
#include <string>

#include <Pegasus/Common/Array.h>
#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMParamValue.h>
#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Common/Config.h>

#include "Controller.h"

namespace orvsmis {

// The size queries of a pool: to what sizes a pool can be made or grow, and
// the range of volume sizes it can give.
class StoragePoolController : public Controller {
public:
    static const char* const m_className;  // "StoragePool"

    // "GetSupportedSizes" and "GetSupportedSizeRange"; any other method
    // returns 1.
    Pegasus::CIMValue Invoke(InvokeMethodArgs& args, Pegasus::Array<Pegasus::CIMParamValue>& outParameters) override;

    Pegasus::Uint32 GetSupportedSizes(InvokeMethodArgs& args, Pegasus::Array<Pegasus::CIMParamValue>& outParameters);
    Pegasus::Uint32 GetSupportedSizeRange(InvokeMethodArgs& args,
                                          Pegasus::Array<Pegasus::CIMParamValue>& outParameters);

private:
    // The sizes a concrete pool can grow to; empty when it cannot.
    void fillSupportedModifySizes(const Pegasus::CIMInstance& pool, std::list<Pegasus::Uint64>& out);
};

}  // namespace orvsmis

#endif
