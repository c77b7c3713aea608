#ifndef ORVSMIS_COMPUTERSYSTEM_H
#define ORVSMIS_COMPUTERSYSTEM_H

#include <string>

#include <Pegasus/Common/Array.h>
#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/String.h>

#include "Delegate.h"
#include "IndicationNeeder.h"
#include "Model.h"

namespace orvsmis {

class RawData;
class ArrayRawData;

// The array as a whole: the one top-level system instance, anchor of the
// model. Its path is kept for the other models as their parent.
class ComputerSystem : public Model, public IndicationNeeder {
public:
    static ModelEvent AfterCreated;
    static ModelEvent AfterModified;
    static ModelEvent BeforeDeleted;

    Pegasus::CIMObjectPath Create(DataEventArgs* args) override;
    void Delete(DataEventArgs* args) override;
    void Modify(DataEventArgs* args) override;
    // out = GetPath(); true when that path is not empty.
    bool Find(const std::string& key, const std::string& arrayId, Pegasus::CIMObjectPath& out) override;

    // The path the last Create got back, in the provider's namespace.
    static Pegasus::CIMObjectPath GetPath(const std::string& key);

    // Both throw CIMException 4 for a record that is not an array record.
    Pegasus::CIMObjectPath WrapReference(const RawData* record);
    Pegasus::CIMInstance WrapInstance(const RawData* record);

    // OperationalStatus and HealthState of a resource state; first match
    // of "ready", "attn", "fault" wins, else {0} and 0 with a trace.
    static void MapState(const std::string& resourceState, Pegasus::Array<Pegasus::Uint16>& operationalStatus,
                         Pegasus::Uint16& healthState);

private:
    static const ArrayRawData* asArray(const RawData* record, const char* failure);
    void updateCustomizeInfo(const RawData* record);
    void outputRawDataInfo(const ArrayRawData* record);

    static Pegasus::CIMObjectPath m_path;
};

}  // namespace orvsmis

#endif
