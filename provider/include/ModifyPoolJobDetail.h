#ifndef ORVSMIS_MODIFYPOOLJOBDETAIL_H
#define ORVSMIS_MODIFYPOOLJOBDETAIL_H

#include <string>
#include <vector>

#include "DetailArgs.h"
#include "JobDetail.h"

namespace orvsmis {

// A change of an existing pool (name, disks, virtual capacity): operation 1,
// kind 5.
class ModifyPoolDetailArgs : public DetailArgs {
public:
    ModifyPoolDetailArgs() : DetailArgs(OPERATION_MODIFY, ELEMENT_POOL), raidCode(0), basePd(0), capacity(0) {}

    std::string arrayId;
    std::string poolNumber;
    // The new name; empty keeps the name.
    std::string poolName;
    int raidCode;
    int basePd;
    // "on" or "off".
    std::string rebuild;
    std::string pdg;
    // Disk numbers without their group; empty adds no disks.
    std::vector<std::string> pdList;
    std::string pdn;
    // "dynamic" or "virtual".
    std::string poolType;
    // Bytes; the new virtual capacity of a "virtual" pool, 0 for none.
    unsigned long long capacity;
};

// Renames a pool, raises a virtual pool's capacity and adds disks, in that
// order; the effect counts only when the view shows all of it.
class ModifyPoolJobDetail : public JobDetail {
public:
    // Takes ownership of args.
    explicit ModifyPoolJobDetail(ModifyPoolDetailArgs* args);
    virtual ~ModifyPoolJobDetail();

    virtual bool Execute();
    virtual bool Finish(Pegasus::Array<Pegasus::CIMParamValue>& out);
    virtual void Recover();
    virtual DetailArgs* GetDetail();
    virtual std::string GetDescription();

    int GetNextDiskIndex() const { return m_nextDisk; }

private:
    ModifyPoolDetailArgs* m_args;
    int m_nextDisk;
};

}  // namespace orvsmis

#endif
