#ifndef ORVSMIS_NONTOPLEVELCOMPUTERSYSTEM_H
#define ORVSMIS_NONTOPLEVELCOMPUTERSYSTEM_H

#include <string>

#include <Pegasus/Common/Array.h>
#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMObjectPath.h>

#include "IndicationNeeder.h"
#include "Model.h"

namespace orvsmis {

class RawData;
class DacRawData;

// A controller (host director) of a multi-controller array: a system
// instance of the same class as the array, part of the array and member of
// the array's redundancy set.
class NonToplevelComputerSystem : public Model, public IndicationNeeder {
public:
    Pegasus::CIMObjectPath Create(DataEventArgs* args) override;
    void Delete(DataEventArgs* args) override;
    void Modify(DataEventArgs* args) override;
    // The system a controller or port number belongs to: the controller's
    // path when the array reports that controller, otherwise the array's.
    // Always true.
    bool Find(const std::string& key, const std::string& arrayId, Pegasus::CIMObjectPath& out) override;

    // Both throw CIMException 4 for a record that is not a controller record.
    Pegasus::CIMObjectPath WrapReference(const RawData* record);
    Pegasus::CIMInstance WrapInstance(const RawData* record);

    // "<arrayId>-<decimal of the hexadecimal number>"; InvalidParamException
    // for a number that is not hexadecimal.
    static std::string ControllerName(const std::string& arrayId, const std::string& number);
    // {2} ready, {2, 5} attn, {6} fault, else {0} with a trace.
    static void MapState(const std::string& state, Pegasus::Array<Pegasus::Uint16>& operationalStatus);

private:
    static const DacRawData* asDac(const RawData* record, const char* failure);
};

}  // namespace orvsmis

#endif
