#ifndef ORVSMIS_EVENTARGS_H
#define ORVSMIS_EVENTARGS_H

#include <string>

#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/OperationContext.h>

namespace orvsmis {

class RawData;

// Base of the argument records that models, submodels and data-flow
// callbacks receive.
class EventArgs {
public:
    virtual ~EventArgs() {}
};

// One record change on its way to a model. newData is the record as the
// array now reports it (at Delete: the record to remove); oldData is the
// stored record of the same key at Modify and null otherwise. The records
// are not owned.
class DataEventArgs : public EventArgs {
public:
    DataEventArgs(const Pegasus::OperationContext& ctx, RawData* newRecord, RawData* oldRecord,
                  const std::string& array)
        : context(ctx), newData(newRecord), oldData(oldRecord), arrayId(array) {}

    const Pegasus::OperationContext& context;
    RawData* newData;
    RawData* oldData;
    std::string arrayId;
};

// The arguments of a submodel call or an event handler: the data event in
// hand plus the object path of the parent instance. It lives on the stack of
// the operation that fires it; handlers must not keep it.
class ParentArgs : public DataEventArgs {
public:
    ParentArgs(const DataEventArgs& args, const Pegasus::CIMObjectPath& parentPath)
        : DataEventArgs(args.context, args.newData, args.oldData, args.arrayId), path(parentPath) {}

    const Pegasus::CIMObjectPath& path;
};

}  // namespace orvsmis

#endif
