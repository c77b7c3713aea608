#ifndef ORVSMIS_STORAGEVOLUME_H
#define ORVSMIS_STORAGEVOLUME_H

#include <string>

#include <Pegasus/Common/Array.h>
#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/OperationContext.h>

#include "Delegate.h"
#include "IndicationNeeder.h"
#include "Model.h"

namespace orvsmis {

class RawData;
class LdRawData;

// One volume per logical disk record, allocated from its pool and based on
// the pool's master composite extent.
class StorageVolume : public Model, public IndicationNeeder {
public:
    static ModelEvent AfterCreated;
    static ModelEvent AfterModified;
    static ModelEvent BeforeDeleted;

    Pegasus::CIMObjectPath Create(DataEventArgs* args) override;
    void Delete(DataEventArgs* args) override;
    void Modify(DataEventArgs* args) override;
    // Goes from the array's system over SystemDevice to the volume whose
    // Name is key.
    bool Find(const std::string& key, const std::string& arrayId, Pegasus::CIMObjectPath& out) override;
    // The path of a volume, built without the repository.
    static Pegasus::CIMObjectPath Find(const std::string& arrayId, const std::string& ldn);

    // CIMException 4 for a record that is no logical disk or whose pool is
    // not stored.
    Pegasus::CIMInstance WrapInstance(const RawData* raw, const std::string& arrayId);
    static Pegasus::CIMObjectPath WrapReference(const std::string& arrayId, const std::string& ldn);

    // The text the array gives a volume's name: "LD<ldn>h:[<name>]".
    static std::string CreateElementName(const std::string& ldn, const std::string& name);
    // Reachable through some LD set, by the group text.
    static bool IsInBandAccessGranted(const LdRawData* ld);
    // OperationalStatus, ExtentStatus and HealthState of an LD state.
    static void mapState(const std::string& ldState, Pegasus::Array<Pegasus::Uint16>& operationalStatus,
                         Pegasus::Array<Pegasus::Uint16>& extentStatus, Pegasus::Uint16& healthState);
    // DataRedundancy and PackageRedundancy of a RAID code.
    static void mapRedundancy(int raidCode, Pegasus::Uint16& dataRedundancy, Pegasus::Uint16& packageRedundancy);
    // The volume's Name: arrayId without its first four characters, then
    // ldn, in capitals.
    static std::string volumeName(const std::string& arrayId, const std::string& ldn);

private:
    static const LdRawData* asLd(const RawData* raw, const char* failure);
};

}  // namespace orvsmis

#endif
