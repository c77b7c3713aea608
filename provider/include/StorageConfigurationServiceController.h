#ifndef ORVSMIS_STORAGECONFIGURATIONSERVICECONTROLLER_H
#define ORVSMIS_STORAGECONFIGURATIONSERVICECONTROLLER_H

#include <string>
#include <vector>

#include <Pegasus/Common/Array.h>
#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/CIMParamValue.h>
#include <Pegasus/Common/CIMValue.h>

#include "Controller.h"

namespace orvsmis {

class PoolRawData;

// The pool and volume methods of the configuration service. Each method
// checks its parameters against the repository and the stored records on
// the caller's thread and either answers at once or queues a job and
// answers 4096 with the job's path. Nothing reaches the array from here;
// every name that a job would write into a command line is checked first,
// and one that does not fit the array's names is refused with 5.
class StorageConfigurationServiceController : public Controller {
public:
    static const char* const m_className;  // "StorageConfigurationService"

    virtual Pegasus::CIMValue Invoke(InvokeMethodArgs& args, Pegasus::Array<Pegasus::CIMParamValue>& out);

    // ElementName with the configured character replacements applied
    // ("smis"/"replacementCharListOfLDName": each entry a character and its
    // replacement). A list whose replacements never end leaves the name as
    // it was last replaced and returns false.
    static bool ReplaceLDNameInConfParameter(std::string& name);

private:
    Pegasus::Uint32 createOrModifyStoragePool(InvokeMethodArgs& args, Pegasus::Array<Pegasus::CIMParamValue>& out);
    Pegasus::Uint32 createOrModifyElementFromStoragePool(InvokeMethodArgs& args,
                                                         Pegasus::Array<Pegasus::CIMParamValue>& out);
    Pegasus::Uint32 deleteStoragePool(InvokeMethodArgs& args, Pegasus::Array<Pegasus::CIMParamValue>& out);
    Pegasus::Uint32 returnToStoragePool(InvokeMethodArgs& args, Pegasus::Array<Pegasus::CIMParamValue>& out);

    // By size.
    Pegasus::Uint32 createPool(InvokeMethodArgs& args, Pegasus::Array<Pegasus::CIMParamValue>& out,
                               const std::string& name, int raid, Pegasus::Uint64 size, const std::string& arrayId,
                               const Pegasus::CIMObjectPath& inPool, bool thin);
    // By extents.
    Pegasus::Uint32 createPool(InvokeMethodArgs& args, Pegasus::Array<Pegasus::CIMParamValue>& out,
                               const std::string& name, int raid, Pegasus::Uint64 size, const std::string& arrayId,
                               const std::vector<std::string>& inExtents, const Pegasus::CIMObjectPath& inPool,
                               bool thin);
    Pegasus::Uint32 modifyPool(InvokeMethodArgs& args, Pegasus::Array<Pegasus::CIMParamValue>& out,
                               const std::string& name, int raid, Pegasus::Uint64 size,
                               const std::vector<std::string>& inExtents, const Pegasus::CIMObjectPath& pool);
    Pegasus::Uint32 createLd(InvokeMethodArgs& args, Pegasus::Array<Pegasus::CIMParamValue>& out,
                             const std::string& name, Pegasus::Uint64 size, const Pegasus::CIMObjectPath& inPool,
                             const Pegasus::CIMObjectPath& goal);
    Pegasus::Uint32 modifyLd(InvokeMethodArgs& args, Pegasus::Array<Pegasus::CIMParamValue>& out,
                             const std::string& name, Pegasus::Uint64 size, const Pegasus::CIMObjectPath& element,
                             const Pegasus::CIMObjectPath& goal);

    // The goal's RAID code against the pool's setting (against recordRaid,
    // the pool record's, when the pool has no setting); false (traced) when
    // they differ.
    bool goalFitsPool(InvokeMethodArgs& args, const Pegasus::CIMObjectPath& pool,
                      const Pegasus::CIMObjectPath& goal, int recordRaid);
    // The pool an element is allocated from; an empty path when none.
    Pegasus::CIMObjectPath parentPool(InvokeMethodArgs& args, const Pegasus::CIMObjectPath& element,
                                      const char* assocClass, const char* resultClass);
    Pegasus::CIMInstance fetch(InvokeMethodArgs& args, const Pegasus::CIMObjectPath& path, const char* const* names,
                               int count);
};

}  // namespace orvsmis

#endif
