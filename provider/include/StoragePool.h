#ifndef ORVSMIS_STORAGEPOOL_H
#define ORVSMIS_STORAGEPOOL_H

#include <string>

#include <Pegasus/Common/Array.h>
#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/Config.h>

#include "Delegate.h"
#include "IndicationNeeder.h"
#include "Model.h"

namespace orvsmis {

class RawData;
class PoolRawData;

// A concrete pool of the array: one pool instance per pool record, with its
// hosting, its allocation from the primordial pool and its capability.
class StoragePool : public Model, public IndicationNeeder {
public:
    static ModelEvent AfterCreated;
    static ModelEvent AfterModified;
    static ModelEvent BeforeDeleted;

    Pegasus::CIMObjectPath Create(DataEventArgs* args) override;
    void Delete(DataEventArgs* args) override;
    void Modify(DataEventArgs* args) override;
    // out = WrapReference(poolNo, arrayId); always true.
    bool Find(const std::string& poolNo, const std::string& arrayId, Pegasus::CIMObjectPath& out) override;
    // The base's decision first; failing that, a change of TotalManagedSpace
    // is worth a modification.
    bool ActivateInstModificationIndication(const Pegasus::CIMInstance& newInstance,
                                            const Pegasus::CIMInstance& oldInstance) override;

    // Another record type throws CIMException 4.
    Pegasus::CIMInstance WrapInstance(const RawData* rawData, const std::string& arrayId);
    static Pegasus::CIMObjectPath WrapReference(const std::string& poolNo, const std::string& arrayId);
    static Pegasus::CIMObjectPath WrapReference(const RawData* rawData, const std::string& arrayId);

    // The RAID code of a pool's RAID text (exact); 0 for an unknown text.
    static int GetPoolType(const std::string& raidType);
    // OperationalStatus of a pool state, by substring in the order ready,
    // attn, fault; 0 otherwise.
    static void mapState(const std::string& poolState, Pegasus::Array<Pegasus::Uint16>& out);

    // "<vendor>.<brand> : <no>h.in.<array>"
    static std::string InstanceID(const std::string& poolNo, const std::string& arrayId);
    // A pool is thin when its type says "virtual".
    static bool IsVirtual(const PoolRawData* pool);

private:
    static const PoolRawData* asPool(const RawData* record, const char* failure);
};

// The pool number of a pool instance: PoolID cut at its first "h".
std::string GetPoolIdFromPool(const Pegasus::CIMInstance& pool);
// The array id of a pool instance: InstanceID behind its first "in.".
std::string GetArrayIdFromPool(const Pegasus::CIMInstance& pool);
// The Primordial property; false when absent or null.
bool IsPrimordialPool(const Pegasus::CIMInstance& pool);

}  // namespace orvsmis

#endif
