#ifndef ORVSMIS_REDUNDANCYSET_H
#define ORVSMIS_REDUNDANCYSET_H

#include <string>

#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMObjectPath.h>

#include "IndicationNeeder.h"
#include "Model.h"

namespace orvsmis {

// The one redundancy set of the array's controllers. It exists while the
// array reports controllers; it reads only the array id of its arguments
// and its status from the stored array record.
class RedundancySet : public Model, public IndicationNeeder {
public:
    Pegasus::CIMObjectPath Create(DataEventArgs* args) override;
    void Delete(DataEventArgs* args) override;
    void Modify(DataEventArgs* args) override;

    // The key path (InstanceID only), on this host in the provider's
    // namespace.
    Pegasus::CIMObjectPath WrapReference(DataEventArgs* args);
    // CIMException 4 "can not get ArrayRowData!" when the store holds no
    // array record.
    Pegasus::CIMInstance WrapInstance(DataEventArgs* args);

    static std::string InstanceID(const std::string& arrayId);
};

}  // namespace orvsmis

#endif
