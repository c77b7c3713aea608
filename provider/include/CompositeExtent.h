#ifndef ORVSMIS_COMPOSITEEXTENT_H
#define ORVSMIS_COMPOSITEEXTENT_H

#include <string>
#include <vector>

#include <Pegasus/Common/Array.h>
#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMObjectPath.h>

#include "EventArgs.h"
#include "IndicationNeeder.h"

namespace orvsmis {

// What a composite extent is built from: the pool event plus the pool's
// numbers and its disk extents.
class CompositeExtentArgs : public DataEventArgs {
public:
    explicit CompositeExtentArgs(const DataEventArgs& args)
        : DataEventArgs(args.context, args.newData, args.oldData, args.arrayId), consumableBlocks(0), pdBlocks(0),
          pdsPerBase(0), pdCount(0), stripSize(0) {}

    std::string poolNo;
    std::string poolState;
    Pegasus::Uint64 consumableBlocks;
    std::string raidType;
    Pegasus::CIMObjectPath poolPath;
    Pegasus::Uint64 pdBlocks;
    std::string slaveRaidType;
    Pegasus::Sint32 pdsPerBase;
    std::vector<Pegasus::CIMObjectPath> pdList;
    Pegasus::Uint32 pdCount;
    Pegasus::Uint64 stripSize;
};

// The extents a concrete pool is built from: a master per pool and, for a
// two-level layout, one slave below it. Rebuilt on each relevant pool
// change.
class CompositeExtent : public IndicationNeeder {
public:
    // Subscribers of the pool events; the args carry the pool's path.
    static void OnCreate(ParentArgs& args);
    static void OnModify(ParentArgs& args);
    static void OnDelete(ParentArgs& args);

    void Create(CompositeExtentArgs& args);
    void Delete(CompositeExtentArgs& args);
    void Modify(CompositeExtentArgs& args);

    static Pegasus::CIMObjectPath WrapReference(const std::string& poolNo, const std::string& arrayId);
    static Pegasus::CIMInstance WrapInstance(const CompositeExtentArgs& args);

    // Layout levels of a RAID text on n disks: 1, 2, or -1 for an unknown
    // text.
    static int getNumberOfLayout(const std::string& raid, Pegasus::Uint32 n);
    // Disks per base set of a RAID text; -1 where it has none.
    static int getPdOfBaseNum(const std::string& raid);
    // The RAID text of the lower level of a two-level layout.
    static std::string getSlaveRaidType(const std::string& raid);

private:
    static void fillArgs(ParentArgs& parent, CompositeExtentArgs& args);
    Pegasus::CIMInstance getSlaveInstance(const CompositeExtentArgs& args, int index);
    void getAllCEInstances(const CompositeExtentArgs& args, Pegasus::Array<Pegasus::CIMInstance>& out);
};

}  // namespace orvsmis

#endif
