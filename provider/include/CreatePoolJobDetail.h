#ifndef ORVSMIS_CREATEPOOLJOBDETAIL_H
#define ORVSMIS_CREATEPOOLJOBDETAIL_H

#include <string>
#include <vector>

#include "DetailArgs.h"
#include "JobDetail.h"

namespace orvsmis {

class ModifyPoolDetailArgs;

// A new pool: operation 0, kind 5.
class CreatePoolDetailArgs : public DetailArgs {
public:
    CreatePoolDetailArgs()
        : DetailArgs(OPERATION_CREATE, ELEMENT_POOL), raidCode(0), basePd(0), capacity(0) {}

    std::string arrayId;
    // Empty until Execute chooses it.
    std::string poolNumber;
    std::string poolName;
    // "dynamic" or "virtual".
    std::string poolType;
    int raidCode;
    int basePd;
    // Two hexadecimal digits: the disks' group.
    std::string pdg;
    // Disk numbers without their group.
    std::vector<std::string> pdList;
    std::string rebuild;
    // The comma list of the disks of the current command.
    std::string pdn;
    std::string raidText;
    // Bytes; the virtual capacity of a "virtual" pool.
    unsigned long long capacity;
};

// Binds a pool over its disks: one bind with the first 60 disks, then one
// expansion per further 60 (the most the tool takes in one command).
class CreatePoolJobDetail : public JobDetail {
public:
    // The most disks one command of the tool takes.
    static const unsigned int PD_BATCH = 60;

    // Takes ownership of args.
    explicit CreatePoolJobDetail(CreatePoolDetailArgs* args);
    virtual ~CreatePoolJobDetail();

    virtual bool Execute();
    virtual bool Finish(Pegasus::Array<Pegasus::CIMParamValue>& out);
    virtual void Recover();
    virtual DetailArgs* GetDetail();
    virtual std::string GetDescription();

    // The arguments of an expansion of the pool being made, for the disks
    // of the current batch.
    ModifyPoolDetailArgs ConvertToPoolExpandArgs() const;

    // The index of the first disk not yet given to the array.
    int GetNextDiskIndex() const { return m_nextDisk; }

    // 2 "1", 6 "5", 8 "6", 10 "TM", anything else "".
    static std::string convertRaidType(int raidCode);

private:
    CreatePoolDetailArgs* m_args;
    int m_nextDisk;
};

}  // namespace orvsmis

#endif
